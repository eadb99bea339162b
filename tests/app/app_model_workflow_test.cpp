#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "app/app_model.h"
#include "example/example_folder.h"
#include "model/calendar.h"
#include "scan/scanner.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

// The whole road a user takes, with the real scanner, selection and PDF
// writer: choose the example folder, let it scan, change settings, tick and
// untick items, export, and read the saved PDF back.
namespace kinfolio {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::readPDF;

bool contains(const Selection::ItemRefs& items, const Evidence& item) {
    return std::any_of(items.begin(), items.end(), [&](const Evidence* e) { return *e == item; });
}

class AppModelWorkflow : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(out(""));
        services = AppServices::standard();
        // The real writer, counted: how many renders ran and of how many items.
        services.make = [this, make = services.make](const ExportInput& input) {
            renderedItems.push_back(input.items.size());
            return make(input);
        };
    }

    SettingsStore store() const { return SettingsStore(temp.path() + "/config/settings.json"); }
    std::string out(const std::string& name) const { return temp.path() + "/out/" + name; }
    std::unique_ptr<AppModel> makeModel() {
        auto model = std::make_unique<AppModel>(executor, services, store());
        model->start();
        return model;
    }

    testing::ScopedCacheHome cache;
    testing::TempFolder temp;
    ManualExecutor executor;
    AppServices services;
    std::vector<size_t> renderedItems;
};

