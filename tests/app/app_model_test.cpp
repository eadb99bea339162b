#include "app/app_model.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "model/json.h"
#include "support/fake_services.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::readFile;

// The model's own logic (timing, staleness, storage, export writing) with
// instant stand-ins for scanning and rendering; the whole flow with the real
// readers and PDF writer is in app_model_workflow_test.cpp.
class AppModelTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(root.path() + "/materials");
        fs::create_directories(root.path() + "/out");
        folder = root.path() + "/materials";
        log = std::make_shared<testing::FakeLog>();
    }

    SettingsStore store() const { return SettingsStore(root.path() + "/config/settings.json"); }
    std::string out(const std::string& name) const { return root.path() + "/out/" + name; }

    std::unique_ptr<AppModel> makeModel(size_t messages = 20) {
        return makeModel(testing::fakeServices(log, messages));
    }
    std::unique_ptr<AppModel> makeModel(AppServices services) {
        auto model = std::make_unique<AppModel>(executor, std::move(services), store());
        model->observe([this] { ++notifications; });
        model->start();
        return model;
    }
    // A model with the folder chosen, scanned and its first preview rendered.
    std::unique_ptr<AppModel> readyModel(AppServices services) {
        auto model = makeModel(std::move(services));
        model->chooseFolder(folder);
        executor.settle();
        return model;
    }

    testing::TempFolder root;
    std::string folder;
    std::shared_ptr<testing::FakeLog> log;
    ManualExecutor executor;
    int notifications = 0;
};

TEST_F(AppModelTest, FirstStartShowsDefaultsAndWritesNothing) {
    auto model = makeModel();
    const AppState& s = model->state();
    EXPECT_EQ(s.phase, Phase::needsFolder);
    EXPECT_FALSE(s.folder);
    EXPECT_FALSE(s.scan);
    EXPECT_EQ(s.settings.title, "Relationship evidence");
    EXPECT_EQ(s.settings.messagesPerMonth, 5);
    EXPECT_EQ(s.settings.photosPerMonth, 0);
    EXPECT_EQ(s.settings.paper, PaperSize::a4);
    EXPECT_EQ(s.settings.arrangement, Arrangement::byDate);
    EXPECT_EQ(s.settings.maxFileMB, 0);
    EXPECT_EQ(s.settings.dateOrder, DateOrder::automatic);
    EXPECT_EQ(s.settings.timeZoneID, currentTimeZoneID());
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
    EXPECT_FALSE(s.isRenderingPreview);

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
    EXPECT_EQ(log->renderedItemCounts, std::vector<size_t>{250});
    // The preview holds the first 250 in selection order.
    EXPECT_NE(s.previewPDF->find(s.selected[249]->id() + ";"), std::string::npos);
    EXPECT_EQ(s.previewPDF->find(s.selected[250]->id() + ";"), std::string::npos);

    std::string target = out("all.pdf");
    model->exportPDF(target);
    executor.drain();
    EXPECT_EQ(log->renderedItemCounts.back(), 300u);
    std::string written = readFile(target);
    EXPECT_EQ(std::count(written.begin(), written.end(), ';'), 300);

    model->updateSettings([](Settings& x) { x.messagesPerMonth = 5; });
    executor.drain();
    EXPECT_FALSE(s.previewTruncated);
}

