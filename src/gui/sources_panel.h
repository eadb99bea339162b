#pragma once

#include <QWidget>
#include <vector>

#include "app/app_model.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace kinfolio::gui {

class SkippedList;

// The left column: every source of the scan with its check box, detail line
// and notes, then the files not used.
class SourcesPanel : public QWidget {
public:
    SourcesPanel(AppModel& model, QWidget* parent = nullptr);
    void show(const AppState& state);

    QPushButton* rescanButton;
    QPushButton* chooseButton;
    // One per source, in the scan's order.
    const std::vector<QCheckBox*>& checkBoxes() const { return boxes_; }

private:
    void rebuild(const ScanResult* scan);

    AppModel& model_;
    QLabel* folder_;
    QWidget* list_;
    QVBoxLayout* rows_;
    SkippedList* skipped_;
    std::vector<QCheckBox*> boxes_;
    const ScanResult* shown_ = nullptr;
};

}  // namespace kinfolio::gui
