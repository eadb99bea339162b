#include "gui/dialogs.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "app/export_guides.h"
#include "gui/widgets.h"

namespace kinfolio::gui {

GuidesDialog::GuidesDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle("How do I export my chats?");
    resize(820, 520);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        paragraph("Export each chat from its app, then put the export into your "
                  "materials folder. Choose your app:",
                  this));
    auto* row = new QHBoxLayout;
    apps = new QListWidget(this);
    apps->setAccessibleName("Apps");
    for (const ExportGuide& guide : exportGuides())
        apps->addItem(qt(guide.title));
    apps->setMaximumWidth(apps->sizeHintForColumn(0) + 40);
    steps = new QTextBrowser(this);
    steps->setAccessibleName("Steps");
    steps->setOpenLinks(false);
    row->addWidget(apps);
    row->addWidget(steps, 1);
    layout->addLayout(row, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(apps, &QListWidget::currentRowChanged, this, [this](int row) { showGuide(row); });
    apps->setCurrentRow(0);
}

void GuidesDialog::showGuide(int row) {
    const auto& guides = exportGuides();
    if (row < 0 || static_cast<size_t>(row) >= guides.size()) return;
    const ExportGuide& guide = guides[static_cast<size_t>(row)];
    QString html = "<h2>" + qt(guide.title).toHtmlEscaped() + "</h2><ol>";
    for (const std::string& step : guide.steps)
        html += "<li style='margin-bottom:6px'>" + qt(step).toHtmlEscaped() + "</li>";
    html += "</ol><p>" + qt(guide.inFolder).toHtmlEscaped() + "</p>";
    steps->setHtml(html);
}

ReadingProgress::ReadingProgress(QWidget* parent) : QDialog(parent) {
    setWindowTitle("Reading text in your screenshots");
    setMinimumWidth(460);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading("Reading text in your screenshots", 1.2, this));
    bar_ = new QProgressBar(this);
    bar_->setAccessibleName("Screenshots read");
    bar_->setTextVisible(false);
    layout->addWidget(bar_);
    count_ = paragraph({}, this);
    layout->addWidget(count_);
    layout->addWidget(quiet(
        "This lets Kinfolio cover the words you choose to hide. It all happens on this computer. "
        "The first time after installing can take up to a minute while this computer prepares "
        "text recognition; after that each screenshot takes a moment. You can export when it "
        "finishes.",
        this));
    auto* buttons = new QDialogButtonBox(this);
    continueButton = buttons->addButton("Continue in Background", QDialogButtonBox::AcceptRole);
    continueButton->setDefault(true);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
}

void ReadingProgress::show(const AppState& state) {
    bar_->setRange(0, static_cast<int>(state.screenshotsTotal));
    bar_->setValue(static_cast<int>(state.screenshotsRead));
    showText(count_, QString("%1 of %2 screenshots read")
                         .arg(state.screenshotsRead)
                         .arg(state.screenshotsTotal));
}

}  // namespace kinfolio::gui
