#include "importers/whatsapp_fast.h"

#include <gtest/gtest.h>

#include <random>

#include "importers/dates.h"
#include "importers/whatsapp.h"
#include "importers/whatsapp_line.h"
#include "model/text.h"

// The hand-written readers must answer exactly as the ICU reference wherever
// they answer at all. Lines are generated from pieces that cover both phone
// families, the marker forms, odd spaces and digits, and bad dates.
namespace kinfolio::Importer {
namespace {

template <typename Number>
Number between(std::mt19937& rng, Number low, Number high) {
    return std::uniform_int_distribution<Number>(low, high)(rng);
}

// Half of the time the first option (the usual form), else any.
template <typename List>
auto pick(std::mt19937& rng, const List& options) {
    if (between(rng, 0, 1)) return options[0];
    return options[between<size_t>(rng, 0, std::size(options) - 1)];
}

// A number from low to high, zero-padded to between min and max digits.
std::string digits(std::mt19937& rng, int min, int max, int low, int high) {
    int n = between(rng, min, max);
    std::string s = std::to_string(between(rng, low, high));
    return std::string(std::max(0, n - static_cast<int>(s.size())), '0') + s;
}

std::string generatedLine(std::mt19937& rng) {
    static const char* const iphoneOpens[] = {"[", "\uFEFF[", " [", ""};
    static const char* const androidOpens[] = {"", "[", "\u200F"};
    static const char* const seps[] = {"/", ".", "-", ":", "\u0664"};
    static const char* const commas[] = {",", "", ",,"};
    static const char* const gaps[] = {" ", "  ", "\u202F", "\u00A0", "\t", "", "\v"};
    static const char* const markers[] = {
        "",   " AM",  " PM",  "\u202FPM",  " am",  " pm",  " a.m.", " P.M.",    " p. m.", "PM",
        " A", " a.m", "  PM", " \u202FAM", " Pm.", " AM.", " PM ",  "\u00A0AM", " M"};
    static const char* const iphoneCloses[] = {"] ", "]", "]\u202F", "] - ", " ]", ""};
    static const char* const androidCloses[] = {
        " - ", " \u2013 ", " -", "  -  ", "\t- ", " \u2014 ", ": ", "", " ", "-", "\u202F\u2013 "};
    // What follows the stamp, one per line.
    static const auto rests = textLines(
        "Sam Lee: hi there\nSam Lee: <attached: 00000003-PHOTO.jpg>\n"
        "Messages are end-to-end encrypted.\n\n\u00DCmit: gr\u00FC\u00DFe\n"
        "\u65E5\u672C: \u30C6\u30B9\u30C8\n\u3000Sam: wide space\nSam: line\u2028break\n"
        "Sam: tab\there\nSam: vertical\vtab\n\u0663 Sam: digit\nSam: ends with a separator\u2029");
    bool iphone = between(rng, 0, 1);
    std::string line = iphone ? pick(rng, iphoneOpens) : pick(rng, androidOpens);
    int shape = between(rng, 0, 9);
    std::string a = digits(rng, 1, 2, 0, 32), b = digits(rng, 1, 2, 0, 13);
    std::string year = shape == 0   ? digits(rng, 1, 5, 0, 99999)
                       : shape <= 5 ? digits(rng, 4, 4, 1990, 2030)
                                    : digits(rng, 2, 2, 0, 99);
    if (shape == 1) a = digits(rng, 1, 4, 0, 2025);
    if (shape == 2) a = "\u0661";  // an Arabic-Indic digit
    std::string sep = pick(rng, seps);
    if (between(rng, 0, 3) == 0) sep = pick(rng, seps);
    line += a + sep + b + (between(rng, 0, 5) ? sep : pick(rng, seps)) + year;
    line += pick(rng, commas);
    line += pick(rng, gaps);
    line +=
        digits(rng, 1, shape == 3 ? 3 : 2, 0, 25) + ":" + digits(rng, 2, shape == 4 ? 3 : 2, 0, 61);
    if (between(rng, 0, 1)) line += ":" + digits(rng, shape == 5 ? 1 : 2, 2, 0, 61);
    line += pick(rng, markers);
    line += iphone ? pick(rng, iphoneCloses) : pick(rng, androidCloses);
    line += pick(rng, rests);
    return line;
}

TEST(WhatsAppFast, LineMatcherAgreesWithTheExpression) {
    std::mt19937 rng(20250105);
    int decided = 0, matched = 0;
    for (int i = 0; i < 30000; ++i) {
        std::string line = generatedLine(rng);
        auto fast = fast::matchLine(line);
        auto reference = splitWhatsAppLine(line);
        // A caller that has seen only plain ASCII lets the matcher skip its
        // search for line breaks; the answer must not change.
        if (plainAsciiEnd(line, 0) == line.size()) {
            auto told = fast::matchLine(line, true);
            ASSERT_EQ(told.verdict, fast.verdict) << line;
            ASSERT_EQ(told.rest, fast.rest) << line;
        }
        if (fast.verdict == fast::Verdict::unsure) continue;
        ++decided;
        ASSERT_EQ(fast.verdict == fast::Verdict::yes, reference.has_value()) << line;
        if (!reference) continue;
        ++matched;
        EXPECT_EQ(fast.timestamp, reference->timestamp) << line;
        EXPECT_EQ(fast.rest, reference->rest) << line;
    }
    // Most generated lines are plain enough to be decided without ICU.
    EXPECT_GT(decided, 20000);
    EXPECT_GT(matched, 3000);
}

// The quick reading of the two usual shapes answers as the expression and
// the date patterns do, or not at all.
TEST(WhatsAppFast, QuickLinesAgreeWithTheExpressionAndTheDatePatterns) {
    std::mt19937 rng(20251124);
    int answered = 0;
    for (int i = 0; i < 30000; ++i) {
        std::string line = generatedLine(rng);
        if (plainAsciiEnd(line, 0) != line.size()) continue;
        for (auto order : {DateOrder::dayFirst, DateOrder::monthFirst}) {
            fast::QuickLine quick;
            if (!fast::quickLine(line, order, quick)) continue;
            ++answered;
            auto reference = splitWhatsAppLine(line);
            ASSERT_TRUE(reference) << line;
            ASSERT_EQ(quick.rest, reference->rest) << line;
            ASSERT_EQ(quick.date, date(normaliseTimestamp(reference->timestamp), order)) << line;
        }
    }
    EXPECT_GT(answered, 500);
}

TEST(WhatsAppFast, DateLikeStartAgreesWithTheExpression) {
    std::mt19937 rng(7);
    int decided = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string line = generatedLine(rng);
        line = line.substr(0, between<size_t>(rng, 0, line.size()));
        auto fast = fast::dateLikeStart(line);
        if (fast == fast::Verdict::unsure) continue;
        ++decided;
        ASSERT_EQ(fast == fast::Verdict::yes, startsLikeDate(line)) << line;
    }
    EXPECT_GT(decided, 15000);
}

TEST(WhatsAppFast, TimestampsAgreeWithTheDatePatterns) {
    std::mt19937 rng(42);
    int compared = 0;
    for (int i = 0; i < 20000; ++i) {
        auto reference = splitWhatsAppLine(generatedLine(rng));
        if (!reference) continue;
        std::string stamp = normaliseTimestamp(reference->timestamp);
        for (auto order : {DateOrder::automatic, DateOrder::dayFirst, DateOrder::monthFirst}) {
            // The stamp as written, comma and all, reads as its normalised form.
            auto written = fast::timestamp(reference->timestamp, order);
            if (written) {
                ASSERT_EQ(written, date(stamp, order)) << reference->timestamp;
            }
            auto fast = fast::timestamp(stamp, order);
            if (!fast) continue;
            ++compared;
            ASSERT_EQ(fast, date(stamp, order)) << stamp;
        }
    }
    EXPECT_GT(compared, 1000);
    // One after another, stamps that share all but one part of their day.
    for (const char* stamp : {"01/02/2015 10:00", "01/02/2016 10:00", "01/03/2016 10:00",
                              "02/03/2016 10:00", "02/03/2016 23:59:59", "02/03/16 00:00"})
        for (auto order : {DateOrder::dayFirst, DateOrder::monthFirst})
            EXPECT_EQ(fast::timestamp(stamp, order), date(stamp, order)) << stamp;
}

TEST(WhatsAppFast, DateOrderDetectionAgreesWithTheExpression) {
    std::mt19937 rng(5);
    static const char* const breaks[] = {"\n", "\r\n", "\r", "\u2028", "\n\n"};
    int decided = 0;
    for (int i = 0; i < 3000; ++i) {
        std::string text;
        for (int l = 0, lines = between(rng, 1, 6); l < lines; ++l)
            text += generatedLine(rng) + pick(rng, breaks);
        auto fast = fast::detectOrder(text);
        // The reader looks at each line's date as it reads, and must see
        // what the whole text tells.
        std::optional<std::optional<DateOrder>> seen;
        try {
            seen = whatsapp(text, "f", DateOrder::dayFirst).orderSeen;
        } catch (const EvidenceError&) {
        }
        if (!fast && !seen) continue;
        ++decided;
        auto reference = detectOrder(text);
        ASSERT_TRUE(!fast || *fast == reference) << text;
        ASSERT_TRUE(!seen || *seen == reference) << text;
    }
    EXPECT_GT(decided, 600);
}

}  // namespace
}  // namespace kinfolio::Importer
