#include "selection/selection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "model/calendar.h"
#include "selection/items.h"

namespace kinfolio {
namespace {

using namespace testing;
using Selection::IdSet;

ScanResult scanOf(std::vector<Source> sources) {
    ScanResult scan;
    scan.folder = "/materials";
    scan.sources = std::move(sources);
    return scan;
}

IdSet setOf(const Selection::ItemRefs& items) {
    auto list = ids(items);
    return IdSet(list.begin(), list.end());
}

// Whole days: a range runs from the first day's midnight to the midnight
// after the last day, whatever times of day the settings hold.
TEST(InRange, RunsFromMidnightToTheMidnightAfterTheLastDay) {
    // Name, first and last day of the range, the item's date, whether it is in.
    const std::tuple<const char*, Instant, Instant, Instant, bool> cases[] = {
        {"day before", at(2025, 3, 9, 15, 30), at(2025, 3, 9, 8), at(2025, 3, 8, 23, 59, 59), 0},
        {"first moment", at(2025, 3, 9, 15, 30), at(2025, 3, 9, 8), at(2025, 3, 9, 0, 0, 0), 1},
        {"last second", at(2025, 3, 9, 15, 30), at(2025, 3, 9, 8), at(2025, 3, 9, 23, 59, 59), 1},
        {"last millisecond", at(2025, 3, 9), at(2025, 3, 9), at(2025, 3, 10, 0, 0, 0) - 0.001, 1},
        {"next midnight", at(2025, 3, 9), at(2025, 3, 9), at(2025, 3, 10, 0, 0, 0), 0},
        {"last day", at(2025, 1, 1), at(2025, 1, 31), at(2025, 1, 31, 22), 1},
        {"day after the last", at(2025, 1, 1), at(2025, 1, 31), at(2025, 2, 1, 0), 0},
        {"day before the first", at(2025, 1, 1), at(2025, 1, 31), at(2024, 12, 31, 23), 0},
    };
    for (const auto& [name, first, last, date, in] : cases) {
        Settings settings;
        settings.rangeStart = first;
        settings.rangeEnd = last;
        EXPECT_TRUE(Selection::inRange(message("f", 0, date), settings)) << "range off";
        settings.limitDates = true;
        EXPECT_EQ(Selection::inRange(message("f", 0, date), settings), in) << name;
    }
}

// The proposal corrected by hand, exclusion winning, within the range,
// ordered by date, file and position. An id not written the way an item
// writes its id names nothing.
TEST(Selected, CorrectsTheProposalByHand) {
    const Instant t = at(2025, 4, 1);
    const Source chat = source(SourceKind::whatsapp, "chat", dailyMessages("c", 10, 2025, 3));
    const Source system = source(SourceKind::whatsapp, "chat",
                                 {message("c", 0, at(2025, 3, 1), ""), message("c", 1, t)});
    const Source unordered =
        source(SourceKind::whatsapp, "z",
               {message("zz", 5, t), message("zz", 2, t), message("zz", 9, t - 60)});
    const Source document =
        source(SourceKind::documents, "docs", {item(ItemKind::document, "aa", 7, t)});
    const struct Case {
        const char* name;
        std::vector<Source> sources;
        int perMonth;  // one a month proposes c:0 and c:1 of the chat
        IdSet added, excluded;
        std::vector<std::string> expected;
        Instant lastDay = 0;
    } cases[] = {
        {"exclusion wins", {chat}, 1, {"c:5", "c:7"}, {"c:1", "c:7"}, {"c:0", "c:5"}},
        {"added outside the range", {chat}, 1, {"c:4"}, {}, {"c:0", "c:1"}, at(2025, 3, 2)},
        {"system line not proposed", {system}, 5, {}, {}, {"c:1"}},
        {"system line added", {system}, 5, {"c:0"}, {}, {"c:0", "c:1"}},
        {"date, file, position",
         {unordered, document},
         0,
         {},
         {},
         {"zz:9", "aa:7", "zz:2", "zz:5"}},
        {"ids not written as item ids",
         {chat},
         1,
         {"c:04", "c:+3", "c:3x", "c", ""},
         {"c:01", "x:c:0"},
         {"c:0", "c:1"}},
    };
    for (const auto& c : cases) {
        Settings settings;
        settings.messagesPerMonth = c.perMonth;
        settings.addedItems = c.added;
        settings.excludedItems = c.excluded;
        settings.limitDates = c.lastDay != 0;
        settings.rangeStart = at(2025, 3, 1);
        settings.rangeEnd = c.lastDay;
        EXPECT_EQ(ids(Selection::selected(scanOf(c.sources), settings)), c.expected) << c.name;
    }
}

TEST(SetSelected, TicksBecomeChangesOfTheManualSets) {
    Settings settings;
    IdSet proposal = {"c:0", "c:1"};
    Selection::setSelected(settings, proposal, "c:5", true);
    EXPECT_EQ(settings.addedItems, IdSet{"c:5"});
    Selection::setSelected(settings, proposal, "c:0", false);
    EXPECT_EQ(settings.excludedItems, IdSet{"c:0"});
    Selection::setSelected(settings, proposal, "c:5", false);
    EXPECT_TRUE(settings.addedItems.empty());
    EXPECT_EQ(settings.excludedItems, IdSet{"c:0"});  // c:5 was not proposed
    Selection::setSelected(settings, proposal, "c:0", true);
    EXPECT_TRUE(settings.excludedItems.empty());
    EXPECT_TRUE(settings.addedItems.empty());  // c:0 is proposed

    settings.excludedItems = {"c:1"};
    Selection::setSelected(settings, {}, "c:1", true);
    EXPECT_TRUE(settings.excludedItems.empty());
    EXPECT_EQ(settings.addedItems, IdSet{"c:1"});
    Selection::setSelected(settings, {}, "c:2", false);
    EXPECT_TRUE(settings.excludedItems.empty());

    ScanResult scan =
        scanOf({source(SourceKind::whatsapp, "chat", dailyMessages("c", 10, 2025, 3))});
    settings = Settings{};
    settings.messagesPerMonth = 1;
    auto automatic = Selection::selected(scan, settings);
    Selection::setSelected(settings, setOf(Selection::proposed(scan, settings)), "c:6", true);
    Selection::setSelected(settings, setOf(Selection::proposed(scan, settings)), "c:1", false);
    EXPECT_EQ(ids(Selection::selected(scan, settings)), (std::vector<std::string>{"c:0", "c:6"}));
    Selection::backToAutomaticChoice(settings);
    EXPECT_TRUE(settings.addedItems.empty() && settings.excludedItems.empty());
    EXPECT_EQ(Selection::selected(scan, settings), automatic);
}

// The rules written out plainly with month-key strings and id sets, to check
// the index-based proposal and selection against.
namespace plain {

IdSet sample(std::vector<Evidence> items, int perMonth) {
    IdSet taken;
    if (perMonth < 1) return taken;
    std::map<std::string, std::vector<Evidence>> months;
    for (const auto& e : items)
        months[Calendar::format(e.date, "yyyy-MM")].push_back(e);
    for (auto& [key, group] : months) {
        sortByDateAndPosition(group);
        size_t n = group.size(), k = static_cast<size_t>(perMonth);
        for (size_t i = 0; i < std::min(n, k); ++i) {
            double spaced = k > 1 ? std::round(double(n - 1) * double(i) / double(k - 1)) : 0;
            taken.insert(group[k >= n ? i : static_cast<size_t>(spaced)].id());
        }
    }
    return taken;
}

IdSet withContext(const IdSet& ids, const std::vector<Evidence>& items) {
    IdSet result = ids;
    std::map<std::string, std::vector<Evidence>> files;
    for (const auto& e : items)
        files[e.fileID].push_back(e);
    for (auto& [file, group] : files) {
        sortByPosition(group);
        for (size_t i = 0; i < group.size(); ++i) {
            if (!ids.contains(group[i].id())) continue;
            if (i > 0) result.insert(group[i - 1].id());
            if (i + 1 < group.size()) result.insert(group[i + 1].id());
        }
    }
    return result;
}

IdSet proposed(const ScanResult& scan, const Settings& s) {
    IdSet result;
    for (const auto& source : scan.sources) {
        if (s.excludedSources.contains(source.id)) continue;
        std::vector<Evidence> items, messages;
        for (const auto& e : source.items)
            if (Selection::inRange(e, s)) items.push_back(e);
        IdSet add;
        if (isChat(source.kind)) {
            for (const auto& e : items) {
                if (e.kind == ItemKind::call) add.insert(e.id());
                if (e.kind == ItemKind::message && !e.sender.empty()) messages.push_back(e);
            }
            IdSet chosen = s.messagesPerMonth == 0
                               ? setOf(refs(messages))
                               : withContext(sample(messages, s.messagesPerMonth), messages);
            add.insert(chosen.begin(), chosen.end());
        } else if (source.kind == SourceKind::documents || source.kind == SourceKind::emails ||
                   s.photosPerMonth == 0) {
            add = setOf(refs(items));
        } else {
            add = sample(items, s.photosPerMonth);
        }
        result.insert(add.begin(), add.end());
    }
    return result;
}

std::vector<Evidence> selected(const ScanResult& scan, const Settings& s) {
    IdSet proposal = proposed(scan, s);
    std::vector<Evidence> kept;
    for (const Evidence* e : Selection::candidates(scan, s))
        if ((proposal.contains(e->id()) || s.addedItems.contains(e->id())) &&
            !s.excludedItems.contains(e->id()))
            kept.push_back(*e);
    sortByDateFileAndPosition(kept);
    return kept;
}

}  // namespace plain

// Scans with the awkward cases mixed in: several files per chat, lines whose
// positions disagree with their dates, shared ids, system lines, calls,
// identical dates and months with fewer items than the sample.
ScanResult randomScan(std::mt19937& random) {
    constexpr SourceKind kKinds[] = {
        SourceKind::whatsapp, SourceKind::quillory,  SourceKind::photos, SourceKind::screenshots,
        SourceKind::videos,   SourceKind::documents, SourceKind::emails};
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    std::vector<Source> sources;
    int sourceCount = 1 + pick(5);
    for (int s = 0; s < sourceCount; ++s) {
        SourceKind kind = kKinds[pick(7)];
        std::vector<Evidence> items;
        int count = pick(120);
        for (int i = 0; i < count; ++i) {
            std::string file = "f" + std::to_string(s) + std::to_string(pick(isChat(kind) ? 2 : 1));
            Instant date = at(2024, 11, 1) + pick(150) * 86400.0 / (1 + pick(3)) + pick(3) * 3600;
            ItemKind itemKind = ItemKind::message;
            std::string sender = pick(6) == 0 ? "" : "Sam";
            if (!isChat(kind))
                itemKind = kind == SourceKind::photos ? ItemKind::photo : ItemKind::document;
            else if (pick(10) == 0)
                itemKind = ItemKind::call;
            int64_t position = pick(4) == 0 ? pick(count + 1) : i;
            items.push_back(item(itemKind, file, position, date, sender));
        }
        sources.push_back(source(kind, "s" + std::to_string(s), items));
    }
    return scanOf(sources);
}

TEST(Selected, MatchesThePlainRulesOnRandomScans) {
    std::mt19937 random(2025);
    for (int round = 0; round < 100; ++round) {
        ScanResult scan = randomScan(random);
        Settings s;
        s.messagesPerMonth = static_cast<int>(random() % 7);
        s.photosPerMonth = static_cast<int>(random() % 4);
        if (random() % 3 == 0) {
            s.limitDates = true;
            s.rangeStart = at(2024, 12, 1 + static_cast<int>(random() % 20));
            s.rangeEnd = s.rangeStart + static_cast<double>(random() % 60) * 86400.0;
        }
        if (random() % 4 == 0) s.excludedSources.insert("s" + std::to_string(random() % 3));
        for (const auto& source : scan.sources)
            for (const auto& e : source.items) {
                if (random() % 15 == 0) s.addedItems.insert(e.id());
                if (random() % 15 == 0) s.excludedItems.insert(e.id());
            }
        ASSERT_EQ(setOf(Selection::proposed(scan, s)), plain::proposed(scan, s))
            << "round " << round;
        std::vector<Evidence> selected;
        for (const Evidence* e : Selection::selected(scan, s))
            selected.push_back(*e);
        ASSERT_EQ(selected, plain::selected(scan, s)) << "round " << round;
        for (const auto& source : scan.sources) {
            ASSERT_EQ(Selection::sample(refs(source.items), s.messagesPerMonth),
                      plain::sample(source.items, s.messagesPerMonth));
            IdSet some = plain::sample(source.items, 1);
            ASSERT_EQ(Selection::withContext(some, refs(source.items)),
                      plain::withContext(some, source.items));
        }
    }
}

}  // namespace
}  // namespace kinfolio
