#include "app/app_model.h"

#include <algorithm>
#include <filesystem>

#include "app/export_job.h"
#include "example/example_folder.h"
#include "model/files.h"

namespace kinfolio {

namespace {

// Thrown through the scanner by its progress callback when the scan is no
// longer wanted; not an error, so not an std::exception.
struct ScanStopped {};

// Progress reaches the window at most this often: enough for a moving count,
// few enough not to flood the main thread on a folder of thousands of files.
constexpr double kProgressInterval = 0.05;

// Whether `path` lies in `folder` or below it, links resolved.
bool insideFolder(const std::string& path, const std::string& folder) {
    std::error_code ec;
    auto target = std::filesystem::weakly_canonical(std::filesystem::absolute(path), ec);
    auto root = std::filesystem::weakly_canonical(folder, ec);
    if (ec) return false;
    auto relative = target.lexically_relative(root);
    return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

AppModel::AppModel(Executor& executor, AppServices services, SettingsStore store)
    : executor_(executor), services_(std::move(services)), store_(std::move(store)) {}

AppModel::~AppModel() {
    stopWork();
}

void AppModel::stopWork() {
    wantedScan_->store(~uint64_t{0});
}

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
    if (services_.warmUp) executor_.background(services_.warmUp);
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
    // Written in the background: the file is synced to disk, which can take
    // longer than a keystroke. Saves run in the order they were asked for,
    // and one overtaken by a newer save writes nothing.
    uint64_t generation = ++saveGeneration_;
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, saving = saving_, store = store_,
                          settings = state_.settings, folder = state_.folder] {
        std::lock_guard lock(saving->lock);
        if (generation < saving->written) return;
        try {
            store.save(settings, folder);
            saving->written = generation;
        } catch (const EvidenceError& e) {
            executor->post([this, message = std::string(e.what())] {
                state_.errorMessage = message;
                changed();
            });
        }
    });
}

void AppModel::chooseFolder(const std::string& folder, bool isDemo) {
    state_.folder = folder;
    state_.isDemo = isDemo;
    state_.selectedIDs.clear();
    save();
    rescan();
}

void AppModel::openExample(const std::string& folder) {
    if (ExampleFolder::holdsExample(folder)) return chooseFolder(folder, true);
    try {
        ExampleFolder::checkTarget(folder);
    } catch (const EvidenceError& e) {
        state_.errorMessage = e.what();
        changed();
        return;
    }
    // Making the example's videos and documents takes a moment: it is done
    // in the background and shown as the start of the scan.
    uint64_t generation = ++scanGeneration_;
    wantedScan_->store(generation);  // a scan of the folder shown before stops
    state_.folder = folder;
    state_.isDemo = true;
    state_.phase = Phase::scanning;
    state_.filesRead = state_.filesTotal = 0;
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, folder] {
        std::optional<std::string> error;
        try {
            ExampleFolder::write(folder);
        } catch (const std::exception& e) {
            error = e.what();
        }
        executor->post([this, generation, folder, error] {
            if (generation != scanGeneration_) return;
            if (!error) return chooseFolder(folder, true);
            closeFolder();
            state_.errorMessage = error;
            changed();
        });
    });
    changed();
}

void AppModel::rescan() {
    if (!state_.folder) return;
    state_.phase = Phase::scanning;
    state_.filesRead = state_.filesTotal = 0;
    state_.isReadingScreenshots = false;
    state_.showingReadingProgress = false;
    uint64_t generation = ++scanGeneration_;
    wantedScan_->store(generation);
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, wanted = wantedScan_, services = services_,
                          folder = *state_.folder, settings = state_.settings] {
        auto result = std::make_shared<ScanResult>();
        result->folder = folder;
        std::optional<std::string> error;
        double reported = -kProgressInterval;
        auto progress = [&](size_t done, size_t total) {
            // A newer scan, a closed folder or a closed window: stop reading.
            if (wanted->load() != generation) throw ScanStopped{};
            if (done < total && executor->now() - reported < kProgressInterval) return;
            reported = executor->now();
            executor->post([this, generation, done, total] {
                if (generation != scanGeneration_) return;
                state_.filesRead = done;
                state_.filesTotal = total;
                changed();
            });
        };
        try {
            *result = services.scan(folder, settings.dateOrder, settings.timeZoneID, progress);
        } catch (const ScanStopped&) {
            return;
        } catch (const std::exception& e) {
            error = dynamic_cast<const EvidenceError*>(&e)
                        ? std::string(e.what())
                        : "Could not read the folder " + folder + ".";
        }
        // Selecting here too lets the scan arrive ready to show.
        Picks picks = pick(services, *result, settings);
        std::shared_ptr<const ScanResult> scan = std::move(result);
        executor->post(
            [this, generation, scan, settings, picks = std::move(picks), error]() mutable {
                // A folder closed or scanned again meanwhile makes this result stale.
                if (generation != scanGeneration_) return;
                if (error) state_.errorMessage = error;
                state_.phase = Phase::ready;
                adopt(std::move(scan), settings, std::move(picks));
                changed();
                readScreenshots();
            });
    });
    changed();
}

