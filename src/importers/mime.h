#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "importers/email.h"

// The MIME layer of saved e-mails: transfer encodings, character sets and
// the choice of a readable part.
namespace kinfolio::Importer {

// Strict base64 (RFC 4648): padding required, any character outside the
// alphabet (white space included) makes the whole decoding fail.
std::optional<std::string> base64(std::string_view text);

// Decoded bytes; malformed escapes are kept as written.
std::string quotedPrintable(std::string_view text);

// ISO Latin-1 bytes as UTF-8: every byte is the code point of its value.
std::string latin1ToUtf8(std::string_view bytes);

// Readable plain text of a message or part: a plain-text part is preferred
// in multiparts (followed to any depth), transfer encodings and the Latin-1
// or UTF-8 charset are decoded, HTML is reduced to its text.
std::string plainText(const EmailHeaders& headers, std::string_view body);

}  // namespace kinfolio::Importer
