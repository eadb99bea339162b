#include "app/app_model.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "app/export_job.h"
#include "model/json.h"
#include "scan/scanner.h"
#include "support/fake_services.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::readFile;

// The defaults, their date range (from today) taken from what the model shows.
Settings defaultsAsShown(const Settings& shown) {
    Settings settings = Settings::defaults();
    settings.rangeStart = shown.rangeStart;
    settings.rangeEnd = shown.rangeEnd;
    return settings;
}

bool contains(const Selection::ItemRefs& items, const Evidence& item) {
    return std::any_of(items.begin(), items.end(), [&](const Evidence* e) { return *e == item; });
}

// The model's own logic (timing, staleness, storage, export writing) with
// instant stand-ins for scanning and rendering, and the whole road a user
// takes with the real scanner, selection and PDF writer.
class AppModelTest : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(folder); }

    SettingsStore store() const { return SettingsStore(root.path() + "/config/settings.json"); }
    std::string out(const std::string& name) const { return root.path() + "/" + name; }

    std::unique_ptr<AppModel> makeModel(AppServices services) {
        auto model = std::make_unique<AppModel>(executor, std::move(services), store());
        model->observe([this] { ++notifications; });
        model->start();
        return model;
    }
    std::unique_ptr<AppModel> makeModel(size_t messages = 20) {
        return makeModel(testing::fakeServices(log, messages));
    }
    // A model with the folder chosen, scanned and its first preview rendered.
    std::unique_ptr<AppModel> readyModel(AppServices services) {
        auto model = makeModel(std::move(services));
        model->chooseFolder(folder);
        executor.settle();
        return model;
    }

    testing::ScopedCacheHome cache;
    testing::TempFolder root;
    std::string folder = root.path() + "/materials";
    std::shared_ptr<testing::FakeLog> log = std::make_shared<testing::FakeLog>();
    ManualExecutor executor;
    int notifications = 0;
};

TEST_F(AppModelTest, FirstStartShowsDefaultsAndWritesNothing) {
    auto model = makeModel();
    const AppState& s = model->state();
    EXPECT_EQ(s.phase, Phase::needsFolder);
    EXPECT_FALSE(s.folder);
    EXPECT_FALSE(s.scan);
    EXPECT_EQ(s.settings, defaultsAsShown(s.settings));
    EXPECT_FALSE(fs::exists(store().path()));
    EXPECT_EQ(log->scans, 0);
}

TEST_F(AppModelTest, ThePreviewWaitsAQuarterSecondAndABurstOfEditsRendersOnce) {
    auto model = makeModel();
    const AppState& s = model->state();
    model->chooseFolder(folder);
    EXPECT_EQ(s.phase, Phase::scanning);
    EXPECT_EQ(executor.pendingBackground(), 2u);  // the saved folder and the scan
    executor.drain();
    EXPECT_EQ(s.phase, Phase::ready);
    EXPECT_FALSE(s.previewPDF);
    executor.advance(0.24);
    EXPECT_FALSE(s.isRenderingPreview);
    executor.advance(0.01);
    EXPECT_TRUE(s.isRenderingPreview);
    executor.drain();
    EXPECT_FALSE(s.isRenderingPreview);
    ASSERT_TRUE(s.previewPDF);
    EXPECT_EQ(s.previewPageCount, static_cast<int>(s.selected.size()));
    EXPECT_EQ(log->renders, 1);

    // Ten edits 0.02 s apart: each one restarts the wait, so only the last renders.
    for (int i = 0; i < 10; ++i) {
        model->updateSettings([i](Settings& x) { x.title = "Title " + std::to_string(i); });
        executor.advance(0.02);
        executor.drain();
    }
    EXPECT_EQ(log->renders, 1);
    EXPECT_EQ(executor.pendingTimers(), 1u);
    executor.settle();
    EXPECT_EQ(log->renders, 2);
    EXPECT_EQ(s.previewPDF->substr(0, 8), "Title 9|");
    EXPECT_EQ(store().load().settings->title, "Title 9");
    EXPECT_EQ(log->scans, 1);
    EXPECT_GT(notifications, 10);

    // A render overtaken by a newer edit while it runs is never shown.
    model->updateSettings([](Settings& x) { x.title = "First"; });
    executor.drain();
    executor.advance(0.25);  // the render of "First" is queued in the background
    ASSERT_TRUE(s.isRenderingPreview);
    model->updateSettings([](Settings& x) { x.title = "Second"; });
    executor.drain();
    EXPECT_EQ(s.previewPDF->substr(0, 8), "Title 9|");
    EXPECT_FALSE(s.isRenderingPreview);
    executor.settle();
    EXPECT_EQ(s.previewPDF->substr(0, 7), "Second|");
}

