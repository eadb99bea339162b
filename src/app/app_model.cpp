#include "app/app_model.h"

#include <algorithm>
#include <filesystem>

#include "example/example_folder.h"
#include "layout/export_flow.h"
#include "model/files.h"
#include "selection/selection.h"

namespace kinfolio {

AppModel::AppModel(Executor& executor, AppServices services, SettingsStore store)
    : executor_(executor), services_(std::move(services)), store_(std::move(store)) {}

void AppModel::observe(std::function<void()> observer) {
    observers_.push_back(std::move(observer));
}

void AppModel::changed() {
    for (const auto& observer : observers_)
        observer();
}

void AppModel::start() {
    StoredState stored = store_.load();
    // A damaged or incomplete stored value is ignored silently; the defaults
    // hold until the next change saves over it.
    state_.settings = stored.settings.value_or(Settings::defaults());
    std::error_code ec;
    if (stored.folder && std::filesystem::is_directory(*stored.folder, ec)) {
        state_.folder = stored.folder;
        // Only the path is remembered; the example's own files tell it apart.
        state_.isDemo = ExampleFolder::holdsExample(*stored.folder);
        rescan();
    }
    changed();
}

void AppModel::save() {
    try {
        store_.save(state_.settings, state_.folder);
    } catch (const EvidenceError& e) {
        state_.errorMessage = e.what();
    }
}

void AppModel::chooseFolder(const std::string& folder, bool isDemo) {
    state_.folder = folder;
    state_.isDemo = isDemo;
    state_.selectedIDs.clear();
    save();
    rescan();
}

void AppModel::openExample(const std::string& folder) {
    try {
        if (!ExampleFolder::holdsExample(folder)) ExampleFolder::write(folder);
    } catch (const EvidenceError& e) {
        state_.errorMessage = e.what();
        changed();
        return;
    }
    chooseFolder(folder, true);
}

void AppModel::rescan() {
    if (!state_.folder) return;
    state_.phase = Phase::scanning;
    state_.isReadingScreenshots = false;
    state_.showingReadingProgress = false;
    uint64_t generation = ++scanGeneration_;
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, scan = services_.scan,
                          folder = *state_.folder, order = state_.settings.dateOrder,
                          zone = state_.settings.timeZoneID] {
        ScanResult result;
        result.folder = folder;
        std::optional<std::string> error;
        try {
            result = scan(folder, order, zone, {});
        } catch (const std::exception& e) {
            error = dynamic_cast<const EvidenceError*>(&e)
                        ? std::string(e.what())
                        : "Could not read the folder " + folder + ".";
        }
        executor->post([this, generation, result = std::move(result), error] {
            // A folder closed or scanned again meanwhile makes this result stale.
            if (generation != scanGeneration_) return;
            if (error) state_.errorMessage = error;
            state_.scan = result;
            state_.phase = Phase::ready;
            recompute();
            changed();
            readScreenshots();
        });
    });
    changed();
}

void AppModel::closeFolder() {
    ++scanGeneration_;
    ++previewGeneration_;
    if (previewTimer_) executor_.cancel(*previewTimer_);
    previewTimer_.reset();
    renderingGeneration_ = 0;
    AppState fresh;
    fresh.settings = state_.settings;
    fresh.errorMessage = state_.errorMessage;
    fresh.showingGuide = state_.showingGuide;
    state_ = std::move(fresh);
    // Closing is the user's way back to the start screen, so the next start
    // does not reopen the folder either.
    save();
    changed();
}

void AppModel::setSettings(const Settings& settings) {
    if (settings == state_.settings) return;
    // Both are inputs of the scan: the items themselves change with them.
    bool rescanNeeded = state_.folder && (settings.dateOrder != state_.settings.dateOrder ||
                                          settings.timeZoneID != state_.settings.timeZoneID);
    state_.settings = settings;
    save();
    if (rescanNeeded)
        rescan();
    else
        recompute();
    changed();
}

void AppModel::updateSettings(const std::function<void(Settings&)>& change) {
    Settings settings = state_.settings;
    change(settings);
    setSettings(settings);
}

void AppModel::setSelected(const Evidence& item, bool on) {
    AppServices::IdSet proposal;
    if (state_.scan) proposal = services_.proposed(*state_.scan, state_.settings);
    Settings settings = state_.settings;
    services_.setSelected(settings, proposal, item.id(), on);
    setSettings(settings);
}

void AppModel::resetManualChoice() {
    updateSettings(Selection::backToAutomaticChoice);
}

void AppModel::recompute() {
    if (!state_.scan) return;
    state_.candidates = services_.candidates(*state_.scan, state_.settings);
    sortByDate(state_.candidates);
    state_.selected = services_.selected(*state_.scan, state_.settings);
    schedulePreview();
}

ExportInput AppModel::exportInput(std::vector<Evidence> items) const {
    return ExportFlow::input(state_.scan.value_or(ScanResult{}), state_.settings, std::move(items));
}

