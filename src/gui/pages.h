#pragma once

#include <QWidget>

#include "app/app_model.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

// The screens around the ready window: the start screen, the scan in
// progress, and a folder with nothing to read.
namespace kinfolio::gui {

class StartPage : public QWidget {
public:
    explicit StartPage(QWidget* parent = nullptr);
    QPushButton* chooseButton;
    QPushButton* exampleButton;
    QPushButton* guidesButton;
};

class ScanningPage : public QWidget {
public:
    explicit ScanningPage(QWidget* parent = nullptr);
    void show(const AppState& state);
    QPushButton* cancelButton;

private:
    QLabel* title_;
    QLabel* folder_;
    QProgressBar* bar_;
    QLabel* count_;
};

// The files of a scan that were not used, each with its reason, folded
// under their count.
class SkippedList : public QWidget {
public:
    explicit SkippedList(QWidget* parent = nullptr);
    void show(const ScanResult* scan);

private:
    void fold(bool open);
    QPushButton* toggle_;
    QWidget* list_;
    QVBoxLayout* rows_;
    const ScanResult* shown_ = nullptr;
    bool open_ = false;
};

class EmptyPage : public QWidget {
public:
    explicit EmptyPage(QWidget* parent = nullptr);
    void show(const AppState& state);
    QPushButton* rescanButton;
    QPushButton* chooseButton;
    QPushButton* guidesButton;

private:
    QLabel* folder_;
    SkippedList* skipped_;
};

}  // namespace kinfolio::gui