TEST_F(AppModelTest, PreviewShowsTheFirst250OfMoreWhileTheExportHoldsAll) {
    auto model = makeModel(300);
    model->updateSettings([](Settings& x) { x.messagesPerMonth = 0; });
    model->chooseFolder(folder);
    executor.settle();
    const AppState& s = model->state();
    ASSERT_EQ(s.selected.size(), 300u);
    EXPECT_TRUE(s.previewTruncated);
    EXPECT_EQ(s.previewPageCount, 250);
    EXPECT_EQ(model->previewNote(),
              "(Preview of the first 250 of 300 items; the export includes all)");
    // The preview holds the first 250 in selection order.
    EXPECT_NE(s.previewPDF->find(s.selected[249]->id() + ";"), std::string::npos);
    EXPECT_EQ(s.previewPDF->find(s.selected[250]->id() + ";"), std::string::npos);

    model->exportPDF(out("all.pdf"));
    executor.drain();
    EXPECT_EQ(log->renderedItemCounts, (std::vector<size_t>{250, 300}));
    std::string written = readFile(out("all.pdf"));
    EXPECT_EQ(std::count(written.begin(), written.end(), ';'), 300);

    model->updateSettings([](Settings& x) { x.messagesPerMonth = 5; });
    executor.drain();
    EXPECT_FALSE(s.previewTruncated);
    EXPECT_EQ(model->previewNote(), "");
}

TEST_F(AppModelTest, NothingSelectedClearsThePreviewAndRefusesExport) {
    auto model = readyModel(testing::fakeServices(log));
    const AppState& s = model->state();
    ASSERT_TRUE(s.previewPDF);
    model->updateSettings([](Settings& x) { x.excludedSources = {"chat1"}; });
    executor.drain();
    EXPECT_TRUE(s.selected.empty());
    EXPECT_TRUE(s.candidates.empty());
    EXPECT_FALSE(s.previewPDF);
    EXPECT_EQ(s.previewPageCount, 0);
    EXPECT_EQ(executor.pendingTimers(), 0u);
    model->exportPDF(out("x.pdf"));
    EXPECT_EQ(s.errorMessage, "Nothing is selected.");
    EXPECT_FALSE(s.isExporting);
    EXPECT_FALSE(fs::exists(out("x.pdf")));
    model->dismissError();
    EXPECT_FALSE(s.errorMessage);
}

TEST_F(AppModelTest, ASplitExportShowsItsPartsAndNote) {
    AppServices services = testing::fakeServices(log);
    services.split = [](const ExportInput&, const std::string& data, int64_t maxBytes) {
        EXPECT_EQ(maxBytes, 10'000'000);
        return std::vector<std::string>{data.substr(0, 3), data.substr(3, 3), data.substr(6)};
    };
    auto model = readyModel(services);
    const AppState& s = model->state();
    model->updateSettings([](Settings& x) {
        x.title = "Evidence";
        x.maxFileMB = 10;
    });
    model->exportPDF(out("Evidence.pdf"));
    executor.drain();
    ASSERT_FALSE(s.errorMessage);
    std::vector<std::string> parts;
    for (int i = 1; i <= 3; ++i)
        parts.push_back(out("Evidence - Part " + std::to_string(i) + " of 3.pdf"));
    EXPECT_EQ(s.exportedFiles, parts);
    EXPECT_FALSE(fs::exists(out("Evidence.pdf")));
    std::string whole = "Evidence|";
    for (const auto& item : s.selected)
        whole += item->id() + ";";
    EXPECT_EQ(readFile(parts[0]), whole.substr(0, 3));
    EXPECT_EQ(readFile(parts[0]) + readFile(parts[1]) + readFile(parts[2]), whole);
    EXPECT_EQ(s.exportNotes, std::vector<std::string>{ExportJob::splitMessage(3, 10)});
}

