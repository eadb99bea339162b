#pragma once

#include <string_view>

// The machine-readable export of Telegram Desktop ("result.json").
namespace kinfolio::Importer {

bool isTelegram(std::string_view data);

}  // namespace kinfolio::Importer
