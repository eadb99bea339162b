#include "gui/main_window.h"

#include <gtest/gtest.h>
#include <time.h>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPdfDocument>
#include <QSpinBox>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <filesystem>
#include <iostream>
#include <optional>

#include "example/example_folder.h"
#include "gui/item_picker.h"
#include "gui/pages.h"
#include "gui/preview_pane.h"
#include "gui/settings_panel.h"
#include "gui/sources_panel.h"
#include "model/calendar.h"
#include "support/full_disk.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio::gui {
namespace {

namespace fs = std::filesystem;
using testing::readPDF;
using testing::TempFolder;

// One message a day from 1 January 2025, each numbered so it is found alone.
std::string chat(int messages, const std::string& partner) {
    std::string text;
    Instant first = *Calendar::makeDate(2025, 1, 1, 9, 0);
    for (int i = 1; i <= messages; ++i)
        text += "[" + Calendar::format(first + 86400.0 * (i - 1), "dd/MM/yyyy, HH:mm:ss") + "] " +
                (i % 2 ? partner : "Alex Morgan") + ": Note " + std::to_string(i) + " from " +
                partner + ".\n";
    return text;
}

// Answers the next save or folder dialog with `path`, as a user typing it.
void answerFileDialog(const QString& path) {
    auto* timer = new QTimer;
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, [timer, path] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog) return;
        timer->stop();
        timer->deleteLater();
        // Typed into the name box, as selectFile() waits for the folder's
        // listing when the path is in another folder.
        auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
        ASSERT_TRUE(name);
        name->setText(path);
        static_cast<QDialog*>(dialog)->accept();
    });
    timer->start();
}

class MainWindowTest : public ::testing::Test {
protected:
    MainWindowTest() {
        // The real services, with the renders counted and their sizes seen.
        AppServices services = AppServices::standard();
        services.make = [make = services.make, renders = renders,
                         items = lastRenderItems](const ExportInput& in) {
            ++*renders;
            *items = in.items.size();
            return make(in);
        };
        openWindow(services);
    }

    // A window over the same stored settings, as the next run of the program.
    void openWindow(const AppServices& services = AppServices::standard()) {
        window.reset();
        window =
            std::make_unique<MainWindow>(services, SettingsStore(home.path() + "/settings.json"),
                                         QString::fromStdString(home.path() + "/window.ini"));
        window->reveal = [this](const QString& folder) { revealed = folder.toStdString(); };
        window->show();
        window->start();
    }

    const AppState& state() { return window->model().state(); }

    // Waits (running the event loop) past the preview's pause after a
    // change, until the preview of the current selection is drawn and shown.
    bool previewShown() {
        QTest::qWait(static_cast<int>(AppModel::kPreviewDelay * 1000) + 50);
        return QTest::qWaitFor(
            [&] {
                const AppState& s = state();
                return s.phase == Phase::ready && !s.isRenderingPreview && s.previewPDF &&
                       window->preview()->shows(*s.previewPDF);
            },
            60000);
    }

    bool idle() {
        bool done = QTest::qWaitFor(
            [&] {
                const AppState& s = state();
                return s.phase != Phase::scanning && !s.isRenderingPreview && !s.isExporting;
            },
            60000);
        QTest::qWait(20);  // the window draws the last change
        return done;
    }

    size_t selectedCount() { return state().selected.size(); }
    std::string folder() { return materials.path(); }

