#include "gui/pages.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "gui/widgets.h"

namespace kinfolio::gui {

namespace {

// A column of limited width in the middle of the window: long lines of text
// are hard to read on a wide screen.
QVBoxLayout* centredColumn(QWidget* page, int maxWidth) {
    auto* outer = new QHBoxLayout(page);
    auto* column = new QWidget(page);
    column->setMaximumWidth(maxWidth);
    outer->addStretch();
    outer->addWidget(column, 1);
    outer->addStretch();
    auto* layout = new QVBoxLayout(column);
    layout->addStretch(1);
    return layout;
}

}  // namespace

StartPage::StartPage(QWidget* parent) : QWidget(parent) {
    QVBoxLayout* layout = centredColumn(this, 560);
    layout->addWidget(heading("Kinfolio", 2.0, this));
    layout->addWidget(heading("Turn your relationship records into one clear PDF", 1.2, this));
    layout->addSpacing(8);
    layout->addWidget(paragraph(
        "Put your chat exports, photos, videos, PDF documents and e-mails in one folder and "
        "choose it here: Kinfolio makes one dated PDF of them for your visa application, with a "
        "cover, a contents page, an even sample of every month and the words you want hidden "
        "blacked out.",
        this));
    layout->addSpacing(16);
    chooseButton = button("Choose Materials Folder…", kChooseHelp, this);
    chooseButton->setDefault(true);
    exampleButton = button("Try the Example",
                           "Make a folder with a fictional couple's records and open it, to see "
                           "what Kinfolio does before you use your own.",
                           this);
    guidesButton = button("How do I export my chats?",
                          "Step-by-step guides for WhatsApp, Telegram, Messenger, Instagram, "
                          "LINE and more.",
                          this);
    for (QPushButton* b : {chooseButton, exampleButton, guidesButton})
        layout->addWidget(b);
    layout->addSpacing(16);
    layout->addWidget(
        quiet("Everything stays on this computer. Kinfolio never uploads your files "
              "and never changes them.",
              this));
    layout->addStretch(2);
}

ScanningPage::ScanningPage(QWidget* parent) : QWidget(parent) {
    QVBoxLayout* layout = centredColumn(this, 520);
    title_ = heading("Reading your folder", 1.4, this);
    folder_ = quiet({}, this);
    bar_ = new QProgressBar(this);
    bar_->setAccessibleName("Reading progress");
    bar_->setTextVisible(false);
    count_ = paragraph({}, this);
    cancelButton = button("Close Folder", kCloseHelp, this);
    for (QWidget* w : std::initializer_list<QWidget*>{title_, folder_, bar_, count_})
        layout->addWidget(w);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(cancelButton);
    layout->addLayout(row);
    layout->addStretch(2);
}

void ScanningPage::show(const AppState& state) {
    showText(folder_, state.folder ? qt(*state.folder) : QString());
    if (state.filesTotal == 0) {
        // The files are still being listed (or the example written): the
        // bar moves without a count.
        bar_->setRange(0, 0);
        showText(count_, state.isDemo ? "Preparing the example…" : "Looking at the files…");
        return;
    }
    bar_->setRange(0, static_cast<int>(state.filesTotal));
    bar_->setValue(static_cast<int>(state.filesRead));
    showText(count_, QString("Reading files: %1 of %2").arg(state.filesRead).arg(state.filesTotal));
}

SkippedList::SkippedList(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    toggle_ = new QPushButton(this);
    toggle_->setFlat(true);
    toggle_->setCheckable(true);
    toggle_->setStyleSheet("text-align: left; padding: 2px;");
    list_ = new QWidget(this);
    rows_ = new QVBoxLayout(list_);
    rows_->setContentsMargins(12, 0, 0, 0);
    layout->addWidget(toggle_);
    layout->addWidget(list_);
    connect(toggle_, &QPushButton::toggled, this, [this](bool on) { fold(on); });
    fold(false);
}

void SkippedList::fold(bool open) {
    open_ = open;
    list_->setVisible(open);
    toggle_->setIcon(style()->standardIcon(open ? QStyle::SP_ArrowDown : QStyle::SP_ArrowRight));
    toggle_->setAccessibleDescription(open ? "Shown. Press to hide the list."
                                           : "Hidden. Press to show each file and why.");
}

void SkippedList::show(const ScanResult* scan) {
    if (scan == shown_) return;
    shown_ = scan;
    // Later, not now: this may run inside a signal of one of these widgets.
    while (QLayoutItem* item = rows_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    size_t count = scan ? scan->skipped.size() : 0;
    setVisible(count > 0);
    if (count == 0) return;
    QString text =
        count == 1 ? QString("1 file not used") : QString("%1 files not used").arg(count);
    toggle_->setText(text);
    toggle_->setAccessibleName(text);
    for (const SkippedFile& file : scan->skipped) {
        rows_->addWidget(paragraph(qt(file.path), list_));
        QLabel* reason = quiet(qt(file.reason), list_);
        reason->setContentsMargins(12, 0, 0, 6);
        rows_->addWidget(reason);
    }
}

EmptyPage::EmptyPage(QWidget* parent) : QWidget(parent) {
    QVBoxLayout* layout = centredColumn(this, 600);
    layout->addWidget(heading("Nothing Kinfolio can read here", 1.4, this));
    folder_ = quiet({}, this);
    layout->addWidget(folder_);
    layout->addWidget(
        paragraph("Add chat exports, photos, videos, PDF documents or emails to the "
                  "folder, then click Rescan.",
                  this));
    skipped_ = new SkippedList(this);
    layout->addWidget(skipped_);
    rescanButton = button("Rescan", kRescanHelp, this);
    rescanButton->setDefault(true);
    chooseButton = button("Choose Another Folder…", kChooseHelp, this);
    guidesButton = button("How do I export my chats?",
                          "Step-by-step guides for every app Kinfolio reads.", this);
    auto* row = new QHBoxLayout;
    for (QPushButton* b : {rescanButton, chooseButton, guidesButton})
        row->addWidget(b);
    row->addStretch();
    layout->addLayout(row);
    layout->addStretch(2);
}

void EmptyPage::show(const AppState& state) {
    showText(folder_, state.folder ? qt(*state.folder) : QString());
    skipped_->show(state.scan.get());
}

}  // namespace kinfolio::gui
