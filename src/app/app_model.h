#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/app_services.h"
#include "app/executor.h"
#include "app/settings_store.h"
#include "selection/selection.h"

namespace kinfolio {

enum class Phase { needsFolder, scanning, ready };

// Everything the window shows. Changed only on the main thread.
struct AppState {
    Phase phase = Phase::needsFolder;
    std::optional<std::string> folder;
    // Never changed once made, so background work reads it while the window
    // shows it; a new scan or the recognised screenshots replace it whole.
    std::shared_ptr<const ScanResult> scan;
    bool isDemo = false;
    // The scan's progress: "Reading files: 120 of 480". Both 0 while the
    // folder is listed (or the example written), before files are read.
    size_t filesRead = 0, filesTotal = 0;
    Settings settings = Settings::defaults();
    // All three point into *scan and are replaced in the same step as it.
    Selection::ItemRefs selected;
    Selection::ItemRefs candidates;  // by date
    Selection::ItemRefs proposed;    // the automatic choice, before any tick
    std::optional<std::string> previewPDF;
    int previewPageCount = 0;
    bool previewTruncated = false;
    bool isRenderingPreview = false;
    bool isExporting = false;
    std::optional<std::string> errorMessage;  // alert "Something went wrong"
    bool showingItems = false;
    bool showingGuide = false;
    bool isReadingScreenshots = false;
    size_t screenshotsRead = 0, screenshotsTotal = 0;
    bool showingReadingProgress = false;
    std::set<std::string> selectedIDs;  // highlighted in the item list
    // The last export: its notes for the user and the files written.
    std::vector<std::string> exportNotes;
    std::vector<std::string> exportedFiles;
};

// The one-window application's state and operations, free of any toolkit:
// a window binds to state() and observe(), tests drive it headless.
class AppModel {
public:
    static constexpr size_t kPreviewItemLimit = 250;
    static constexpr double kPreviewDelay = 0.25;

    AppModel(Executor& executor, AppServices services, SettingsStore store);
    // stopWork(); what is still running is dropped on arrival by the
    // executor, which outlives the model.
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    const AppState& state() const { return state_; }
    // Called after every change of state().
    void observe(std::function<void()> observer);

    // Stored settings (strict decoding, else the defaults) and the remembered
    // folder, scanned when it still exists.
    void start();

    void chooseFolder(const std::string& folder, bool isDemo = false);
    // Writes the example materials folder into `folder` unless it holds it
    // already, then opens it as a demo. A folder with other files is refused.
    // The writing runs in the background, shown as the scan.
    void openExample(const std::string& folder);
    void rescan();
    void closeFolder();

    void setSettings(const Settings& settings);
    void updateSettings(const std::function<void(Settings&)>& change);
    // A tick on one item of the list, kept in the settings.
    void setSelected(const Evidence& item, bool on);
    // "Back to Automatic Choice": forget every manual tick.
    void resetManualChoice();

    // What the selection covers: "64 messages, 3 documents", or "Nothing".
    std::string summary() const;
    // "Nothing selected for Feb 2025, Mar 2025. Add …", empty without gaps.
    std::string gapSentence() const;
    // Under a truncated preview: "(Preview of the first 250 of 300 items; the
    // export includes all)"; empty when the preview shows everything.
    std::string previewNote() const;

    // The name the save dialog proposes: the base name + ".pdf".
    std::string proposedFileName() const;
    // Renders the whole selection and writes it to `path`, or, when it is
    // split, writes the numbered parts next to it named after its stem.
    void exportPDF(const std::string& path);

    // Stops a scan or the reading of screenshots at its next file, before
    // the program ends. An export goes on, so its file is written whole.
    void stopWork();

    void continueReadingInBackground();
    void dismissError();
    void setShowingItems(bool on);
    void setShowingGuide(bool on);
    void setSelectedIDs(std::set<std::string> ids);

private:
    // The item list and the selection of one scan, worked out in the background.
    struct Picks {
        Selection::ItemRefs candidates, selected, proposed;
    };
    static Picks pick(const AppServices& services, const ScanResult& scan,
                      const Settings& settings);

    void changed();
    void save();
    // Makes `scan` the one shown, with the picks made from it under `settings`.
    void adopt(std::shared_ptr<const ScanResult> scan, const Settings& settings, Picks picks);
    // Puts picks made under `settings` in the state.
    void show(Picks picks, const Settings& settings);
    // The settings without the user's ticks: all the proposal depends on.
    static Settings automaticPart(Settings settings);
    // Selects again in the background after a change of the settings.
    void recompute();
    void cancelPreview();
    void schedulePreview();
    void startPreviewRender(uint64_t generation, std::shared_ptr<const ScanResult> scan,
                            Settings settings, Selection::ItemRefs items);
    void readScreenshots();

    Executor& executor_;
    AppServices services_;
    SettingsStore store_;
    AppState state_;
    std::vector<std::function<void()>> observers_;

    struct Saving {
        std::mutex lock;
        uint64_t written = 0;  // the generation of the settings on disk
    };
    std::shared_ptr<Saving> saving_ = std::make_shared<Saving>();
    uint64_t saveGeneration_ = 0;
    uint64_t scanGeneration_ = 0;
    // The generation of the scan wanted now, read by the scan in flight to
    // stop early once it is no longer wanted; ~0 when the model goes away.
    std::shared_ptr<std::atomic<uint64_t>> wantedScan_ = std::make_shared<std::atomic<uint64_t>>(0);
    uint64_t selectionGeneration_ = 0;
    Settings proposedUnder_;  // the automatic part of the settings of state_.proposed
    uint64_t previewGeneration_ = 0;
    uint64_t renderingGeneration_ = 0;  // of the render in flight, 0 for none
    std::optional<Executor::TimerID> previewTimer_;
};

}  // namespace kinfolio