    testing::ScopedHome home;
    TempFolder materials, out;
    std::shared_ptr<std::atomic<int>> renders = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<std::atomic<size_t>> lastRenderItems = std::make_shared<std::atomic<size_t>>(0);
    std::string revealed;
    std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, FromAFolderToASavedPdfThroughTheWindow) {
    EXPECT_EQ(window->currentPage(), window->startPage());
    materials.write("WhatsApp Chat with Sam Lee.txt", chat(40, "Sam Lee"));
    materials.write("WhatsApp Chat with Kim Park.txt", chat(40, "Kim Park"));
    std::string untouched = testing::folderFingerprint(folder());

    window->openFolder(QString::fromStdString(folder()));
    ASSERT_TRUE(previewShown());
    ASSERT_EQ(window->sources()->checkBoxes().size(), 2u);
    size_t both = selectedCount();
    QString summary = QString("%1 messages").arg(both);
    EXPECT_TRUE(window->summaryLine()->text().startsWith(summary)) << summary.toStdString();

    // Unticking a chat leaves it out; ticking it again brings it back.
    QCheckBox* second = window->sources()->checkBoxes()[1];
    second->click();
    EXPECT_EQ(state().settings.excludedSources.size(), 1u);
    ASSERT_TRUE(previewShown());
    EXPECT_EQ(selectedCount(), both / 2);
    EXPECT_TRUE(window->summaryLine()->text().startsWith(QString("%1 messages").arg(both / 2)));
    second->click();
    EXPECT_TRUE(state().settings.excludedSources.empty());
    ASSERT_TRUE(previewShown());
    EXPECT_EQ(selectedCount(), both);

    // A setting: US Letter pages in the preview the window shows.
    QComboBox* paper = window->settings()->paper;
    paper->setCurrentIndex(paper->findText("US Letter"));
    EXPECT_EQ(state().settings.paper, PaperSize::letter);
    ASSERT_TRUE(previewShown());
    EXPECT_EQ(window->preview()->document()->pagePointSize(0), QSizeF(612, 792));

    // The item picker: untick the first item, as a click on its box does.
    window->action("Choose Items…")->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->picker()->isVisible(); }));
    QTableView* table = window->picker()->table;
    QModelIndex first = table->model()->index(0, ItemTable::tick);
    ASSERT_EQ(first.data(Qt::CheckStateRole).toInt(), Qt::Checked);
    std::string id = window->picker()->rows->item(0)->id();
    table->model()->setData(first, Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_EQ(state().settings.excludedItems, std::set<std::string>{id});
    ASSERT_TRUE(previewShown());
    EXPECT_EQ(first.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(selectedCount(), both - 1);
    std::string kept = state().selected.back()->text;
    // The filter narrows the rows to one chat.
    QTest::keyClicks(window->picker()->filterText, "Kim Park");
    EXPECT_EQ(table->model()->rowCount(), 40);
    window->picker()->close();
    EXPECT_FALSE(state().showingItems);

    // Export: the save dialog proposes the settings' name; the file is read back.
    QString target = QString::fromStdString(out.path() + "/Evidence.pdf");
    answerFileDialog(target);
    window->action("Export PDF…")->trigger();
    ASSERT_TRUE(idle());
    ASSERT_FALSE(state().errorMessage) << *state().errorMessage;
    testing::ReadPDF pdf = readPDF(testing::readFile(target.toStdString()));
    EXPECT_EQ(pdf.sizes.front(), std::make_pair(612.0, 792.0));
    std::string all = pdf.allFlat();
    EXPECT_NE(all.find(kept), std::string::npos) << kept;
    EXPECT_EQ(revealed, out.path());
    EXPECT_TRUE(window->statusLine()->text().startsWith("Saved Evidence.pdf"));
    EXPECT_EQ(testing::folderFingerprint(folder()), untouched);

    // Every change was saved: a new window over the same store reopens the
    // folder with the same settings.
    Settings saved = state().settings;
    openWindow();
    EXPECT_EQ(state().folder, folder());
    EXPECT_EQ(state().settings, saved);
    ASSERT_TRUE(idle());
}

TEST_F(MainWindowTest, TenEditsRenderOncePreviewOf300ShowsTheNoteExportHoldsAll) {
    materials.write("WhatsApp Chat with Sam Lee.txt", chat(300, "Sam Lee"));
    window->settings()->messagesPerMonth->setValue(0);  // shown as "All"
    window->openFolder(QString::fromStdString(folder()));
    ASSERT_TRUE(previewShown());
    EXPECT_EQ(state().selected.size(), 300u);
    EXPECT_EQ(lastRenderItems->load(), 250u);
    EXPECT_TRUE(std::ranges::any_of(window->preview()->findChildren<QLabel*>(), [](QLabel* l) {
        return l->isVisible() && l->text().endsWith("items; the export includes all)");
    }));

    // Typing ten letters into the title, faster than the preview's pause.
    int before = renders->load();
    QLineEdit* title = window->settings()->title;
    title->selectAll();
    QTest::keyClicks(title, "Visa/2025!");
    EXPECT_EQ(state().settings.title, "Visa/2025!");
    ASSERT_TRUE(previewShown());
    QTest::qWait(400);
    EXPECT_EQ(renders->load(), before + 1);
    EXPECT_EQ(window->model().proposedFileName(), "Visa-2025!.pdf");

    answerFileDialog(QString::fromStdString(out.path() + "/all.pdf"));
    window->exportWithDialog();
    ASSERT_TRUE(idle());
    std::string all = readPDF(testing::readFile(out.path() + "/all.pdf")).allFlat();
    EXPECT_NE(all.find("Note 300 from Sam Lee."), std::string::npos);
}

// Quiet states and bad input each end in a sentence on screen.
TEST_F(MainWindowTest, BadInputGetsASentenceNeverACrash) {
    materials.write("notes.txt", "just my notes");
    window->openFolder(QString::fromStdString(folder()));
    ASSERT_TRUE(idle());
    ASSERT_NE(window->currentPage(), nullptr);
    EXPECT_TRUE(dynamic_cast<EmptyPage*>(window->currentPage()));

    // A folder that vanishes while it is shown, then rescanned.
    materials.write("WhatsApp Chat with Sam Lee.txt", chat(20, "Sam Lee"));
    window->action("Rescan")->trigger();
    ASSERT_TRUE(previewShown());
    fs::rename(folder(), folder() + "-moved");
    window->action("Rescan")->trigger();
    ASSERT_TRUE(idle());
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->alert()->isVisible(); }));
    std::string sentence = window->alert()->text().toStdString();
    EXPECT_EQ(sentence.back(), '.') << sentence;
    EXPECT_EQ(window->alert()->windowTitle(), "Something went wrong");
    window->alert()->accept();
    EXPECT_FALSE(state().errorMessage);
    fs::rename(folder() + "-moved", folder());
    window->action("Rescan")->trigger();
    ASSERT_TRUE(previewShown());

    // Export targets that cannot be written: under a file instead of a
    // folder, into the materials folder, and on a full disk (a file size
    // limit stands in for it).
    std::string blocker = out.write("a-file", "x");
    struct Case {
        std::string target, starts;
        bool fullDisk;
    } cases[] = {
        {blocker + "/Evidence.pdf", "Could not write " + blocker + "/", false},
        {folder() + "/Evidence.pdf", "Save the PDF outside the materials folder", false},
        {out.path() + "/Evidence.pdf", "There is not enough space to save", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.target);
        std::optional<testing::FileSizeLimit> full;
        if (c.fullDisk) full.emplace(4096);
        answerFileDialog(QString::fromStdString(c.target));
        window->exportWithDialog();
        bool done = idle();
        full.reset();
        ASSERT_TRUE(done);
        ASSERT_TRUE(QTest::qWaitFor([&] { return window->alert()->isVisible(); }));
        EXPECT_EQ(window->alert()->text().toStdString().rfind(c.starts, 0), 0u)
            << window->alert()->text().toStdString();
        window->alert()->accept();
        EXPECT_FALSE(fs::exists(c.target));
    }
    // Nothing half written was left next to the targets.
    EXPECT_EQ(std::distance(fs::directory_iterator(out.path()), fs::directory_iterator()), 1);
    EXPECT_EQ(testing::folderFingerprint(folder()).find("Evidence"), std::string::npos);
}

