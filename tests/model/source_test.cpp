#include "model/source.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

namespace kinfolio {
namespace {

Evidence item(ItemKind kind, std::string sender, Instant date) {
    Evidence e;
    e.kind = kind;
    e.sender = std::move(sender);
    e.date = date;
    return e;
}

TEST(Source, SendersAreDistinctMessageSendersInOrderOfFirstAppearance) {
    Source s;
    s.items = {item(ItemKind::message, "Sam", 1), item(ItemKind::message, "", 2),
               item(ItemKind::call, "Jo", 3),     item(ItemKind::message, "Alex", 4),
               item(ItemKind::message, "Sam", 5), item(ItemKind::message, "sam", 6)};
    EXPECT_EQ(s.senders(), (std::vector<std::string>{"Sam", "Alex", "sam"}));
    s.items = {item(ItemKind::message, "", 1)};
    EXPECT_TRUE(s.senders().empty());
}

TEST(SourceKind, TableAndGroupOrder) {
    EXPECT_EQ(rawValue(SourceKind::chatCSV), "chatCSV");
    EXPECT_EQ(info(SourceKind::quillory).badgeLabel, "iMessage");
    EXPECT_TRUE(isChat(SourceKind::chatCSV));
    EXPECT_FALSE(isChat(SourceKind::photos));
    EXPECT_FALSE(info(SourceKind::emails).badgeColour.has_value());
    EXPECT_EQ(sourceKindFromRaw("instagram"), SourceKind::instagram);
    EXPECT_EQ(sourceKindFromRaw("Instagram"), std::nullopt);

    std::vector<Source> sources(4);
    sources[0].kind = SourceKind::emails;
    sources[0].name = "Emails";
    sources[1].kind = SourceKind::photos;
    sources[1].name = "Photos";
    sources[2].kind = SourceKind::line;
    sources[2].name = "sam";
    sources[3].kind = SourceKind::whatsapp;
    sources[3].name = "Sam";
    sortSources(sources);
    std::vector<std::string> names;
    for (const auto& s : sources)
        names.push_back(s.name);
    // Chats first, names in plain byte order (upper case before lower case).
    EXPECT_EQ(names, (std::vector<std::string>{"Sam", "sam", "Photos", "Emails"}));
}

}  // namespace
}  // namespace kinfolio
