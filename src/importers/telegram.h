#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "importers/json_reader.h"
#include "model/evidence.h"
#include "model/files.h"

// The machine-readable export of Telegram Desktop ("result.json"): one chat,
// or the whole account with a list of chats.
namespace kinfolio::Importer {

struct TelegramChat {
    std::string name;             // "Telegram chat" when the export gives none
    std::vector<Evidence> items;  // in the order of the chat's messages
    // The chat's 1-based place in a whole-account export's list (empty chats
    // counted too), so each chat can be told apart; 0 in a single-chat export.
    int placeInList = 0;
    bool operator==(const TelegramChat&) const = default;
};

bool isTelegram(std::string_view data);

// Every chat with at least one message or call; `fileID` is the SHA-256 of
// "result.json". An item's position is its message's 1-based place in the
// whole file, counted on through the chats of a whole-account export, so
// file and position name one message. `slack` as for parseJson. When `data`
// is `mapped`'s, the pages already read are let go as the reading goes on.
// Throws EvidenceError.
std::vector<TelegramChat> telegram(std::string_view data, const std::string& fileID,
                                   size_t slack = 0, MappedFile* mapped = nullptr);
// The same from an already parsed document.
std::vector<TelegramChat> telegram(JsonValue root, const std::string& fileID);

// A message's "text": a string as it is, an array of strings and entity
// objects joined (an entity gives its "text"), anything else empty.
std::string telegramText(std::optional<JsonValue> value);

}  // namespace kinfolio::Importer