void AppModel::schedulePreview() {
    if (previewTimer_) executor_.cancel(*previewTimer_);
    previewTimer_.reset();
    uint64_t generation = ++previewGeneration_;
    const auto& selected = state_.selected;
    state_.previewTruncated = selected.size() > kPreviewItemLimit;
    if (selected.empty()) {
        state_.previewPDF.reset();
        state_.previewPageCount = 0;
        state_.isRenderingPreview = false;
        renderingGeneration_ = 0;
        return;
    }
    size_t count = std::min(selected.size(), kPreviewItemLimit);
    ExportInput input = exportInput({selected.begin(), selected.begin() + count});
    // The wait lets a burst of edits (typing a title, stepping a number)
    // end in one render.
    previewTimer_ =
        executor_.after(kPreviewDelay, [this, generation, input = std::move(input)]() mutable {
            previewTimer_.reset();
            if (generation == previewGeneration_) startPreviewRender(generation, std::move(input));
        });
}

void AppModel::startPreviewRender(uint64_t generation, ExportInput input) {
    state_.isRenderingPreview = true;
    renderingGeneration_ = generation;
    changed();
    Executor* executor = &executor_;
    executor_.background(
        [this, executor, generation, make = services_.make, input = std::move(input)] {
            std::optional<Output> output;
            try {
                output = make(input);
            } catch (const std::exception&) {
                // The preview just stays empty; export reports the reason.
            }
            executor->post([this, generation, output = std::move(output)] {
                if (renderingGeneration_ == generation) {
                    state_.isRenderingPreview = false;
                    renderingGeneration_ = 0;
                }
                if (generation == previewGeneration_) {
                    state_.previewPDF =
                        output ? std::optional<std::string>(output->data) : std::nullopt;
                    state_.previewPageCount = output ? output->pageCount : 0;
                }
                changed();
            });
        });
}

void AppModel::readScreenshots() {
    if (!state_.scan || !services_.screenshotsToRead || !services_.recognizeScreenshots) return;
    size_t total = services_.screenshotsToRead(*state_.scan);
    if (total == 0) return;
    state_.isReadingScreenshots = true;
    state_.showingReadingProgress = true;
    state_.screenshotsRead = 0;
    state_.screenshotsTotal = total;
    uint64_t generation = scanGeneration_;
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, recognize = services_.recognizeScreenshots,
                          scan = *state_.scan]() mutable {
        recognize(scan, [this, executor, generation](size_t read, size_t total) {
            executor->post([this, generation, read, total] {
                if (generation != scanGeneration_) return;
                state_.screenshotsRead = read;
                state_.screenshotsTotal = total;
                changed();
            });
        });
        executor->post([this, generation, scan = std::move(scan)] {
            if (generation != scanGeneration_) return;
            state_.scan = scan;
            state_.isReadingScreenshots = false;
            state_.showingReadingProgress = false;
            // The recognised lines are what redaction covers: render again.
            recompute();
            changed();
        });
    });
    changed();
}

void AppModel::continueReadingInBackground() {
    state_.showingReadingProgress = false;
    changed();
}

std::string AppModel::proposedFileName() const {
    return ExportFlow::baseName(state_.settings) + ".pdf";
}

void AppModel::exportPDF(const std::string& path) {
    if (state_.isExporting) return;
    state_.exportNotes.clear();
    state_.exportedFiles.clear();
    if (state_.selected.empty()) {
        state_.errorMessage = "Nothing is selected.";
        changed();
        return;
    }
    state_.isExporting = true;
    changed();

    int64_t limit = ExportFlow::byteLimit(state_.settings);
    Executor* executor = &executor_;
    executor_.background([this, executor, path, limit, settings = state_.settings,
                          services = services_, input = exportInput(state_.selected)] {
        std::vector<std::string> written, notes;
        std::optional<std::string> error;
        try {
            Output output = services.make(input);
            std::vector<std::string> parts = limit >= 1 ? services.split(output.data, limit)
                                                        : std::vector<std::string>{output.data};
            auto result = ExportFlow::writeParts(parts, settings, path);
            written = std::move(result.files);
            notes = std::move(result.notes);
        } catch (const EvidenceError& e) {
            error = e.what();
        } catch (const std::exception&) {
            error = "Could not create the PDF.";
        }
        executor->post([this, written, notes, error] {
            state_.isExporting = false;
            state_.exportedFiles = written;
            state_.exportNotes = notes;
            if (error) state_.errorMessage = error;
            changed();
        });
    });
}

void AppModel::dismissError() {
    state_.errorMessage.reset();
    changed();
}

void AppModel::setShowingItems(bool on) {
    state_.showingItems = on;
    changed();
}

void AppModel::setShowingGuide(bool on) {
    state_.showingGuide = on;
    changed();
}

void AppModel::setSelectedIDs(std::set<std::string> ids) {
    state_.selectedIDs = std::move(ids);
    changed();
}

}  // namespace kinfolio
