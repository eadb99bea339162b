#include "app/app_model.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/fake_services.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

namespace fs = std::filesystem;

// The model's own logic (timing, staleness, storage, export writing) with
// instant stand-ins for scanning and rendering.
class AppModelTest : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(folder); }

    SettingsStore store() const { return SettingsStore(root.path() + "/config/settings.json"); }
    std::string out(const std::string& name) const { return root.path() + "/" + name; }

    std::unique_ptr<AppModel> makeModel(AppServices services) {
        auto model = std::make_unique<AppModel>(executor, std::move(services), store());
        model->observe([] {});  // a listener, as the window has one
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
};

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

TEST_F(AppModelTest, ExportFailuresBecomeTheErrorMessage) {
    struct Case {
        const char* name;
        std::function<Output(const ExportInput&)> make;  // none: the fake's
        std::string target, error;
    };
    const std::string missing = "The source file for an item is missing. Scan the folder again.";
    const Case cases[] = {
        {"a folder that does not exist", nullptr, out("no such folder/x.pdf"), ""},
        {"inside the materials folder", nullptr, folder + "/x.pdf",
         "Save the PDF outside the materials folder, so that Kinfolio does not read it as one of "
         "your records the next time it scans the folder."},
        {"the drawing refuses",
         [missing](const ExportInput&) -> Output { throw EvidenceError::invalid(missing); },
         out("y.pdf"), missing},
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

}  // namespace
}  // namespace kinfolio
