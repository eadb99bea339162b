#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>

#include "app/app_model.h"
#include "gui/qt_executor.h"

class QAction;
class QLabel;
class QMessageBox;
class QPushButton;
class QSplitter;
class QStackedWidget;

namespace kinfolio::gui {

class EmptyPage;
class GuidesDialog;
class ItemPicker;
class PreviewPane;
class ReadingProgress;
class ScanningPage;
class SettingsPanel;
class SourcesPanel;
class StartPage;

// The one window: a view of the application model. Every control calls one
// of the model's operations; every change of the model is drawn by
// refresh(), once per turn of the event loop.
class MainWindow : public QMainWindow {
public:
    // `windowState` is where the window's size and places are kept (an INI
    // file); empty for the user's own.
    MainWindow(AppServices services, SettingsStore store, QString windowState = {},
               QWidget* parent = nullptr);
    ~MainWindow() override;

    AppModel& model() { return *model_; }
    // Reads the stored settings and reopens the remembered folder.
    void start();
    // Opens a folder as "Open With" and the folder chooser do.
    void openFolder(const QString& folder);
    // Asks where to save (proposing the settings' file name) and exports.
    void exportWithDialog();
    // Writes the example into the user's documents folder and opens it.
    void tryExample();

    // How a written PDF is shown in the file manager; tests replace it.
    std::function<void(const QString& folder)> reveal;

    // The parts of the window, for tests and screenshots.
    StartPage* startPage() const { return start_; }
    SourcesPanel* sources() const { return sources_; }
    SettingsPanel* settings() const { return settings_; }
    PreviewPane* preview() const { return preview_; }
    ItemPicker* picker() const { return picker_; }
    GuidesDialog* guides() const { return guides_; }
    ReadingProgress* readingProgress() const { return reading_; }
    QMessageBox* alert() const { return alert_; }
    QLabel* summaryLine() const { return summary_; }
    QLabel* statusLine() const { return status_; }
    QPushButton* exportButton() const { return exportButton_; }
    QWidget* currentPage() const;
    // The actions of the menus, by their text without "&".
    QAction* action(const QString& text) const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildReadyPage();
    void chooseFolder();
    void scheduleRefresh();
    void refresh();
    void refreshFooter(const AppState& s);
    void refreshSheets(const AppState& s);
    void exportFinished(const AppState& s);
    QString exportFolder() const;

    std::unique_ptr<QtExecutor> executor_;
    std::unique_ptr<AppModel> model_;
    QString windowState_;
    bool refreshPending_ = false;
    bool wasExporting_ = false;

    // The menu commands that depend on the state.
    QAction *rescanAction_, *closeAction_, *exportAction_, *itemsAction_, *automaticAction_;
    QStackedWidget* pages_;
    StartPage* start_;
    ScanningPage* scanning_;
    EmptyPage* empty_;
    QWidget* ready_;
    QSplitter* splitter_;
    SourcesPanel* sources_;
    PreviewPane* preview_;
    SettingsPanel* settings_;
    QLabel* summary_;
    QLabel* gaps_;
    QLabel* status_;
    QPushButton* itemsButton_;
    QPushButton* exportButton_;
    ItemPicker* picker_;
    GuidesDialog* guides_;
    ReadingProgress* reading_;
    QMessageBox* alert_;
};

}  // namespace kinfolio::gui