TEST_F(AppModelTest, ExportFailuresBecomeTheErrorMessage) {
    struct Case {
        const char* name;
        std::function<Output(const ExportInput&)> make;  // none: the fake's
        std::string target, error;
    };
    const Case cases[] = {
        {"a folder that does not exist", {}, out("no such folder/x.pdf"), ""},
        {"inside the materials folder",
         {},
         folder + "/x.pdf",
         "Save the PDF outside the materials folder, so that Kinfolio does not read it as one of "
         "your records the next time it scans the folder."},
        {"the drawing refuses",
         [](const ExportInput&) -> Output {
             throw EvidenceError::invalid(
                 "The source file for an item is missing. Scan the folder again.");
         },
         out("y.pdf"), "The source file for an item is missing. Scan the folder again."},
        {"the drawing breaks", [](const ExportInput&) -> Output { throw std::bad_alloc(); },
         out("z.pdf"), "Could not create the PDF."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AppServices services = testing::fakeServices(log);
        if (c.make) services.make = c.make;
        auto model = readyModel(services);
        const AppState& s = model->state();
        model->exportPDF(c.target);
        executor.drain();
        ASSERT_TRUE(s.errorMessage);
        if (!c.error.empty()) {
            EXPECT_EQ(*s.errorMessage, c.error);
        }
        EXPECT_EQ(s.errorMessage->back(), '.');
        EXPECT_FALSE(s.isExporting);
        EXPECT_TRUE(s.exportedFiles.empty());
        EXPECT_FALSE(fs::exists(c.target));
    }
}

TEST_F(AppModelTest, DateOrderAndTimeZoneChangesRescanAtOnce) {
    auto model = readyModel(testing::fakeServices(log));
    model->updateSettings([](Settings& x) { x.dateOrder = DateOrder::dayFirst; });
    EXPECT_EQ(model->state().phase, Phase::scanning);
    executor.settle();
    model->updateSettings([](Settings& x) { x.timeZoneID = "Pacific/Auckland"; });
    executor.settle();
    model->updateSettings([](Settings& x) { x.paper = PaperSize::letter; });
    executor.settle();
    EXPECT_EQ(log->scans, 3);
    EXPECT_EQ(log->scannedOrders, (std::vector<DateOrder>{DateOrder::automatic, DateOrder::dayFirst,
                                                          DateOrder::dayFirst}));
    EXPECT_EQ(log->scannedZones.back(), "Pacific/Auckland");
    EXPECT_EQ(model->state().phase, Phase::ready);
}

// Settings and the folder come back after a restart; the example is written
// once, refused over someone's own files, and stays a demo.
TEST_F(AppModelTest, TheExampleAndTheSettingsSurviveARestart) {
    std::string example = root.path() + "/example";
    {
        auto model = makeModel();
        model->openExample(example);
        EXPECT_EQ(model->state().phase, Phase::scanning);
        EXPECT_EQ(model->state().folder, example);
        executor.settle();
        EXPECT_TRUE(model->state().isDemo);
        model->openExample(example);  // reuses what is there
        EXPECT_FALSE(model->state().errorMessage);
        executor.settle();
        // A folder holding something else is neither written to nor opened.
        root.write("mine/notes.txt", "my own file");
        std::string before = testing::folderFingerprint(root.path() + "/mine");
        model->openExample(root.path() + "/mine");
        ASSERT_TRUE(model->state().errorMessage);
        EXPECT_EQ(model->state().errorMessage->back(), '.');
        EXPECT_EQ(model->state().folder, example);
        EXPECT_EQ(log->scans, 2);
        EXPECT_EQ(testing::folderFingerprint(root.path() + "/mine"), before);
        model->updateSettings([](Settings& x) {
            x.applicant = "Sam Lee";
            x.maxFileMB = 8;
        });
        executor.settle();
    }
    {
        auto model = makeModel();
        const AppState& s = model->state();
        EXPECT_EQ(s.settings.applicant, "Sam Lee");
        EXPECT_EQ(s.settings.maxFileMB, 8);
        EXPECT_EQ(s.folder, example);
        EXPECT_TRUE(s.isDemo);
        EXPECT_EQ(s.phase, Phase::scanning);
        executor.settle();
        EXPECT_EQ(s.phase, Phase::ready);
        EXPECT_EQ(log->scans, 3);
        model->chooseFolder(folder);  // any other folder is the user's own
        EXPECT_FALSE(s.isDemo);
        executor.settle();
    }
    // A folder that is gone is not reopened.
    fs::remove_all(folder);
    auto model = makeModel();
    EXPECT_EQ(model->state().phase, Phase::needsFolder);
    EXPECT_FALSE(model->state().folder);
    EXPECT_EQ(log->scans, 4);
}

TEST_F(AppModelTest, StoredSettingsMissingAKeyGiveTheDefaultsUntilTheNextChange) {
    Json json = Json::object();
    json["settings"] = encode(Settings::defaults());
    json["settings"]["title"] = "Our story";
    json["settings"].erase("partner");
    fs::create_directories(root.path() + "/config");
    std::ofstream(store().path()) << json.dump();
    auto model = makeModel();
    EXPECT_EQ(model->state().settings, defaultsAsShown(model->state().settings));
    EXPECT_EQ(readFile(store().path()), json.dump());
}

TEST_F(AppModelTest, ClosingTheFolderDropsEverythingPending) {
    auto model = makeModel();
    model->chooseFolder(folder);
    model->closeFolder();
    executor.settle();  // the scan still runs, its result is dropped
    const AppState& s = model->state();
    EXPECT_EQ(s.phase, Phase::needsFolder);
    EXPECT_FALSE(s.scan);
    EXPECT_FALSE(s.folder);

    model->chooseFolder(folder);
    executor.drain();
    model->updateSettings([](Settings& x) { x.title = "Pending"; });
    model->closeFolder();
    EXPECT_EQ(executor.pendingTimers(), 0u);
    executor.settle();
    EXPECT_EQ(log->renders, 0);
    EXPECT_TRUE(s.selected.empty());
    EXPECT_FALSE(s.previewPDF);
    EXPECT_EQ(s.settings.title, "Pending");
    EXPECT_FALSE(store().load().folder);
}

TEST_F(AppModelTest, OnlyTheLatestOfTwoScansIsKept) {
    std::string other = root.path() + "/other";
    fs::create_directories(other);
    auto model = makeModel();
    model->chooseFolder(folder);
    model->chooseFolder(other, true);
    executor.settle();
    EXPECT_EQ(log->scans, 2);
    EXPECT_EQ(model->state().scan->folder, other);
    EXPECT_TRUE(model->state().isDemo);
}

// The selection points into the scan, so a selection made over a scan that
// has been replaced meanwhile must never be shown.
TEST_F(AppModelTest, ASelectionOvertakenByANewScanIsDropped) {
    auto model = readyModel(testing::fakeServices(log));
    const AppState& s = model->state();
    Settings before = s.settings;
    model->rescan();
    model->updateSettings([](Settings& x) { x.messagesPerMonth = 1; });
    ASSERT_TRUE(executor.runNextBackground());  // the new scan, selected as before the change
    executor.runMainQueue();
    EXPECT_EQ(s.selected, Selection::selected(*s.scan, before));
    ASSERT_TRUE(executor.runNextBackground());  // the change, selected over the old scan
    executor.runMainQueue();
    EXPECT_EQ(s.selected, Selection::selected(*s.scan, before));
    executor.settle();
    EXPECT_EQ(s.selected, Selection::selected(*s.scan, s.settings));
    EXPECT_LT(s.selected.size(), Selection::selected(*s.scan, before).size());
}

TEST_F(AppModelTest, ScreenshotReadingReportsProgressAndRendersAgain) {
    AppServices services = testing::fakeServices(log);
    services.screenshotsToRead = [](const ScanResult& scan) {
        return scan.sources[0].items[0].details().textBoxes.empty() ? size_t{3} : size_t{0};
    };
    services.recognizeScreenshots = [](ScanResult& scan, const AppServices::Progress& progress) {
        for (size_t i = 1; i <= 3; ++i)
            progress(i, 3);
        for (auto& item : scan.sources[0].items)
            item.detailsForWriting().textBoxes.push_back({"seen", 0, 0, 1, 1});
    };
    auto model = makeModel(services);
    const AppState& s = model->state();
    std::vector<size_t> seen;
    model->observe([&] {
        if (s.isReadingScreenshots && (seen.empty() || seen.back() != s.screenshotsRead))
            seen.push_back(s.screenshotsRead);
    });
    model->chooseFolder(folder);
    executor.drain();
    EXPECT_FALSE(s.isReadingScreenshots);
    EXPECT_FALSE(s.showingReadingProgress);
    EXPECT_EQ(seen, (std::vector<size_t>{0, 1, 2, 3}));
    EXPECT_EQ(s.screenshotsTotal, 3u);
    EXPECT_EQ(s.selected.front()->details().textBoxes.size(), 1u);
    executor.settle();
    EXPECT_EQ(log->renders, 1);

    // A rescan meanwhile makes the old reading's progress and result stale.
    services.screenshotsToRead = [](const ScanResult&) { return size_t{2}; };
    services.recognizeScreenshots = [](ScanResult&, const AppServices::Progress& progress) {
        progress(1, 2);
        progress(2, 2);
    };
    auto again = readyModel(services);
    const AppState& t = again->state();
    EXPECT_EQ(t.screenshotsRead, 2u);
    again->rescan();
    ASSERT_TRUE(executor.runNextBackground());  // the scan
    executor.runMainQueue();
    EXPECT_EQ(t.phase, Phase::ready);
    EXPECT_TRUE(t.showingReadingProgress);
    EXPECT_EQ(t.screenshotsRead, 0u);
    EXPECT_EQ(t.screenshotsTotal, 2u);
    again->continueReadingInBackground();  // the sheet is left, reading goes on
    EXPECT_FALSE(t.showingReadingProgress);
    EXPECT_TRUE(t.isReadingScreenshots);
    again->rescan();
    ASSERT_TRUE(executor.runNextBackground());  // the first reading
    executor.runMainQueue();
    EXPECT_EQ(t.phase, Phase::scanning);
    EXPECT_FALSE(t.isReadingScreenshots);
    EXPECT_EQ(t.screenshotsRead, 0u);
    executor.settle();
    EXPECT_FALSE(t.isReadingScreenshots);
    EXPECT_EQ(t.screenshotsRead, 2u);
}

// The example folder with the real scanner, selection and PDF writer: let it
// scan, change settings, tick and untick items, export, read the PDF back.
TEST_F(AppModelTest, TheExampleFromChoiceToSavedPdf) {
    std::string example = root.path() + "/example";
    auto model = makeModel(AppServices::standard());
    const AppState& s = model->state();
    model->openExample(example);
    EXPECT_TRUE(s.isDemo);
    executor.drain();
    std::string untouched = testing::folderFingerprint(example);
    EXPECT_EQ(s.phase, Phase::ready);
    ASSERT_TRUE(s.scan);
    EXPECT_TRUE(s.scan->skipped.empty());
    EXPECT_EQ(s.scan->sources.size(), 13u);
    EXPECT_FALSE(s.errorMessage);
    size_t items = 0;
    for (const auto& source : s.scan->sources)
        items += source.items.size();
    EXPECT_EQ(s.candidates.size(), items);
    EXPECT_TRUE(
        std::is_sorted(s.candidates.begin(), s.candidates.end(),
                       [](const Evidence* a, const Evidence* b) { return a->date < b->date; }));
    ASSERT_FALSE(s.selected.empty());
    for (const Evidence* item : s.selected)
        EXPECT_TRUE(contains(s.candidates, *item)) << item->id();

    size_t everyMessage = s.selected.size();
    model->updateSettings([](Settings& x) {
        x.messagesPerMonth = 1;
        x.title = "Our story";
    });
    executor.settle();
    EXPECT_LT(s.selected.size(), everyMessage);
    ASSERT_TRUE(s.previewPDF);
    auto preview = testing::readPDF(*s.previewPDF);
    EXPECT_EQ(static_cast<int>(preview.pages.size()), s.previewPageCount);
    EXPECT_NE(preview.flat(0).find("Our story"), std::string::npos) << preview.flat(0);

    // Ticking a message the sampling left out adds it; unticking a chosen one takes it out.
    auto extra = std::find_if(s.candidates.begin(), s.candidates.end(), [&](const Evidence* e) {
        return !e->sender.empty() && !contains(s.selected, *e);
    });
    ASSERT_NE(extra, s.candidates.end());
    Evidence added = **extra, removed = *s.selected.back();
    size_t proposedCount = s.selected.size();
    model->setSelected(added, true);
    EXPECT_EQ(s.settings.addedItems, std::set<std::string>{added.id()});
    executor.drain();
    EXPECT_TRUE(contains(s.selected, added));
    model->setSelected(removed, false);
    EXPECT_EQ(s.settings.excludedItems, std::set<std::string>{removed.id()});
    executor.drain();
    EXPECT_FALSE(contains(s.selected, removed));
    EXPECT_EQ(s.selected.size(), proposedCount);
    EXPECT_EQ(store().load().settings->excludedItems, std::set<std::string>{removed.id()});
    // Unticking an added item forgets it rather than excluding it.
    model->setSelected(added, false);
    EXPECT_TRUE(s.settings.addedItems.empty());
    EXPECT_EQ(s.settings.excludedItems.size(), 1u);
    model->resetManualChoice();  // "Back to Automatic Choice"
    executor.drain();
    EXPECT_TRUE(s.settings.excludedItems.empty());
    EXPECT_TRUE(contains(s.selected, removed));
    EXPECT_EQ(s.selected.size(), proposedCount);
    model->setSelected(added, true);
    model->setSelected(removed, false);

    model->updateSettings([](Settings& x) {
        x.title = "Evidence";
        x.applicant = "Sam Lee";
    });
    EXPECT_EQ(model->proposedFileName(), "Evidence - Sam Lee.pdf");
    std::string target = out(model->proposedFileName());
    model->exportPDF(target);
    EXPECT_TRUE(s.isExporting);
    executor.settle();
    EXPECT_FALSE(s.isExporting);
    ASSERT_FALSE(s.errorMessage) << *s.errorMessage;
    EXPECT_EQ(s.exportedFiles, std::vector<std::string>{target});
    EXPECT_TRUE(s.exportNotes.empty());

    auto pdf = testing::readPDF(readFile(target));
    size_t n = pdf.pages.size();
    ASSERT_GE(n, 3u);
    EXPECT_NE(pdf.flat(0).find("Evidence"), std::string::npos);
    EXPECT_NE(pdf.flat(0).find("Sam Lee"), std::string::npos);
    EXPECT_NE(pdf.flat(0).find("Page 1 of " + std::to_string(n)), std::string::npos);
    EXPECT_NE(pdf.flat(n - 1).find("Page " + std::to_string(n) + " of " + std::to_string(n)),
              std::string::npos);
    std::string all = pdf.allFlat();
    EXPECT_NE(all.find("Our first home together"), std::string::npos);
    EXPECT_NE(all.find(added.text), std::string::npos) << added.text;
    EXPECT_NE(all.find("How this file was prepared"), std::string::npos);
    // The appendix fingerprints the source files, as anyone can recompute them.
    std::string sha = Scanner::sha256Hex(readFile(example + "/Emails/Booking confirmation.eml"));
    EXPECT_NE(all.find(sha), std::string::npos);
    EXPECT_EQ(testing::folderFingerprint(example), untouched);
}

}  // namespace
}  // namespace kinfolio
