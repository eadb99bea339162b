#include "importers/email.h"

#include <algorithm>

#include "importers/mime.h"
#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

constexpr size_t npos = std::string_view::npos;

// The text with CRLF line ends turned into line feeds; a copy is made in
// `storage` only when there is something to change.
std::string_view lineFeeds(std::string_view text, std::string& storage) {
    if (text.find("\r\n") == npos) return text;
    storage = replaceAll(text, "\r\n", "\n");
    return storage;
}

// One message cut from a mailbox: its separator line dropped, CRLF turned
// into line feeds and one level of ">From " quoting undone.
std::string_view mailboxMessage(std::string_view piece, std::string& storage) {
    size_t firstLineEnd = piece.find('\n');
    if (firstLineEnd == npos) return {};
    std::string_view rest = lineFeeds(piece.substr(firstLineEnd + 1), storage);
    if (rest.find("\n>From ") == npos) return rest;
    storage = replaceAll(rest, "\n>From ", "\nFrom ");
    return storage;
}

}  // namespace

std::string_view headerValue(const EmailHeaders& headers, const std::string& name) {
    auto it = headers.find(name);
    return it == headers.end() ? std::string_view() : std::string_view(it->second);
}

bool looksLikeEmail(std::string_view text) {
    // The first line is "From " or a header field: a name of printable
    // characters without spaces, then a colon.
    std::string_view first = text.substr(0, text.find_first_of("\r\n"));
    size_t colon = first.find(':');
    bool headerLine = colon != npos && colon > 0 &&
                      std::all_of(first.begin(), first.begin() + colon,
                                  [](char c) { return c > ' ' && c <= '~'; });
    if (!startsWith(first, "From ") && !headerLine) return false;
    std::string head = asciiLower(prefixCodePoints(text, 8000));
    auto has = [&](std::string_view s) { return head.find(s) != std::string::npos; };
    bool sender = startsWith(head, "from ") || has("\nfrom:") || startsWith(head, "from:");
    if (!sender || !has("date:")) return false;
    return has("\nsubject:") || has("\nto:");
}

void eachEmail(std::string_view text, const std::function<void(std::string_view)>& visit) {
    std::string storage;
    if (!startsWith(text, "From ")) return visit(lineFeeds(text, storage));
    // Cutting the raw text at "\nFrom " finds the same places as cutting a
    // CRLF-normalised copy would, as long as the CR before each cut is
    // dropped with it; each message is then normalised on its own.
    size_t start = 5;
    while (start != npos) {
        size_t cut = text.find("\nFrom ", start);
        std::string_view piece = text.substr(start, cut == npos ? npos : cut - start);
        if (cut != npos && !piece.empty() && piece.back() == '\r') piece.remove_suffix(1);
        std::string_view message = mailboxMessage(piece, storage);
        if (!message.empty()) visit(message);
        start = cut == npos ? npos : cut + 6;
    }
}

std::vector<std::string> emails(std::string_view text) {
    std::vector<std::string> out;
    eachEmail(text, [&](std::string_view m) { out.emplace_back(m); });
    return out;
}

std::pair<EmailHeaders, std::string_view> splitHeaderBlock(std::string_view message) {
    size_t blank = message.find("\n\n");
    std::string_view block = message.substr(0, blank);
    std::string_view body = blank == npos ? std::string_view() : message.substr(blank + 2);

    EmailHeaders headers;
    // Continuation lines go to the header named last, even when that line
    // was a discarded repeat: they then extend the first value kept.
    EmailHeaders::iterator current = headers.end();
    size_t start = 0;
    while (start <= block.size()) {
        size_t end = block.find('\n', start);
        if (end == npos) end = block.size();
        std::string_view line = block.substr(start, end - start);
        start = end + 1;
        if (startsWith(line, " ") || startsWith(line, "\t")) {
            if (current != headers.end()) current->second += " " + trimSpacesAndTabs(line);
            continue;
        }
        size_t colon = line.find(':');
        if (colon == npos) continue;
        current = headers
                      .try_emplace(asciiLower(line.substr(0, colon)),
                                   trimSpacesAndTabs(line.substr(colon + 1)))
                      .first;
    }
    return {std::move(headers), body};
}

std::pair<EmailHeaders, std::string> splitHeaders(std::string_view message) {
    std::string storage;
    auto [headers, body] = splitHeaderBlock(lineFeeds(message, storage));
    return {std::move(headers), std::string(body)};
}

std::string decodeHeader(std::string_view value) {
    if (value.find("=?") == npos) return std::string(value);
    static const Regex encodedWord("=\\?([^?]+)\\?([BbQq])\\?([^?]*)\\?=");
    icu::UnicodeString u = toUnicode(value);
    auto m = encodedWord.matcher(u);
    icu::UnicodeString out;
    int32_t copied = 0;
    UErrorCode status = U_ZERO_ERROR;
    // Replacing left to right into a new text gives what replacing from the
    // last match back would: the matches never overlap.
    while (m->find()) {
        int32_t start = m->start(status), end = m->end(status);
        out.append(u, copied, start - copied);
        copied = end;
        std::string payload = *groupText(*m, 3);
        std::optional<std::string> bytes;
        if (asciiLower(*groupText(*m, 2)) == "b")
            bytes = base64(payload);
        else
            bytes = quotedPrintable(replaceAll(payload, "_", " "));
        // The charset is not consulted: only UTF-8 words are decoded.
        if (bytes && isValidUtf8(*bytes))
            out.append(toUnicode(*bytes));
        else
            out.append(u, start, end - start);
    }
    out.append(u, copied, u.length() - copied);
    return removeAll(toUtf8(out), "?= =?");
}

std::optional<Instant> emailDate(std::string_view value) {
    static const Regex datePattern(
        "(\\d{1,2})\\s+([A-Za-z]{3})[a-z]*\\s+(\\d{4})\\s+(\\d{1,2}):(\\d{2})(?::(\\d{2}))?");
    icu::UnicodeString u = toUnicode(value);
    auto m = datePattern.matcher(u);
    if (!m->find()) return std::nullopt;
    std::string text = *groupText(*m, 1) + " " + *groupText(*m, 2) + " " + *groupText(*m, 3) + " " +
                       *groupText(*m, 4) + ":" + *groupText(*m, 5) + ":" +
                       groupText(*m, 6).value_or("00");
    return Calendar::parse(text, "d MMM yyyy H:mm:ss");
}

std::optional<Evidence> email(std::string_view message, const std::string& fileID,
                              int64_t position) {
    std::string storage;
    auto [headers, body] = splitHeaderBlock(lineFeeds(message, storage));
    auto date = emailDate(headerValue(headers, "date"));
    if (!date) return std::nullopt;
    // Headers should be ASCII; old mail programs wrote names in raw 8-bit,
    // nearly always ISO Latin-1.
    auto header = [&headers = headers](const std::string& name) {
        std::string_view value = headerValue(headers, name);
        return decodeHeader(isValidUtf8(value) ? std::string(value) : latin1ToUtf8(value));
    };
    std::string from = header("from"), to = header("to"), subject = header("subject");

    Evidence e;
    e.kind = ItemKind::email;
    e.date = *date;
    e.sender = from;
    e.text = plainText(headers, body);
    e.fileID = fileID;
    e.position = position;
    std::string& heading = e.detailsForWriting().heading;
    heading = "From: " + from;
    if (!to.empty()) heading += "\nTo: " + to;
    heading += "\nSubject: " + (subject.empty() ? std::string("(no subject)") : subject);
    return e;
}

}  // namespace kinfolio::Importer
