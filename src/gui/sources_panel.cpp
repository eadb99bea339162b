#include "gui/sources_panel.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include "gui/pages.h"
#include "gui/widgets.h"

namespace kinfolio::gui {

SourcesPanel::SourcesPanel(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(heading("Sources", 1.15, this));
    folder_ = quiet({}, this);
    layout->addWidget(folder_);

    QVBoxLayout* innerLayout = scrollingColumn(layout, "Sources", this);
    QWidget* inner = innerLayout->parentWidget();
    list_ = new QWidget(inner);
    rows_ = new QVBoxLayout(list_);
    rows_->setContentsMargins(0, 0, 0, 0);
    rows_->setSpacing(10);
    innerLayout->addWidget(list_);
    skipped_ = new SkippedList(inner);
    innerLayout->addWidget(skipped_);
    innerLayout->addStretch();

    rescanButton = button("Rescan", kRescanHelp, this);
    chooseButton = button("Choose Another Folder…", kChooseHelp, this);
    auto* row = new QHBoxLayout;
    row->addWidget(rescanButton);
    row->addWidget(chooseButton);
    row->addStretch();
    layout->addLayout(row);
}

void SourcesPanel::rebuild(const ScanResult* scan) {
    shown_ = scan;
    boxes_.clear();
    // Later, not now: this may run inside a signal of one of these widgets.
    while (QLayoutItem* item = rows_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    if (!scan) return;
    for (const Source& source : scan->sources) {
        auto* row = new QWidget(list_);
        auto* layout = new QVBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(2);
        // The name may hold "&", which a check box would take for a shortcut.
        auto* box = new QCheckBox(qt(source.name).replace("&", "&&"), row);
        box->setAccessibleName(qt(source.name));
        box->setAccessibleDescription(qt(source.detail));
        QFont bold = box->font();
        bold.setBold(true);
        box->setFont(bold);
        layout->addWidget(box);
        // Indented under the box's text, so the column reads as one entry.
        int indent = box->style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                     box->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing);
        QLabel* detail = quiet(qt(source.detail), row);
        detail->setContentsMargins(indent, 0, 0, 0);
        layout->addWidget(detail);
        for (const std::string& note : source.notes) {
            QLabel* label = quiet(qt(note), row);
            label->setContentsMargins(indent, 0, 0, 0);
            QFont small = label->font();
            small.setPointSizeF(small.pointSizeF() * 0.92);
            label->setFont(small);
            layout->addWidget(label);
        }
        std::string id = source.id;
        connect(box, &QCheckBox::toggled, this, [this, id](bool on) {
            model_.updateSettings([&](Settings& s) {
                if (on)
                    s.excludedSources.erase(id);
                else
                    s.excludedSources.insert(id);
            });
        });
        boxes_.push_back(box);
        rows_->addWidget(row);
    }
}

void SourcesPanel::show(const AppState& state) {
    if (state.scan.get() != shown_) rebuild(state.scan.get());
    showText(folder_, state.folder ? qt(*state.folder) : QString());
    if (state.scan)
        for (size_t i = 0; i < boxes_.size(); ++i) {
            bool on = !state.settings.excludedSources.count(state.scan->sources[i].id);
            if (boxes_[i]->isChecked() != on) {
                QSignalBlocker quiet(boxes_[i]);
                boxes_[i]->setChecked(on);
            }
        }
    skipped_->show(state.scan.get());
}

}  // namespace kinfolio::gui