AppModel::Picks AppModel::pick(const AppServices& services, const ScanResult& scan,
                               const Settings& settings) {
    Picks picks{services.candidates(scan, settings), services.selected(scan, settings),
                services.proposed(scan, settings)};
    std::stable_sort(picks.candidates.begin(), picks.candidates.end(),
                     [](const Evidence* a, const Evidence* b) { return a->date < b->date; });
    return picks;
}

void AppModel::adopt(std::shared_ptr<const ScanResult> scan, const Settings& settings,
                     Picks picks) {
    // The old picks point into the old scan, so both are replaced together,
    // and a selection still running over the old scan is dropped on arrival.
    state_.scan = std::move(scan);
    ++selectionGeneration_;
    show(std::move(picks), settings);
    // Settings changed while the work ran are applied over the new scan.
    if (settings == state_.settings)
        schedulePreview();
    else
        recompute();
}

void AppModel::closeFolder() {
    ++scanGeneration_;
    wantedScan_->store(scanGeneration_);
    ++selectionGeneration_;
    cancelPreview();
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
    // Only whether this item is proposed matters. Ticks do not change the
    // proposal, so the one shown still holds after them; after any other
    // change whose selection is still on its way, it is worked out here.
    AppServices::IdSet proposal;
    if (state_.scan) {
        bool shownHolds = automaticPart(state_.settings) == proposedUnder_;
        Selection::ItemRefs worked;
        if (!shownHolds) worked = services_.proposed(*state_.scan, state_.settings);
        const auto& proposed = shownHolds ? state_.proposed : worked;
        if (std::any_of(proposed.begin(), proposed.end(), [&](const Evidence* e) {
                return e->position == item.position && e->fileID == item.fileID;
            }))
            proposal.insert(item.id());
    }
    Settings settings = state_.settings;
    services_.setSelected(settings, proposal, item.id(), on);
    setSettings(settings);
}

void AppModel::resetManualChoice() {
    updateSettings(Selection::backToAutomaticChoice);
}

void AppModel::recompute() {
    if (!state_.scan) return;
    // The preview of the old selection is out of date from now on: none may
    // start, and one being drawn is not shown.
    cancelPreview();
    uint64_t generation = ++selectionGeneration_;
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, services = services_, scan = state_.scan,
                          settings = state_.settings] {
        Picks picks = pick(services, *scan, settings);
        executor->post([this, generation, picks = std::move(picks), settings]() mutable {
            // A later change, a new scan or a closed folder makes it stale;
            // its references are then never read.
            if (generation != selectionGeneration_) return;
            show(std::move(picks), settings);
            schedulePreview();
            changed();
        });
    });
}

void AppModel::show(Picks picks, const Settings& settings) {
    state_.candidates = std::move(picks.candidates);
    state_.selected = std::move(picks.selected);
    state_.proposed = std::move(picks.proposed);
    proposedUnder_ = automaticPart(settings);
}

Settings AppModel::automaticPart(Settings settings) {
    Selection::backToAutomaticChoice(settings);
    return settings;
}

void AppModel::cancelPreview() {
    if (previewTimer_) executor_.cancel(*previewTimer_);
    previewTimer_.reset();
    ++previewGeneration_;
}

