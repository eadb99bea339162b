#include "gui/item_picker.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "app/item_list.h"
#include "gui/widgets.h"

namespace kinfolio::gui {

ItemTable::ItemTable(AppModel& model, QObject* parent)
    : QAbstractTableModel(parent), model_(model) {}

void ItemTable::show(const AppState& state) {
    if (state.settings.hiddenText != hiddenText_) {
        hiddenText_ = state.settings.hiddenText;
        redact_ = Importer::Redactor(hiddenText_);
        if (!items_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, text));
    }
    if (state.candidates != items_) {
        beginResetModel();
        items_ = state.candidates;
        selectedList_ = state.selected;
        selected_ = {state.selected.begin(), state.selected.end()};
        endResetModel();
    } else if (state.selected != selectedList_) {
        selectedList_ = state.selected;
        selected_ = {state.selected.begin(), state.selected.end()};
        if (!items_.empty()) emit dataChanged(index(0, tick), index(rowCount() - 1, tick));
    }
}

int ItemTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(items_.size());
}

int ItemTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnCount_;
}

QVariant ItemTable::data(const QModelIndex& index, int role) const {
    const Evidence& e = *item(index.row());
    if (role == Qt::CheckStateRole && index.column() == tick)
        return selected_.count(&e) ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return {};
    switch (index.column()) {
        case date:
            return qt(ItemList::date(e));
        case sender:
            return qt(ItemList::sender(e, redact_));
        case kind: {
            QString word = qt(std::string(rawValue(e.kind)));
            return word.left(1).toUpper() + word.mid(1);
        }
        case text:
            return qt(ItemList::textStart(e, redact_, 120));
        default:
            return role == Qt::AccessibleTextRole ? (selected_.count(&e) ? "Included" : "Left out")
                                                  : QVariant();
    }
}

QVariant ItemTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    static const char* const names[] = {"In PDF", "Date", "From", "Kind", "Text"};
    return names[section];
}

Qt::ItemFlags ItemTable::flags(const QModelIndex& index) const {
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == tick) f |= Qt::ItemIsUserCheckable;
    return f;
}

bool ItemTable::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || index.column() != tick) return false;
    bool on = value.toInt() == Qt::Checked;
    const Evidence* e = item(index.row());
    // Shown ticked at once; the model's new selection follows.
    if (on)
        selected_.insert(e);
    else
        selected_.erase(e);
    emit dataChanged(index, index);
    model_.setSelected(*e, on);
    return true;
}

void ItemFilter::setFilter(const QString& text, int kind) {
    text_ = text;
    kind_ = kind;
    invalidateFilter();
}

bool ItemFilter::filterAcceptsRow(int row, const QModelIndex&) const {
    const Evidence& e = *static_cast<const ItemTable*>(sourceModel())->item(row);
    if (kind_ >= 0 && static_cast<int>(e.kind) != kind_) return false;
    if (text_.isEmpty()) return true;
    return qt(e.text).contains(text_, Qt::CaseInsensitive) ||
           qt(e.sender).contains(text_, Qt::CaseInsensitive);
}

ItemPicker::ItemPicker(AppModel& model, QWidget* parent) : QDialog(parent), model_(model) {
    setWindowTitle("Choose Items");
    resize(900, 600);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        paragraph("Everything Kinfolio found within your settings. Ticked items go "
                  "into the PDF; tick or untick to add or remove one.",
                  this));
    auto* bar = new QHBoxLayout;
    filterText = new QLineEdit(this);
    filterText->setPlaceholderText("Filter by text or sender");
    filterText->setAccessibleName("Filter by text or sender");
    filterText->setClearButtonEnabled(true);
    filterKind = new QComboBox(this);
    filterKind->setAccessibleName("Filter by kind");
    filterKind->addItem("All kinds", -1);
    for (ItemKind kind : {ItemKind::message, ItemKind::call, ItemKind::photo, ItemKind::screenshot,
                          ItemKind::video, ItemKind::document, ItemKind::email}) {
        QString word = qt(std::string(rawValue(kind)));
        filterKind->addItem(word.left(1).toUpper() + word.mid(1) + "s", static_cast<int>(kind));
    }
    count_ = quiet({}, this);
    bar->addWidget(filterText, 2);
    bar->addWidget(filterKind);
    bar->addWidget(count_, 1);
    layout->addLayout(bar);

    rows = new ItemTable(model, this);
    filter = new ItemFilter(this);
    filter->setSourceModel(rows);
    table = new QTableView(this);
    table->setModel(filter);
    table->setAccessibleName("Items");
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    // Uniform rows keep a list of a million items quick to scroll.
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 8);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setColumnWidth(ItemTable::tick, 64);
    table->setColumnWidth(ItemTable::date,
                          table->fontMetrics().horizontalAdvance("2025-03-14 18:05") + 32);
    table->setColumnWidth(ItemTable::sender, 150);
    table->setColumnWidth(ItemTable::kind, 100);
    layout->addWidget(table, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton* automatic =
        buttons->addButton("Back to Automatic Choice", QDialogButtonBox::ResetRole);
    automatic->setToolTip("Forget every item you ticked or unticked by hand.");
    layout->addWidget(buttons);

    auto refilter = [this] {
        filter->setFilter(filterText->text(), filterKind->currentData().toInt());
    };
    connect(filterText, &QLineEdit::textChanged, this, refilter);
    connect(filterKind, &QComboBox::currentIndexChanged, this, refilter);
    connect(automatic, &QPushButton::clicked, this, [this] { model_.resetManualChoice(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::finished, this, [this] { model_.setShowingItems(false); });
    // The rows picked in the list are the ones the model highlights.
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        std::set<std::string> ids;
        for (const QModelIndex& index : table->selectionModel()->selectedRows())
            ids.insert(rows->item(filter->mapToSource(index).row())->id());
        model_.setSelectedIDs(std::move(ids));
    });
}

void ItemPicker::show(const AppState& state) {
    rows->show(state);
    QString count =
        QString("%1 items · %2 selected").arg(state.candidates.size()).arg(state.selected.size());
    showText(count_, count);
}

}  // namespace kinfolio::gui
