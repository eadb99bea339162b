#include <gtest/gtest.h>

#include <sstream>

#include "cli/commands.h"
#include "model/text.h"
#include "selection/items.h"
#include "support/run_cli.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

using namespace testing;

TEST(SelectCommand, AFolderWithNothingReadable) {
    ScopedHome home;
    // A materials folder and a settings file beside it (never inside the materials).
    TempFolder temp;
    std::string materials = temp.path() + "/materials";
    std::string settingsFile =
        temp.write("settings.json", R"({"messagesPerMonth": 3, "photosPerMonth": 2})");
    temp.write("materials/notes/shopping.txt", "milk\neggs\n");
    temp.write("materials/readme.xyz", "nothing to see");
    Settings settings;
    settings.messagesPerMonth = 3;
    settings.photosPerMonth = 2;
    auto r = runCli({"select", materials, "--settings", settingsFile});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "Nothing\n0 items in the export.\n" + Selection::samplingNote(settings) + "\n");

    r = runCli({"select", materials, "--json", "--settings", settingsFile});
    ASSERT_EQ(r.status, 0) << r.err;
    // The keys in this order, each with its value.
    EXPECT_EQ(Json::parse(r.out), (Json{{"candidates", 0},
                                        {"selected", Json::array()},
                                        {"summary", "Nothing"},
                                        {"exportCount", 0},
                                        {"gapMonths", Json::array()},
                                        {"samplingNote", Selection::samplingNote(settings)}}));
}

// Coverage lines first, then one line per item: date, sender or kind, the
// first 60 characters of its text on one line.
TEST(SelectOutput, TextListsCoverageThenOneLinePerItem) {
    std::string sixty;
    for (int i = 0; i < 30; ++i)
        sixty += "\u00e9\U0001F600";  // two and four bytes: 60 characters, 180 bytes
    std::vector<Evidence> chat = {message("c", 0, at(2025, 1, 5, 9, 30)),
                                  message("c", 1, at(2025, 4, 2, 18, 5), "Alex")};
    chat[0].text = sixty + "TAIL";
    chat[1].text = "line one\nline two\r\nline three";
    Evidence photo = item(ItemKind::photo, "p", 0, at(2025, 1, 6, 10, 0));
    photo.text = "";
    ScanResult scan;
    scan.sources = {source(SourceKind::whatsapp, "chat", chat),
                    source(SourceKind::photos, "pics", {photo})};
    Settings settings;
    std::ostringstream out;
    cli::printSelection(out, scan, settings);
    EXPECT_EQ(out.str(), join({"2 messages, 1 photo", "3 items in the export.",
                               "Nothing selected for Feb 2025, Mar 2025. Add material for those "
                               "months if you have it.",
                               Selection::samplingNote(settings), "",
                               "2025-01-05 09:30  Sam  " + sixty, "2025-01-06 10:00  (photo)",
                               "2025-04-02 18:05  Alex  line one line two line three\n"},
                              "\n"));
}

}  // namespace
}  // namespace kinfolio
