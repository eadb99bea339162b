#pragma once

#include <string_view>

// The "message_N.json" files of a Messenger or Instagram download.
namespace kinfolio::Importer {

bool isMeta(std::string_view data);

}  // namespace kinfolio::Importer