TEST_F(AppModelTest, ACancelledRenderStoresNothing) {
    auto model = readyModel(testing::fakeServices(log));
    const AppState& s = model->state();
    model->updateSettings([](Settings& x) { x.title = "First"; });
    executor.drain();        // its selection arrives and the preview waits
    executor.advance(0.25);  // the render of "First" is queued in the background
    ASSERT_TRUE(s.isRenderingPreview);
    model->updateSettings([](Settings& x) { x.title = "Second"; });
    executor.drain();  // "First" finishes, but it was overtaken
    EXPECT_EQ(s.previewPDF->substr(0, 21), "Relationship evidence");
    EXPECT_FALSE(s.isRenderingPreview);
    executor.settle();
    EXPECT_EQ(s.previewPDF->substr(0, 7), "Second|");
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

TEST_F(AppModelTest, ProposedNamesJoinTitleAndApplicantWithoutSlashes) {
    auto model = makeModel();
    model->updateSettings([](Settings& x) {
        x.title = "Visa/2025";
        x.applicant = "";
    });
    EXPECT_EQ(model->proposedFileName(), "Visa-2025.pdf");
    model->updateSettings([](Settings& x) { x.title = ""; });
    EXPECT_EQ(model->proposedFileName(), "Relationship evidence.pdf");
}

TEST_F(AppModelTest, ASplitExportWritesNumberedPartsWithTheirNote) {
    AppServices services = testing::fakeServices(log);
    services.split = [](const ExportInput&, const std::string& data, int64_t) {
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
    std::vector<std::string> expected;
    for (int i = 1; i <= 3; ++i)
        expected.push_back(out("Evidence - Part " + std::to_string(i) + " of 3.pdf"));
    EXPECT_EQ(s.exportedFiles, expected);
    EXPECT_FALSE(fs::exists(out("Evidence.pdf")));
    std::string whole = "Evidence|";
    for (const auto& item : s.selected)
        whole += item->id() + ";";
    EXPECT_EQ(readFile(expected[0]), whole.substr(0, 3));
    EXPECT_EQ(readFile(expected[0]) + readFile(expected[1]) + readFile(expected[2]), whole);
    EXPECT_EQ(s.exportNotes,
              std::vector<std::string>{"The PDF is split into 3 files of at most 10 MB each. Page "
                                       "numbers continue from one file to the next."});
}

TEST_F(AppModelTest, APageOverTheLimitIsKeptAndWarnedAbout) {
    AppServices services = testing::fakeServices(log);
    int64_t seenLimit = 0;
    services.split = [&seenLimit](const ExportInput&, const std::string&, int64_t maxBytes) {
        seenLimit = maxBytes;
        return std::vector<std::string>{"small", std::string(1000001, 'x')};
    };
    auto model = readyModel(services);
    model->updateSettings([](Settings& x) { x.maxFileMB = 1; });
    model->exportPDF(out("Big.pdf"));
    executor.drain();
    EXPECT_EQ(seenLimit, 1000000);
    ASSERT_EQ(model->state().exportNotes.size(), 2u);
    EXPECT_EQ(model->state().exportNotes[1],
              "One page is larger than 1 MB on its own, so its file is over the limit. Use fewer "
              "or smaller photos on that page.");
    EXPECT_EQ(fs::file_size(out("Big - Part 2 of 2.pdf")), 1000001u);
}

TEST_F(AppModelTest, ExportFailuresBecomeTheErrorMessage) {
    AppServices services = testing::fakeServices(log);
    auto model = readyModel(services);
    const AppState& s = model->state();
    model->exportPDF(root.path() + "/no such folder/x.pdf");
    executor.drain();
    ASSERT_TRUE(s.errorMessage);
    EXPECT_EQ(s.errorMessage->back(), '.');
    EXPECT_FALSE(s.isExporting);
    EXPECT_TRUE(s.exportedFiles.empty());

    services.make = [](const ExportInput&) -> Output {
        throw EvidenceError::invalid(
            "The source file for an item is missing. Scan the folder again.");
    };
    auto failing = readyModel(services);
    failing->exportPDF(out("y.pdf"));
    executor.drain();
    EXPECT_EQ(failing->state().errorMessage,
              "The source file for an item is missing. Scan the folder again.");
    EXPECT_FALSE(fs::exists(out("y.pdf")));

    services.make = [](const ExportInput&) -> Output { throw std::bad_alloc(); };
    auto crashing = readyModel(services);
    crashing->exportPDF(out("z.pdf"));
    executor.drain();
    EXPECT_EQ(crashing->state().errorMessage, "Could not create the PDF.");
}

TEST_F(AppModelTest, DateOrderAndTimeZoneChangesRescanAtOnce) {
    auto model = readyModel(testing::fakeServices(log));
    ASSERT_EQ(log->scans, 1);
    model->updateSettings([](Settings& x) { x.dateOrder = DateOrder::dayFirst; });
    EXPECT_EQ(model->state().phase, Phase::scanning);
    executor.settle();
    EXPECT_EQ(log->scans, 2);
    EXPECT_EQ(log->scannedOrders.back(), DateOrder::dayFirst);
    model->updateSettings([](Settings& x) { x.timeZoneID = "Pacific/Auckland"; });
    executor.settle();
    EXPECT_EQ(log->scans, 3);
    EXPECT_EQ(log->scannedZones.back(), "Pacific/Auckland");
    model->updateSettings([](Settings& x) { x.paper = PaperSize::letter; });
    executor.settle();
    EXPECT_EQ(log->scans, 3);
    EXPECT_EQ(model->state().phase, Phase::ready);
}

TEST_F(AppModelTest, SettingsAndFolderSurviveARestart) {
    {
        auto model = readyModel(testing::fakeServices(log));
        model->updateSettings([](Settings& x) {
            x.applicant = "Sam Lee";
            x.paper = PaperSize::letter;
            x.maxFileMB = 8;
        });
        executor.settle();
    }
    auto model = makeModel();
    const AppState& s = model->state();
    EXPECT_EQ(s.settings.applicant, "Sam Lee");
    EXPECT_EQ(s.settings.paper, PaperSize::letter);
    EXPECT_EQ(s.settings.maxFileMB, 8);
    EXPECT_EQ(s.folder, folder);
    EXPECT_EQ(s.phase, Phase::scanning);
    executor.settle();
    EXPECT_EQ(s.phase, Phase::ready);
    EXPECT_EQ(log->scans, 2);
}

TEST_F(AppModelTest, AFolderThatIsGoneIsNotReopened) {
    { readyModel(testing::fakeServices(log)); }
    fs::remove_all(folder);
    auto model = makeModel();
    EXPECT_EQ(model->state().phase, Phase::needsFolder);
    EXPECT_FALSE(model->state().folder);
    EXPECT_EQ(log->scans, 1);
}

TEST_F(AppModelTest, StoredSettingsMissingAKeyGiveTheDefaults) {
    Settings stored = Settings::defaults();
    stored.title = "Our story";
    stored.messagesPerMonth = 9;
    Json json = Json::object();
    json["settings"] = encode(stored);
    json["settings"].erase("partner");
    fs::create_directories(root.path() + "/config");
    std::ofstream(store().path()) << json.dump();

    auto model = makeModel();
    EXPECT_EQ(model->state().settings.title, "Relationship evidence");
    EXPECT_EQ(model->state().settings.messagesPerMonth, 5);
    // Nothing is written until the next change.
    EXPECT_EQ(readFile(store().path()), json.dump());

    json["settings"]["partner"] = "Alex";
    std::ofstream(store().path()) << json.dump();
    auto again = makeModel();
    EXPECT_EQ(again->state().settings.title, "Our story");
    EXPECT_EQ(again->state().settings.partner, "Alex");
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
    EXPECT_EQ(seen, (std::vector<size_t>{0, 1, 2, 3}));
    EXPECT_EQ(s.screenshotsTotal, 3u);
    EXPECT_FALSE(s.showingReadingProgress);
    EXPECT_EQ(s.selected.front()->details().textBoxes.size(), 1u);
    executor.settle();
    EXPECT_EQ(log->renders, 1);
}

TEST_F(AppModelTest, TheReadingSheetCanBeLeftWhileReadingGoesOn) {
    AppServices services = testing::fakeServices(log);
    services.screenshotsToRead = [](const ScanResult&) { return size_t{2}; };
    services.recognizeScreenshots = [](ScanResult&, const AppServices::Progress& progress) {
        progress(1, 2);
        progress(2, 2);
    };
    auto model = makeModel(services);
    const AppState& s = model->state();
    model->chooseFolder(folder);
    ASSERT_TRUE(executor.runNextBackground());  // the saved folder
    ASSERT_TRUE(executor.runNextBackground());  // the scan
    executor.runMainQueue();
    EXPECT_EQ(s.phase, Phase::ready);
    EXPECT_TRUE(s.isReadingScreenshots);
    EXPECT_TRUE(s.showingReadingProgress);
    EXPECT_EQ(s.screenshotsRead, 0u);
    EXPECT_EQ(s.screenshotsTotal, 2u);

    model->continueReadingInBackground();
    EXPECT_FALSE(s.showingReadingProgress);
    EXPECT_TRUE(s.isReadingScreenshots);

    // A rescan meanwhile makes the old reading's progress and result stale.
    model->rescan();
    ASSERT_TRUE(executor.runNextBackground());  // the first reading
    executor.runMainQueue();
    EXPECT_EQ(s.phase, Phase::scanning);
    EXPECT_FALSE(s.isReadingScreenshots);
    EXPECT_EQ(s.screenshotsRead, 0u);
    executor.settle();
    EXPECT_EQ(s.phase, Phase::ready);
    EXPECT_FALSE(s.isReadingScreenshots);
    EXPECT_EQ(s.screenshotsRead, 2u);
}

}  // namespace
}  // namespace kinfolio
