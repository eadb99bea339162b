#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "importers/import_result.h"
#include "model/settings.h"

namespace kinfolio::Scanner {

struct ChatDateOrder {
    DateOrder order = DateOrder::dayFirst;
    std::optional<std::string> note;  // for the source's notes, first
};

// The date order for a chat whose numeric dates may be day/month or
// month/day: the user's choice, or with "automatic" what the chat's own
// dates tell, day first (with a note saying so) when they do not tell.
ChatDateOrder chatDateOrder(std::string_view text, DateOrder setting);

// A chat read in its date order: the user's choice, or with "automatic" what
// the chat's dates tell. When their numbers do not tell (no day above 12),
// the chat is read both ways and the reading under which its messages run
// forward in time wins if it is clearly better: it steps back in time at
// most a quarter as often as the other. Otherwise day first is assumed.
// `read` reads the chat in one order and throws EvidenceError; when it
// fails both ways, the day-first error is thrown.
struct ChatReading {
    Importer::ImportResult result;
    DateOrder order = DateOrder::dayFirst;
    std::optional<std::string> note;  // for the source's notes, first
};
ChatReading readInChatOrder(std::string_view text, DateOrder setting,
                            const std::function<Importer::ImportResult(DateOrder)>& read);

}  // namespace kinfolio::Scanner
