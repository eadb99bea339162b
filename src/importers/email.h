#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/evidence.h"

// Saved e-mails: single messages (.eml) and mailboxes (.mbox).
namespace kinfolio::Importer {

using EmailHeaders = std::map<std::string, std::string>;

bool looksLikeEmail(std::string_view text);

}  // namespace kinfolio::Importer