TEST_F(AppModelWorkflow, TheExampleFromChoiceToSavedPdf) {
    std::string example = temp.path() + "/example";
    auto model = makeModel();
    const AppState& s = model->state();
    EXPECT_EQ(s.phase, Phase::needsFolder);

    model->openExample(example);
    EXPECT_EQ(s.phase, Phase::scanning);
    EXPECT_TRUE(s.isDemo);
    EXPECT_EQ(s.folder, example);
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
        EXPECT_NE(std::find(s.candidates.begin(), s.candidates.end(), item), s.candidates.end())
            << item->id();
    EXPECT_FALSE(s.previewPDF);
    EXPECT_EQ(executor.pendingTimers(), 1u);

    // One message a month, then typing a title: ten changes within a quarter
    // second give one render, of the last.
    size_t everyMessage = s.selected.size();
    for (int i = 0; i <= 9; ++i) {
        model->updateSettings([i](Settings& x) {
            x.messagesPerMonth = 1;
            x.title = "Our story " + std::to_string(i);
        });
        executor.advance(0.02);
        executor.drain();
    }
    EXPECT_LT(s.selected.size(), everyMessage);
    EXPECT_TRUE(renderedItems.empty());
    EXPECT_FALSE(s.isRenderingPreview);
    executor.advance(0.25);
    EXPECT_TRUE(s.isRenderingPreview);
    executor.drain();
    EXPECT_FALSE(s.isRenderingPreview);
    EXPECT_EQ(renderedItems, std::vector<size_t>{s.selected.size()});
    ASSERT_TRUE(s.previewPDF);
    EXPECT_FALSE(s.previewTruncated);
    auto preview = readPDF(*s.previewPDF);
    EXPECT_EQ(static_cast<int>(preview.pages.size()), s.previewPageCount);
    EXPECT_NE(preview.flat(0).find("Our story 9"), std::string::npos) << preview.flat(0);
    EXPECT_EQ(store().load().settings->title, "Our story 9");

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
    // "Back to Automatic Choice".
    model->resetManualChoice();
    executor.drain();
    EXPECT_TRUE(s.settings.addedItems.empty());
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

    auto pdf = readPDF(readFile(target));
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

TEST_F(AppModelWorkflow, ThreeHundredItemsPreviewTheFirst250AndExportAll) {
    // One message a day from 1 January 2025, numbered so each is found alone.
    std::string chat;
    for (int i = 1; i <= 300; ++i) {
        Instant day = *Calendar::makeDate(2025, 1, 1, 9, 0) + 86400.0 * (i - 1);
        chat += "[" + Calendar::format(day, "dd/MM/yyyy, HH:mm:ss") + "] " +
                (i % 2 ? "Sam Lee" : "Alex Morgan") + ": Note " + std::to_string(i) + " of 300.\n";
    }
    std::string folder = temp.path() + "/materials";
    temp.write("materials/WhatsApp Chat with Sam/_chat.txt", chat);

    auto model = makeModel();
    const AppState& s = model->state();
    model->updateSettings([](Settings& x) { x.messagesPerMonth = 0; });
    model->chooseFolder(folder);
    executor.settle();
    ASSERT_EQ(s.selected.size(), 300u);
    EXPECT_TRUE(s.previewTruncated);
    EXPECT_EQ(renderedItems, std::vector<size_t>{250});
    std::string preview = readPDF(*s.previewPDF).allFlat();
    EXPECT_NE(preview.find("Note 250 of 300."), std::string::npos);
    EXPECT_EQ(preview.find("Note 251 of 300."), std::string::npos);

    model->exportPDF(out("all.pdf"));
    executor.settle();
    ASSERT_FALSE(s.errorMessage) << *s.errorMessage;
    EXPECT_EQ(renderedItems.back(), 300u);
    std::string all = readPDF(readFile(out("all.pdf"))).allFlat();
    for (int i : {1, 250, 251, 300})
        EXPECT_NE(all.find("Note " + std::to_string(i) + " of 300."), std::string::npos) << i;
}

TEST_F(AppModelWorkflow, ADateOrderChangeRescansAndClosingGoesBackToTheStart) {
    // Every date here reads both ways; the setting decides.
    temp.write("materials/_chat.txt",
               "[03/04/2025, 09:00:00] Sam Lee: First\n"
               "[05/06/2025, 09:00:00] Alex Morgan: Second\n");
    auto model = makeModel();
    const AppState& s = model->state();
    model->updateSettings([](Settings& x) { x.dateOrder = DateOrder::dayFirst; });
    model->chooseFolder(temp.path() + "/materials");
    executor.settle();
    ASSERT_EQ(s.candidates.size(), 2u);
    EXPECT_EQ(Calendar::monthKey(s.candidates[0]->date), "2025-04");

    model->updateSettings([](Settings& x) { x.dateOrder = DateOrder::monthFirst; });
    EXPECT_EQ(s.phase, Phase::scanning);
    executor.settle();
    EXPECT_EQ(s.phase, Phase::ready);
    ASSERT_EQ(s.candidates.size(), 2u);
    EXPECT_EQ(Calendar::monthKey(s.candidates[0]->date), "2025-03");

    model->closeFolder();
    EXPECT_EQ(s.phase, Phase::needsFolder);
    EXPECT_FALSE(s.folder);
    EXPECT_FALSE(s.scan);
    EXPECT_TRUE(s.selected.empty());
    EXPECT_FALSE(s.previewPDF);
    EXPECT_EQ(s.settings.dateOrder, DateOrder::monthFirst);
    EXPECT_EQ(executor.pendingTimers(), 0u);
}

TEST_F(AppModelWorkflow, TheExampleIsWrittenOnceAndStaysADemoAfterARestart) {
    std::string example = temp.path() + "/example";
    {
        auto model = makeModel();
        model->openExample(example);
        executor.settle();
        EXPECT_TRUE(model->state().isDemo);
        // Opening it again reuses what is there.
        model->openExample(example);
        EXPECT_FALSE(model->state().errorMessage);
        executor.settle();
        // A folder holding something else is neither written to nor opened.
        temp.write("mine/notes.txt", "my own file");
        std::string before = testing::folderFingerprint(temp.path() + "/mine");
        model->openExample(temp.path() + "/mine");
        ASSERT_TRUE(model->state().errorMessage);
        EXPECT_EQ(model->state().errorMessage->back(), '.');
        EXPECT_EQ(model->state().folder, example);
        EXPECT_EQ(testing::folderFingerprint(temp.path() + "/mine"), before);
    }
    auto model = makeModel();
    EXPECT_EQ(model->state().folder, example);
    EXPECT_TRUE(model->state().isDemo);
    executor.settle();
    EXPECT_EQ(model->state().phase, Phase::ready);

    // Any other folder is the user's own.
    temp.write("materials/_chat.txt", "[03/04/2025, 09:00:00] Sam Lee: Hi\n");
    model->chooseFolder(temp.path() + "/materials");
    EXPECT_FALSE(model->state().isDemo);
}

}  // namespace
}  // namespace kinfolio
