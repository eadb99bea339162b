#pragma once

#include <QAbstractTableModel>
#include <QDialog>
#include <QSortFilterProxyModel>
#include <unordered_set>

#include "app/app_model.h"
#include "layout/redaction.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTableView;

namespace kinfolio::gui {

// Every candidate of the scan as a row: tick, date, sender, kind, the start
// of its text. Rows are made when shown, so a chat of a million messages
// costs nothing until scrolled.
class ItemTable : public QAbstractTableModel {
public:
    enum Column { tick, date, sender, kind, text, columnCount_ };

    explicit ItemTable(AppModel& model, QObject* parent = nullptr);
    // Takes the model's candidates and selection; rows are reset only when
    // the candidates themselves change.
    void show(const AppState& state);
    const Evidence* item(int row) const { return items_[static_cast<size_t>(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    AppModel& model_;
    Selection::ItemRefs items_;
    Selection::ItemRefs selectedList_;
    std::unordered_set<const Evidence*> selected_;
    std::string hiddenText_;
    Importer::Redactor redact_{""};
};

// Filters the rows by a text (in the sender or the text) and a kind.
class ItemFilter : public QSortFilterProxyModel {
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;
    void setFilter(const QString& text, int kind);

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    QString text_;
    int kind_ = -1;  // an ItemKind, or -1 for all
};

// "Choose Items": the sheet where the user ticks what goes in.
class ItemPicker : public QDialog {
public:
    ItemPicker(AppModel& model, QWidget* parent = nullptr);
    void show(const AppState& state);

    QLineEdit* filterText;
    QComboBox* filterKind;
    QTableView* table;
    ItemTable* rows;
    ItemFilter* filter;

private:
    AppModel& model_;
    QLabel* count_;
};

}  // namespace kinfolio::gui
