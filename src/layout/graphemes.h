#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Counting in user-perceived characters, as a reader counts them: an emoji
// with its skin tone or a letter with a combining accent is one character.

namespace kinfolio {

size_t graphemeCount(std::string_view utf8);
// The first n user-perceived characters of the text.
std::string prefixGraphemes(std::string_view utf8, size_t n);

}  // namespace kinfolio
