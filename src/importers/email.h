#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/evidence.h"

// Saved e-mails: single messages (.eml) and mailboxes (.mbox).
namespace kinfolio::Importer {

// Header names lowercased as written before the colon; the first occurrence
// of a name wins.
using EmailHeaders = std::map<std::string, std::string>;

// The value of a header by its lowercased name; empty when absent.
std::string_view headerValue(const EmailHeaders& headers, const std::string& name);

// An e-mail or a mailbox: the text starts with a mailbox's "From " line or
// with a header line, and its head holds a sender, a date and a subject or
// recipient. A chat that quotes an e-mail further down is not one.
bool looksLikeEmail(std::string_view text);

// Hands each message of a mailbox (or the one message of an .eml) to
// `visit`, in file order. Messages are views into `text` where possible; a
// message is copied only when its CRLF line ends or ">From " quoting must be
// undone, so a large mailbox is never copied as a whole.
void eachEmail(std::string_view text, const std::function<void(std::string_view)>& visit);
// The messages of eachEmail, collected.
std::vector<std::string> emails(std::string_view text);

// The header block (folded lines joined) and the body after the first empty line.
std::pair<EmailHeaders, std::string> splitHeaders(std::string_view message);
// splitHeaders for a message that already has plain line feeds; the body is
// a view into `message`.
std::pair<EmailHeaders, std::string_view> splitHeaderBlock(std::string_view message);

// Decodes RFC 2047 encoded words that hold UTF-8; others stay as written.
std::string decodeHeader(std::string_view value);

// The date and time of a "Date" header as the sender's clock wrote it; the
// zone offset is ignored, like every written time.
std::optional<Instant> emailDate(std::string_view value);

// One e-mail item; none when the message has no readable date. `position`
// is the message's 1-based place in its file. The message may be raw bytes:
// each part is decoded by its own charset, and header values in raw 8-bit
// are read as ISO Latin-1, so the item's texts are always UTF-8.
std::optional<Evidence> email(std::string_view message, const std::string& fileID,
                              int64_t position);

}  // namespace kinfolio::Importer
