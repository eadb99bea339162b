#pragma once

#include <QDialog>

#include "app/app_model.h"

class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QTextBrowser;

// The smaller sheets of the window: the export guides and the progress of
// reading text in screenshots.
namespace kinfolio::gui {

// "How do I export my chats?": the apps on the left, the steps on the right.
class GuidesDialog : public QDialog {
public:
    explicit GuidesDialog(QWidget* parent = nullptr);
    QListWidget* apps;
    QTextBrowser* steps;

private:
    void showGuide(int row);
};

// "Reading text in your screenshots", with "Continue in Background".
class ReadingProgress : public QDialog {
public:
    explicit ReadingProgress(QWidget* parent = nullptr);
    void show(const AppState& state);
    QPushButton* continueButton;

private:
    QProgressBar* bar_;
    QLabel* count_;
};

}  // namespace kinfolio::gui
