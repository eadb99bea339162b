#pragma once

#include <QWidget>

#include "app/app_model.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;

namespace kinfolio::gui {

// The right column: every field of the settings. Each edit goes to the model
// at once (which saves it and renders the preview again once the edits
// pause); what the model holds is shown back without echoing as an edit.
class SettingsPanel : public QWidget {
public:
    SettingsPanel(AppModel& model, QWidget* parent = nullptr);
    void show(const Settings& settings);

    QLineEdit *title, *applicant, *partner, *reference, *ownerName;
    QSpinBox *messagesPerMonth, *photosPerMonth, *maxFileMB;
    QCheckBox* limitDates;
    QDateEdit *rangeStart, *rangeEnd;
    QPlainTextEdit* hiddenText;
    QComboBox *paper, *arrangement, *dateOrder, *timeZone;

private:
    AppModel& model_;
    bool showing_ = false;  // true while show() writes into the fields
};

}  // namespace kinfolio::gui
