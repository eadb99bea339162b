#include "gui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QStyle>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include "example/example_folder.h"
#include "gui/dialogs.h"
#include "gui/item_picker.h"
#include "gui/pages.h"
#include "gui/preview_pane.h"
#include "gui/settings_panel.h"
#include "gui/sources_panel.h"
#include "gui/widgets.h"
#include "model/files.h"

namespace kinfolio::gui {

namespace {

QString defaultWindowState() {
    return qt(configDirectory()) + "/window.ini";
}

QString documentsFolder() {
    QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return documents.isEmpty() ? QDir::homePath() : documents;
}

}  // namespace

MainWindow::MainWindow(AppServices services, SettingsStore store, QString windowState,
                       QWidget* parent)
    : QMainWindow(parent),
      executor_(std::make_unique<QtExecutor>()),
      model_(std::make_unique<AppModel>(*executor_, std::move(services), std::move(store))),
      windowState_(windowState.isEmpty() ? defaultWindowState() : std::move(windowState)) {
    setWindowTitle("Kinfolio");
    reveal = [](const QString& folder) { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); };

    pages_ = new QStackedWidget(this);
    start_ = new StartPage(pages_);
    scanning_ = new ScanningPage(pages_);
    empty_ = new EmptyPage(pages_);
    buildReadyPage();
    for (QWidget* page : {static_cast<QWidget*>(start_), static_cast<QWidget*>(scanning_),
                          static_cast<QWidget*>(empty_), ready_})
        pages_->addWidget(page);
    setCentralWidget(pages_);

    picker_ = new ItemPicker(*model_, this);
    guides_ = new GuidesDialog(this);
    reading_ = new ReadingProgress(this);
    reading_->setWindowModality(Qt::WindowModal);
    alert_ =
        new QMessageBox(QMessageBox::Warning, "Something went wrong", {}, QMessageBox::Ok, this);
    alert_->setWindowModality(Qt::WindowModal);
    buildMenus();

    connect(start_->chooseButton, &QPushButton::clicked, this, [this] { chooseFolder(); });
    connect(start_->exampleButton, &QPushButton::clicked, this, [this] { tryExample(); });
    connect(start_->guidesButton, &QPushButton::clicked, this,
            [this] { model_->setShowingGuide(true); });
    connect(scanning_->cancelButton, &QPushButton::clicked, this,
            [this] { model_->closeFolder(); });
    connect(empty_->rescanButton, &QPushButton::clicked, this, [this] { model_->rescan(); });
    connect(empty_->chooseButton, &QPushButton::clicked, this, [this] { chooseFolder(); });
    connect(empty_->guidesButton, &QPushButton::clicked, this,
            [this] { model_->setShowingGuide(true); });
    connect(guides_, &QDialog::finished, this, [this] { model_->setShowingGuide(false); });
    connect(reading_, &QDialog::finished, this, [this] { model_->continueReadingInBackground(); });
    connect(alert_, &QMessageBox::finished, this, [this] { model_->dismissError(); });

    model_->observe([this] { scheduleRefresh(); });

    QSettings stored(windowState_, QSettings::IniFormat);
    if (!restoreGeometry(stored.value("geometry").toByteArray())) resize(1280, 800);
    splitter_->restoreState(stored.value("splitter").toByteArray());
    refresh();
}

MainWindow::~MainWindow() {
    // Nothing may run once the model is gone: the background work is waited
    // for (an export is finished and written whole), and the widgets that
    // call the model go first.
    model_->stopWork();
    executor_->shutdown();
    delete picker_;
    delete guides_;
    delete reading_;
    delete alert_;
    delete takeCentralWidget();
}

void MainWindow::buildReadyPage() {
    ready_ = new QWidget(pages_);
    auto* layout = new QVBoxLayout(ready_);
    splitter_ = new QSplitter(Qt::Horizontal, ready_);
    splitter_->setChildrenCollapsible(false);
    sources_ = new SourcesPanel(*model_, splitter_);
    preview_ = new PreviewPane(splitter_);
    settings_ = new SettingsPanel(*model_, splitter_);
    sources_->setMinimumWidth(220);
    settings_->setMinimumWidth(280);
    preview_->setMinimumWidth(320);
    splitter_->addWidget(sources_);
    splitter_->addWidget(preview_);
    splitter_->addWidget(settings_);
    splitter_->setStretchFactor(0, 0);
    splitter_->setStretchFactor(1, 1);
    splitter_->setStretchFactor(2, 0);
    splitter_->setSizes({300, 620, 340});
    layout->addWidget(splitter_, 1);

    auto* footer = new QFrame(ready_);
    footer->setFrameShape(QFrame::StyledPanel);
    auto* row = new QHBoxLayout(footer);
    auto* texts = new QVBoxLayout;
    summary_ = paragraph({}, footer);
    QFont bold = summary_->font();
    bold.setBold(true);
    summary_->setFont(bold);
    gaps_ = quiet({}, footer);
    status_ = quiet({}, footer);
    for (QLabel* label : {summary_, gaps_, status_})
        texts->addWidget(label);
    row->addLayout(texts, 1);
    itemsButton_ =
        button("Choose Items…", "See every item and tick what goes into the PDF.", footer);
    exportButton_ =
        button("Export PDF…", "Make the PDF of everything selected and save it.", footer);
    exportButton_->setDefault(true);
    row->addWidget(itemsButton_);
    row->addWidget(exportButton_);
    layout->addWidget(footer);

    connect(sources_->rescanButton, &QPushButton::clicked, this, [this] { model_->rescan(); });
    connect(sources_->chooseButton, &QPushButton::clicked, this, [this] { chooseFolder(); });
    connect(itemsButton_, &QPushButton::clicked, this, [this] { model_->setShowingItems(true); });
    connect(exportButton_, &QPushButton::clicked, this, [this] { exportWithDialog(); });
}