void AppModel::schedulePreview() {
    cancelPreview();
    uint64_t generation = previewGeneration_;
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
    Selection::ItemRefs items(selected.begin(), selected.begin() + count);
    // The wait lets a burst of edits (typing a title, stepping a number)
    // end in one render. The timer holds the scan its items point into.
    previewTimer_ = executor_.after(kPreviewDelay, [this, generation, scan = state_.scan,
                                                    settings = state_.settings,
                                                    items = std::move(items)]() mutable {
        previewTimer_.reset();
        if (generation == previewGeneration_)
            startPreviewRender(generation, std::move(scan), std::move(settings), std::move(items));
    });
}

void AppModel::startPreviewRender(uint64_t generation, std::shared_ptr<const ScanResult> scan,
                                  Settings settings, Selection::ItemRefs items) {
    state_.isRenderingPreview = true;
    renderingGeneration_ = generation;
    changed();
    Executor* executor = &executor_;
    executor_.background([this, executor, generation, make = services_.make, scan = std::move(scan),
                          settings = std::move(settings), items = std::move(items)] {
        std::optional<Output> output;
        try {
            output = make(ExportJob::input(*scan, settings, items));
        } catch (const std::exception&) {
            // The preview just stays empty; export reports the reason.
        }
        executor->post([this, generation, output = std::move(output)]() mutable {
            if (renderingGeneration_ == generation) {
                state_.isRenderingPreview = false;
                renderingGeneration_ = 0;
            }
            if (generation == previewGeneration_) {
                state_.previewPDF =
                    output ? std::optional<std::string>(std::move(output->data)) : std::nullopt;
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
    executor_.background([this, executor, generation, wanted = wantedScan_, services = services_,
                          scan = state_.scan, settings = state_.settings] {
        // The lines are written into a copy, made here rather than on the
        // main thread, which goes on showing the scan without them.
        auto read = std::make_shared<ScanResult>(*scan);
        auto report = [this, executor, generation, wanted](size_t done, size_t total) {
            if (wanted->load() != generation) throw ScanStopped{};
            executor->post([this, generation, done, total] {
                if (generation != scanGeneration_) return;
                state_.screenshotsRead = done;
                state_.screenshotsTotal = total;
                changed();
            });
        };
        try {
            services.recognizeScreenshots(*read, report);
        } catch (const ScanStopped&) {
            return;
        }
        Picks picks = pick(services, *read, settings);
        std::shared_ptr<const ScanResult> recognised = std::move(read);
        executor->post(
            [this, generation, recognised, settings, picks = std::move(picks)]() mutable {
                if (generation != scanGeneration_) return;
                state_.isReadingScreenshots = false;
                state_.showingReadingProgress = false;
                // The recognised lines are what redaction covers: render again.
                adopt(std::move(recognised), settings, std::move(picks));
                changed();
            });
    });
    changed();
}

void AppModel::continueReadingInBackground() {
    state_.showingReadingProgress = false;
    changed();
}

std::string AppModel::summary() const {
    return Selection::summary(state_.selected);
}

std::string AppModel::gapSentence() const {
    return Selection::gapSentence(Selection::gapMonths(state_.selected));
}

std::string AppModel::previewNote() const {
    if (!state_.previewTruncated) return {};
    return "(Preview of the first " + std::to_string(kPreviewItemLimit) + " of " +
           std::to_string(state_.selected.size()) + " items; the export includes all)";
}

std::string AppModel::proposedFileName() const {
    return ExportJob::baseName(state_.settings) + ".pdf";
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
    if (state_.folder && insideFolder(path, *state_.folder)) {
        state_.errorMessage =
            "Save the PDF outside the materials folder, so that Kinfolio does not read it as one "
            "of your records the next time it scans the folder.";
        changed();
        return;
    }
    state_.isExporting = true;
    changed();

    Executor* executor = &executor_;
    executor_.background([this, executor, path, services = services_, scan = state_.scan,
                          settings = state_.settings] {
        ExportJob::Written written;
        std::optional<std::string> error;
        try {
            written = ExportJob::run(services, *scan, settings, path).written;
        } catch (const EvidenceError& e) {
            error = e.what();
        } catch (const std::exception&) {
            error = "Could not create the PDF.";
        }
        executor->post([this, written, error] {
            state_.isExporting = false;
            state_.exportedFiles = written.files;
            state_.exportNotes = written.notes;
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
