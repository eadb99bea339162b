#include "model/settings.h"

#include <gtest/gtest.h>

#include "model/calendar.h"
#include "support/evidence_error.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

TEST(Settings, DefaultsAreWhatAFirstStartShows) {
    Settings s = Settings::defaults();
    EXPECT_EQ(s.title, "Relationship evidence");
    EXPECT_EQ(s.messagesPerMonth, 5);
    EXPECT_EQ(s.photosPerMonth, 0);
    EXPECT_EQ(s.paper, PaperSize::a4);
    EXPECT_EQ(s.arrangement, Arrangement::byDate);
    EXPECT_EQ(s.maxFileMB, 0);
    EXPECT_EQ(s.dateOrder, DateOrder::automatic);
    EXPECT_EQ(s.timeZoneID, currentTimeZoneID());
    EXPECT_FALSE(s.limitDates);
    EXPECT_NEAR(s.rangeStart, now(), 5);
}

// This computer's zone is only taken when ICU knows it.
TEST(Settings, TheComputersZoneIsKnownOrUtc) {
    struct Case {
        const char* tz;
        const char* zone;
    } cases[] = {{"Asia/Kolkata", "Asia/Kolkata"}, {"Nowhere/Land", "UTC"}};
    for (const auto& c : cases) {
        testing::ScopedEnvironment tz("TZ", c.tz);
        EXPECT_EQ(currentTimeZoneID(), c.zone) << c.tz;
    }
}

TEST(Settings, EncodesEveryKeyInFieldOrder) {
    Json j = encode(Settings::defaults());
    std::vector<std::string> keys;
    for (const auto& [k, v] : j.items())
        keys.push_back(k);
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "title", "applicant", "partner", "reference", "ownerName", "limitDates",
                        "rangeStart", "rangeEnd", "messagesPerMonth", "photosPerMonth",
                        "hiddenText", "paper", "arrangement", "maxFileMB", "dateOrder",
                        "timeZoneID", "excludedSources", "excludedItems", "addedItems"}));
    EXPECT_EQ(j["paper"], "a4");
    EXPECT_EQ(j["arrangement"], "byDate");
    EXPECT_TRUE(j["rangeStart"].is_number_float());
}

TEST(Settings, RoundTripsThroughJson) {
    Settings s = Settings::defaults();
    s.applicant = "Sam Lee";
    s.rangeStart = *Calendar::makeDate(2024, 3, 1);
    s.paper = PaperSize::letter;
    s.arrangement = Arrangement::byType;
    s.dateOrder = DateOrder::monthFirst;
    s.excludedSources = {"abc", "def#2"};
    s.addedItems = {"f:3"};
    s.hiddenText = "Sam\nstreet name";
    auto back = decode(Json::parse(encode(s).dump()));
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(*back, s);
}

TEST(Settings, StrictDecodingDiscardsAValueWithAMissingOrMistypedKey) {
    Json full = encode(Settings::defaults());
    Json missing = full;
    missing.erase("addedItems");
    EXPECT_FALSE(decode(missing).has_value());
    Json wrongType = full;
    wrongType["messagesPerMonth"] = "5";
    EXPECT_FALSE(decode(wrongType).has_value());
    Json wrongEnum = full;
    wrongEnum["paper"] = "A5";
    EXPECT_FALSE(decode(wrongEnum).has_value());
    Json wrongSet = full;
    wrongSet["excludedItems"] = Json::array({1, 2});
    EXPECT_FALSE(decode(wrongSet).has_value());
    EXPECT_FALSE(decode(Json::array()).has_value());
}

TEST(Settings, PartialSettingsApplyOverTheBaseAndNameTheBadKey) {
    Settings s = applyPartial(Settings::defaults(),
                              Json::parse(R"({"paper": "letter", "messagesPerMonth": 3})"));
    EXPECT_EQ(s.paper, PaperSize::letter);
    EXPECT_EQ(s.messagesPerMonth, 3);
    EXPECT_EQ(s.title, "Relationship evidence");
    EXPECT_EQ(testing::errorOf([&] { applyPartial(s, Json::parse(R"({"colour": "blue"})")); }),
              "There is no setting called \u201ccolour\u201d.");
    EXPECT_EQ(testing::errorOf([&] { applyPartial(s, Json::parse(R"({"limitDates": "yes"})")); }),
              "The setting \u201climitDates\u201d must be true or false.");
}

TEST(Settings, SetFieldReadsScalarsFromText) {
    Settings s = Settings::defaults();
    setField(s, "rangeStart", "2025-01-31");
    EXPECT_EQ(Calendar::format(s.rangeStart, "yyyy-MM-dd HH:mm"), "2025-01-31 00:00");
    setField(s, "limitDates", "true");
    EXPECT_TRUE(s.limitDates);
    setField(s, "maxFileMB", "10");
    EXPECT_EQ(s.maxFileMB, 10);
    setField(s, "dateOrder", "dayFirst");
    EXPECT_EQ(s.dateOrder, DateOrder::dayFirst);
    setField(s, "ownerName", "Alex: Morgan");
    EXPECT_EQ(s.ownerName, "Alex: Morgan");
    EXPECT_THROW(setField(s, "rangeEnd", "31/01/2025"), EvidenceError);
    EXPECT_THROW(setField(s, "maxFileMB", "-1"), EvidenceError);
    EXPECT_THROW(setField(s, "maxFileMB", "10MB"), EvidenceError);
    EXPECT_THROW(setField(s, "excludedItems", "a"), EvidenceError);
    EXPECT_THROW(setField(s, "nope", "a"), EvidenceError);
    setField(s, "timeZoneID", "Asia/Kolkata");
    EXPECT_EQ(s.timeZoneID, "Asia/Kolkata");
    EXPECT_EQ(testing::errorOf([&] { setField(s, "timeZoneID", "Mars/Base"); }),
              "The setting \u201ctimeZoneID\u201d must be a time zone such as "
              "\u201cEurope/London\u201d; \u201cMars/Base\u201d is not one.");
    EXPECT_EQ(s.timeZoneID, "Asia/Kolkata");
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