void MainWindow::buildMenus() {
    auto add = [this](QMenu* menu, const QString& text, QList<QKeySequence> keys, auto slot,
                      const QString& help = {}) {
        QAction* action = menu->addAction(text);
        action->setShortcuts(keys);
        action->setStatusTip(help);
        action->setToolTip(help);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    QMenu* file = menuBar()->addMenu("&File");
    add(
        file, "Choose Materials Folder…", {QKeySequence(Qt::CTRL | Qt::Key_O)},
        [this] { chooseFolder(); }, kChooseHelp);
    add(
        file, "Try the Example", {}, [this] { tryExample(); },
        "Make a folder with a fictional couple's records and open it.");
    rescanAction_ = add(
        file, "Rescan", {QKeySequence(Qt::Key_F5), QKeySequence(Qt::CTRL | Qt::Key_R)},
        [this] { model_->rescan(); }, kRescanHelp);
    closeAction_ = add(
        file, "Close Folder", {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_W)},
        [this] { model_->closeFolder(); }, kCloseHelp);
    file->addSeparator();
    exportAction_ = add(file, "Export PDF…", {QKeySequence(Qt::CTRL | Qt::Key_E)},
                        [this] { exportWithDialog(); });
    file->addSeparator();
    add(file, "Quit", {QKeySequence(Qt::CTRL | Qt::Key_Q)}, [this] { close(); });

    QMenu* items = menuBar()->addMenu("&Items");
    itemsAction_ = add(items, "Choose Items…", {QKeySequence(Qt::CTRL | Qt::Key_I)},
                       [this] { model_->setShowingItems(true); });
    automaticAction_ = add(
        items, "Back to Automatic Choice", {}, [this] { model_->resetManualChoice(); },
        "Forget every item you ticked or unticked by hand.");

    QMenu* help = menuBar()->addMenu("&Help");
    add(help, "How do I export my chats?", {QKeySequence(QKeySequence::HelpContents)},
        [this] { model_->setShowingGuide(true); });
    add(help, "About Kinfolio", {}, [this] {
        QMessageBox::about(
            this, "About Kinfolio",
            QString("<h3>Kinfolio %1</h3><p>Turn your relationship records into one clear "
                    "PDF.</p><p>Everything stays on this computer. Kinfolio never uploads your "
                    "files and never changes them. It opens no network connection; updates "
                    "come with your system's other software.</p>")
                .arg(QApplication::applicationVersion()));
    });
}

QAction* MainWindow::action(const QString& text) const {
    for (QAction* a : findChildren<QAction*>())
        if (a->text().remove('&') == text) return a;
    return nullptr;
}

QWidget* MainWindow::currentPage() const {
    return pages_->currentWidget();
}

void MainWindow::start() {
    model_->start();
}

void MainWindow::openFolder(const QString& folder) {
    QFileInfo info(folder);
    if (!info.isDir()) {
        QMessageBox* box = alert_;
        box->setText(folder + " is not a folder. Choose the folder that holds your records.");
        box->open();
        return;
    }
    model_->chooseFolder(utf8(info.absoluteFilePath()));
}

void MainWindow::chooseFolder() {
    const AppState& s = model_->state();
    QString from = s.folder ? QFileInfo(qt(*s.folder)).absolutePath() : documentsFolder();
    QString folder = QFileDialog::getExistingDirectory(this, kChooseHelp, from);
    if (!folder.isEmpty()) openFolder(folder);
}

void MainWindow::tryExample() {
    QString folder = documentsFolder() + "/Kinfolio Example";
    QFileInfo info(folder);
    // A folder of that name that holds something else is never written into:
    // the user picks another place.
    if (info.exists() && !ExampleFolder::holdsExample(utf8(folder)) &&
        !QDir(folder).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
        folder = QFileDialog::getExistingDirectory(this, "Choose an empty folder for the example",
                                                   documentsFolder());
        if (folder.isEmpty()) return;
    }
    model_->openExample(utf8(folder));
}

QString MainWindow::exportFolder() const {
    QSettings stored(windowState_, QSettings::IniFormat);
    QString folder = stored.value("exportFolder").toString();
    return !folder.isEmpty() && QFileInfo(folder).isDir() ? folder : documentsFolder();
}

