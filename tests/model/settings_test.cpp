#include "model/settings.h"

#include <gtest/gtest.h>

#include "model/calendar.h"
#include "support/evidence_error.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

// This computer's zone is only taken when ICU knows it.
TEST(Settings, TheComputersZoneIsKnownOrUtc) {
    const std::pair<const char*, const char*> cases[] = {{"Asia/Kolkata", "Asia/Kolkata"},
                                                         {"Nowhere/Land", "UTC"}};
    for (const auto& [tz, zone] : cases) {
        testing::ScopedEnvironment computer("TZ", tz);
        EXPECT_EQ(currentTimeZoneID(), zone) << tz;
    }
}

TEST(Settings, StrictDecodingDiscardsAValueWithAMissingOrMistypedKey) {
    Json full = encode(Settings::defaults());
    const std::pair<const char*, Json> mistakes[] = {
        {"messagesPerMonth", "5"},
        {"paper", "A5"},
        {"excludedItems", Json::array({1, 2})},
        {"addedItems", nullptr},  // missing
    };
    for (const auto& [key, value] : mistakes) {
        Json json = full;
        if (value.is_null())
            json.erase(key);
        else
            json[key] = value;
        EXPECT_FALSE(decode(json).has_value()) << key;
    }
    EXPECT_FALSE(decode(Json::array()).has_value());
}

// A setting given on the command line: the value it stores, or the refusal.
TEST(Settings, SetFieldReadsScalarsFromText) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"limitDates", "true", "true"},
        {"maxFileMB", "10", "10"},
        {"dateOrder", "dayFirst", "\"dayFirst\""},
        {"ownerName", "Alex: Morgan", "\"Alex: Morgan\""},
        {"timeZoneID", "Asia/Kolkata", "\"Asia/Kolkata\""},
        {"rangeEnd", "31/01/2025",
         "The setting \u201crangeEnd\u201d must be a date written yyyy-MM-dd."},
        {"maxFileMB", "1000000", "1000000"},
        {"maxFileMB", "1000001",
         "The setting \u201cmaxFileMB\u201d must be a whole number from 0 to 1000000."},
        {"maxFileMB", "-1",
         "The setting \u201cmaxFileMB\u201d must be a whole number from 0 to 1000000."},
        {"maxFileMB", "10MB",
         "The setting \u201cmaxFileMB\u201d must be a whole number from 0 to 1000000."},
        {"excludedItems", "a",
         "The setting \u201cexcludedItems\u201d is a list; give it in a settings file with "
         "--settings."},
        {"nope", "a", "There is no setting called \u201cnope\u201d."},
        {"timeZoneID", "Mars/Base",
         "The setting \u201ctimeZoneID\u201d must be a time zone such as "
         "\u201cEurope/London\u201d; \u201cMars/Base\u201d is not one."},
    };
    for (const auto& [key, text, stored] : cases) {
        Settings s = Settings::defaults();
        std::string error = testing::errorOf([&] { setField(s, key, text); });
        EXPECT_EQ(error == "(no error)" ? encode(s)[key].dump() : error, stored) << key << text;
    }
    Settings s = Settings::defaults();
    setField(s, "rangeStart", "2025-01-31");
    EXPECT_EQ(Calendar::format(s.rangeStart, "yyyy-MM-dd HH:mm"), "2025-01-31 00:00");
}

// A saved zone this computer does not know costs only itself, with a warning.
TEST(Settings, StrictDecodingReplacesAnUnknownZoneAndSaysSo) {
    Settings saved = Settings::defaults();
    saved.title = "Visa 2025";
    Json json = encode(saved);
    json["timeZoneID"] = "Mars/Base";
    std::vector<std::string> warnings;
    auto back = decode(json, &warnings);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->title, "Visa 2025");
    EXPECT_EQ(back->timeZoneID, Settings::defaults().timeZoneID);
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_NE(warnings[0].find("\u201cMars/Base\u201d is not one. Using "), std::string::npos);
}

TEST(Settings, PaperSizesAndDisplayNames) {
    EXPECT_EQ(pageSize(PaperSize::a4).width, 595);
    EXPECT_EQ(pageSize(PaperSize::a4).height, 842);
    EXPECT_EQ(pageSize(PaperSize::letter).width, 612);
    EXPECT_EQ(pageSize(PaperSize::letter).height, 792);
    EXPECT_EQ(displayName(PaperSize::letter), "US Letter");
    EXPECT_EQ(displayName(Arrangement::byType), "Type of evidence");
    EXPECT_EQ(displayName(DateOrder::dayFirst), "Day / Month");
    EXPECT_EQ(dateOrderFromRaw("monthFirst"), DateOrder::monthFirst);
}

}  // namespace
}  // namespace kinfolio
