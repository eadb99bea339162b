#pragma once

#include <optional>
#include <string>
#include <string_view>

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

}  // namespace kinfolio::Scanner