void MainWindow::exportWithDialog() {
    const AppState& s = model_->state();
    if (s.phase != Phase::ready || s.isExporting) return;
    if (s.selected.empty()) {
        model_->exportPDF({});  // says "Nothing is selected."
        return;
    }
    QString proposed = exportFolder() + "/" + qt(model_->proposedFileName());
    QString path = QFileDialog::getSaveFileName(this, "Export PDF", proposed, "PDF (*.pdf)");
    if (path.isEmpty()) return;
    if (!path.endsWith(".pdf", Qt::CaseInsensitive)) path += ".pdf";
    QSettings(windowState_, QSettings::IniFormat)
        .setValue("exportFolder", QFileInfo(path).absolutePath());
    model_->exportPDF(utf8(path));
}

void MainWindow::scheduleRefresh() {
    if (refreshPending_) return;
    refreshPending_ = true;
    QTimer::singleShot(0, this, [this] { refresh(); });
}

void MainWindow::refresh() {
    refreshPending_ = false;
    const AppState& s = model_->state();
    QWidget* page = start_;
    if (s.phase == Phase::scanning)
        page = scanning_;
    else if (s.phase == Phase::ready)
        page = s.scan && s.scan->sources.empty() ? static_cast<QWidget*>(empty_) : ready_;
    if (pages_->currentWidget() != page) pages_->setCurrentWidget(page);

    QString title = "Kinfolio";
    if (s.folder)
        title =
            QFileInfo(qt(*s.folder)).fileName() + (s.isDemo ? " (example)" : "") + " — Kinfolio";
    setWindowTitle(title);
    bool ready = s.phase == Phase::ready && s.scan;
    rescanAction_->setEnabled(s.folder.has_value());
    closeAction_->setEnabled(s.folder.has_value());
    exportAction_->setEnabled(ready && !s.isExporting);
    itemsAction_->setEnabled(ready);
    automaticAction_->setEnabled(ready);

    if (page == scanning_) scanning_->show(s);
    if (page == empty_) empty_->show(s);
    if (page == ready_) {
        sources_->show(s);
        preview_->show(*model_);
        refreshFooter(s);
    }
    settings_->show(s.settings);
    refreshSheets(s);
    if (wasExporting_ && !s.isExporting) exportFinished(s);
    wasExporting_ = s.isExporting;
}

void MainWindow::refreshFooter(const AppState& s) {
    int count = Selection::exportCount(s.selected);
    showText(summary_,
             qt(model_->summary()) +
                 (count > 0
                      ? QString(" · %1 %2 in the PDF").arg(count).arg(count == 1 ? "item" : "items")
                      : QString()));
    showText(gaps_, qt(model_->gapSentence()));
    QString status;
    if (s.isExporting)
        status = "Making the PDF…";
    else if (s.isReadingScreenshots && !s.showingReadingProgress)
        status = QString(
                     "Reading text in screenshots: %1 of %2. Needed to hide words in "
                     "screenshots. The preview updates when it is done.")
                     .arg(s.screenshotsRead)
                     .arg(s.screenshotsTotal);
    else if (!s.exportedFiles.empty()) {
        QString where = QFileInfo(qt(s.exportedFiles.front())).absolutePath();
        status = s.exportedFiles.size() == 1
                     ? "Saved " + QFileInfo(qt(s.exportedFiles.front())).fileName() + " in " +
                           where + "."
                     : QString("Saved %1 files in %2.").arg(s.exportedFiles.size()).arg(where);
        for (const std::string& note : s.exportNotes)
            status += " " + qt(note);
    }
    showText(status_, status);
    itemsButton_->setEnabled(s.scan != nullptr);
    exportButton_->setEnabled(!s.isExporting && !s.selected.empty());
}

void MainWindow::refreshSheets(const AppState& s) {
    if (s.showingItems && s.scan) {
        picker_->show(s);
        if (!picker_->isVisible()) picker_->open();
    } else if (picker_->isVisible()) {
        picker_->hide();
    }
    if (s.showingGuide != guides_->isVisible()) {
        if (s.showingGuide)
            guides_->open();
        else
            guides_->hide();
    }
    bool reading = s.isReadingScreenshots && s.showingReadingProgress;
    if (reading) reading_->show(s);
    if (reading != reading_->isVisible()) {
        if (reading)
            reading_->open();
        else
            reading_->hide();
    }
    if (s.errorMessage && !alert_->isVisible()) {
        alert_->setText(qt(*s.errorMessage));
        alert_->open();
    }
}

void MainWindow::exportFinished(const AppState& s) {
    if (s.exportedFiles.empty()) return;
    reveal(QFileInfo(qt(s.exportedFiles.front())).absolutePath());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QSettings stored(windowState_, QSettings::IniFormat);
    stored.setValue("geometry", saveGeometry());
    stored.setValue("splitter", splitter_->saveState());
    stored.sync();
    // The window goes at once; a scan stops at its next file, and an export
    // under way is finished and written whole before the program ends.
    hide();
    model_->stopWork();
    executor_->shutdown();
    event->accept();
}

}  // namespace kinfolio::gui
