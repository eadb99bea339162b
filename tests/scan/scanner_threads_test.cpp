#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "cli/json_output.h"
#include "example/example_folder.h"
#include "model/parallel.h"
#include "scan/scanner.h"
#include "support/temp_folder.h"

namespace kinfolio::Scanner {
namespace {

// A chat large enough to be read in pieces, with what a piece boundary could
// break: a header line, continuation lines, invisible marks and attachments.
std::string largeChat(size_t messages, size_t badLine = 0) {
    std::string chat = "Messages and calls are end-to-end encrypted.\n";
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    char stamp[64];
    for (size_t i = 0; i < messages; ++i) {
        // 200 messages a day, one every seven minutes, through 2023.
        int day = static_cast<int>(i / 200), month = 0;
        while (day >= kDays[month])
            day -= kDays[month++];
        size_t minute = i % 200 * 7;
        std::snprintf(stamp, sizeof stamp, "[%02d/%02d/2023, %02zu:%02zu:%02zu] ", day + 1,
                      month + 1, minute / 60, minute % 60, i % 60);
        if (i % 11 == 3) chat += "\u200E";
        chat += stamp;
        chat += i % 2 ? "Sam Lee: " : "Alex: ";
        chat += "message number " + std::to_string(i);
        if (i % 7 == 0) chat += "\nand a second line\n\nafter an empty one";
        if (i % 5000 == 1) chat += "\n\u200E<attached: 00000001-PHOTO.jpg>";
        chat += '\n';
        if (badLine && i == badLine) chat += "2023-13-45 broken: stamp\n";
    }
    return chat;
}

std::string scanJson(const std::string& folder, unsigned threads) {
    Parallel::setThreads(threads);
    std::ostringstream out;
    cli::writeJson(out, scan(folder, DateOrder::automatic, "Europe/London"));
    Parallel::setThreads(0);
    return out.str();
}

// The same folder gives the same bytes however many threads read it.
TEST(Scan, OneThreadAndManyReadAFolderTheSame) {
    testing::TempFolder temp;
    std::string folder = temp.path() + "/materials";
    ExampleFolder::write(folder);
    std::string chat = largeChat(40000);
    ASSERT_GT(chat.size(), 2u << 20);  // two pieces at least
    std::filesystem::create_directories(folder + "/Big");
    std::ofstream(folder + "/Big/_chat.txt") << chat;
    std::ofstream(folder + "/Big/00000001-PHOTO.jpg") << "not really a photo";
    std::filesystem::create_directories(folder + "/Broken");
    std::ofstream(folder + "/Broken/_chat.txt") << largeChat(40000, 35000);

    std::string one = scanJson(folder, 1);
    EXPECT_EQ(scanJson(folder, 2), one);
    EXPECT_EQ(scanJson(folder, 7), one);

    // The whole reading, seen from one place: every message, its line number
    // counted over the whole file, and the trouble named at its own line.
    auto json = Json::parse(one);
    const Json* big = nullptr;
    for (const auto& s : json["sources"])
        if (s["name"] == "Big") big = &s;
    ASSERT_TRUE(big);
    const auto& items = (*big)["items"];
    ASSERT_EQ(items.size(), 40000u);
    EXPECT_EQ(items[0]["position"], 2);
    EXPECT_EQ(items[1]["position"], 6);
    EXPECT_EQ(items[7]["text"], "message number 7\nand a second line\n\nafter an empty one");
    int64_t lines = 1 + 40000 + 3 * ((40000 + 6) / 7) + 40000 / 5000;
    EXPECT_EQ(items.back()["position"], lines);
    EXPECT_EQ((*big)["notes"][0], "Ignored header line 1.");
    int64_t badAt = 1 + 35001 + 3 * ((35000 + 7) / 7) + 35000 / 5000 + 1;
    bool named = false;
    for (const auto& s : json["skipped"])
        named |= s["reason"] == "Looks like a WhatsApp chat, but: Unsupported timestamp on line " +
                                    std::to_string(badAt) + ".";
    EXPECT_TRUE(named) << json["skipped"].dump(2);
}

}  // namespace
}  // namespace kinfolio::Scanner