TEST_F(MainWindowTest, ClosingDuringAScanOrAnExportLeavesNothingHalfWritten) {
    materials.write("WhatsApp Chat with Sam Lee.txt", chat(300, "Sam Lee"));
    window->openFolder(QString::fromStdString(folder()));
    EXPECT_EQ(state().phase, Phase::scanning);
    window->close();
    openWindow();
    ASSERT_TRUE(previewShown());
    window->model().exportPDF(out.path() + "/closing.pdf");
    EXPECT_TRUE(state().isExporting);
    window->close();
    window.reset();
    // Closing waits for the export, so the file is there and whole, and
    // nothing else (no temporary file) is next to it.
    std::vector<fs::path> written(fs::directory_iterator(out.path()), fs::directory_iterator{});
    ASSERT_EQ(written, std::vector<fs::path>{out.path() + "/closing.pdf"});
    EXPECT_GT(readPDF(testing::readFile(written.front())).pages.size(), 1u);
}

// The GUI thread's own time between two ticks of a 5 ms timer: the time the
// window kept the event loop from running. Counted in the thread's CPU time,
// so that the scan and the renderer taking both cores of a small machine
// away from it do not count as the window's doing.
double guiThreadMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

// 50 ms in a normal build. The sanitizers make our own code (not Qt's) about
// three times slower; the first drawing of the ready screen then takes
// about 120 ms.
#if defined(__SANITIZE_ADDRESS__)
constexpr double kLongestHoldMs = 150;
#else
constexpr double kLongestHoldMs = 50;
#endif

// Nothing the window does on its own thread, while the example folder is
// scanned and its preview drawn, holds the event loop longer than a person
// notices.
TEST_F(MainWindowTest, TheWindowStaysResponsiveDuringAScanAndAPreview) {
    double last = 0, longest = 0;
    QTimer watchdog;
    watchdog.setInterval(5);
    QObject::connect(&watchdog, &QTimer::timeout, [&] {
        double now = guiThreadMs();
        longest = std::max(longest, now - last);
        last = now;
    });
    std::string example = out.path() + "/Example";
    ExampleFolder::write(example);
    watchdog.start();
    last = guiThreadMs();
    window->model().chooseFolder(example, true);
    ASSERT_TRUE(previewShown());
    window->settings()->photosPerMonth->setValue(1);
    ASSERT_TRUE(previewShown());
    watchdog.stop();
    std::cout << "The event loop was held for at most " << longest << " ms.\n";
    EXPECT_LT(longest, kLongestHoldMs);
}

}  // namespace
}  // namespace kinfolio::gui
