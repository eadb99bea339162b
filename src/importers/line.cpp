#include "importers/line.h"

#include <cctype>

#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

std::vector<std::string> splitLines(std::string_view text) {
    std::string s = removeAll(text, "\uFEFF");
    s = replaceAll(s, "\r\n", "\n");
    s = replaceAll(s, "\r", "\n");
    std::vector<std::string> lines;
    size_t start = 0;
    while (true) {
        size_t end = s.find('\n', start);
        if (end == std::string::npos) {
            lines.push_back(s.substr(start));
            return lines;
        }
        lines.push_back(s.substr(start, end - start));
        start = end + 1;
    }
}

// Seconds of a call from the first run of digits and colons that holds a
// colon ("0:45:10", "3:05"); none when the notice gives no length (a missed
// call). A lone colon, as in "Call time: 3:05", is punctuation, not a length.
std::optional<double> callLength(std::string_view text) {
    auto isRunChar = [](char c) { return (c >= '0' && c <= '9') || c == ':'; };
    size_t i = 0;
    while (i < text.size()) {
        if (!isRunChar(text[i])) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < text.size() && isRunChar(text[end]))
            ++end;
        std::string_view run = text.substr(i, end - i);
        bool hasColon = run.find(':') != std::string_view::npos;
        bool hasDigit = run.find_first_not_of(':') != std::string_view::npos;
        if (hasColon && hasDigit) {
            double value = 0, part = 0;
            for (char c : run) {
                if (c == ':') {
                    value = value * 60 + part;
                    part = 0;
                } else {
                    part = part * 10 + (c - '0');
                }
            }
            return value * 60 + part;
        }
        i = end;
    }
    return std::nullopt;
}

bool isCallNotice(const std::string& text) {
    return startsWith(text, "\u260E") || startsWith(asciiLower(text), "call time");
}

}  // namespace

bool looksLikeLine(std::string_view text) {
    if (startsWith(text, "[LINE]")) return true;
    return lineDay(text.substr(0, text.find_first_of("\r\n"))).has_value();
}

std::optional<Instant> lineDay(std::string_view line) {
    static const Regex dayHeader(
        "^(?:[A-Za-z]{3,9},?\\s+)?(\\d{4})[/.\\-](\\d{1,2})[/.\\-](\\d{1,2})"
        "(?:\\s*\\(?[A-Za-z\\p{Han}]{1,9}\\)?)?\\s*$");
    icu::UnicodeString u = toUnicode(line);
    auto m = dayHeader.matcher(u);
    UErrorCode status = U_ZERO_ERROR;
    if (!m->matches(status)) return std::nullopt;
    // \d takes digits of every script; the expression bounds their number.
    auto number = [&](int n) { return static_cast<int>(decimalValue(*groupText(*m, n))); };
    return Calendar::makeDate(number(1), number(2), number(3));
}

LineChat line(std::string_view text, const std::string& fileID) {
    static const Regex lineMessage("^(\\d{1,2}:\\d{2})(?:\\s?([AaPp][Mm]))?\\t([^\\t]*)\\t?(.*)$");
    std::vector<std::string> lines = splitLines(text);
    LineChat chat;
    const SharedText sharedID(fileID);
    size_t first = 0;
    if (!lines.empty() && startsWith(lines[0], "[LINE]")) {
        chat.title = removeAll(removeAll(lines[0], "[LINE] Chat history with "), "[LINE] ");
        first = 1;
    }
    std::optional<Instant> day;
    for (size_t i = first; i < lines.size(); ++i) {
        const std::string& l = lines[i];
        int64_t n = static_cast<int64_t>(i) + 1;
        if (chat.items.empty() && startsWith(l, "Saved on:")) continue;
        if (auto d = lineDay(l)) {
            day = d;
            continue;
        }
        if (day) {
            icu::UnicodeString u = toUnicode(l);
            auto m = lineMessage.matcher(u);
            UErrorCode status = U_ZERO_ERROR;
            if (m->matches(status)) {
                std::string clock = *groupText(*m, 1);
                auto marker = groupText(*m, 2);
                if (marker) {
                    clock += ' ';
                    for (char c : *marker)
                        clock += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
                }
                auto time = Calendar::parse(clock, marker ? "h:mm a" : "H:mm");
                if (!time)
                    throw EvidenceError::invalid("Could not read the time on line " +
                                                 std::to_string(n) + ".");
                Calendar::CivilTime t = Calendar::civil(*time);
                Evidence e;
                e.date = *day + t.hour * 3600 + t.minute * 60;
                e.sender = *groupText(*m, 3);
                e.text = *groupText(*m, 4);
                e.fileID = sharedID;
                e.position = n;
                if (isCallNotice(e.text)) {
                    e.kind = ItemKind::call;
                    auto length = callLength(e.text);
                    e.text = length ? "Call" : "Missed call";
                    e.detailsForWriting().duration = length.value_or(0);
                }
                chat.items.push_back(std::move(e));
                continue;
            }
        }
        if (!l.empty() && !chat.items.empty()) chat.items.back().text += "\n" + l;
    }
    for (auto& item : chat.items) {
        std::string& t = item.text;
        if (t.find('\n') != std::string::npos && t.size() >= 2 && t.front() == '"' &&
            t.back() == '"')
            t = t.substr(1, t.size() - 2);
    }
    if (chat.items.empty()) throw EvidenceError::invalid("No LINE messages found.");
    return chat;
}

}  // namespace kinfolio::Importer
