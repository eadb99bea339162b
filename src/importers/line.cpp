#include "importers/line.h"

#include <algorithm>
#include <map>

#include "model/calendar.h"
#include "model/text.h"

// LINE writes its export in the language of the app, and the phone app and
// the PC app lay the lines out differently:
//
//     phone:  午後3:41<TAB>Sam Lee<TAB>Hello        (the fields split by tabs)
//     PC:     15:41 Sam Lee Hello                  (the fields split by spaces)
//
// A file with any tab-separated message line is the phone app's, and only
// its tab-separated lines are messages: a line of a message that happens to
// begin with a time ("10:30 suits me") then stays part of that message.
//
// In a space-separated line the sender's name may hold spaces too, so the
// line is split at the longest known sender that begins it. The known
// senders are the name in the title line and the names learnt from the
// other lines. Lines that begin with the same first word are taken
// together, and the words they all begin with are a name (the words after a
// name vary from message to message, the name does not), leaving each line
// at least one word of text. When the word after those shared words splits
// the lines into parts of two or more lines each, the shared words only
// begin several names ("Kim Minji", "Kim Jisoo"), and each part is taken on
// its own in the same way. A first word that begins a single line names no
// one. A line that begins with no known sender continues the message before
// it; so does the only line of someone who wrote once and is not the title.
//
// System lines ("Sam Lee unsent a message.") are kept as notes: items
// without a sender.
namespace kinfolio::Importer {

namespace {

// A title line is "[LINE] " + before + the chat's name + after; the first
// row that fits gives the name.
struct TitleForm {
    std::string_view before, after;
};
constexpr TitleForm kTitleForms[] = {
    {"Chat history with ", ""},  // English: [LINE] Chat history with Sam Lee
    {"", "とのトーク履歴"},      // Japanese: [LINE] Sam Leeとのトーク履歴
    {"", "のトーク履歴"},        // Japanese, a group: [LINE] 家族のトーク履歴
    {"與", "的聊天記錄"},        // Traditional Chinese: [LINE] 與Sam Lee的聊天記錄
    {"与", "的聊天记录"},        // Simplified Chinese: [LINE] 与Sam Lee的聊天记录
    {"", "님과의 대화"},         // Korean: [LINE] Sam Lee님과의 대화
    {"ประวัติการแชทกับ ", ""},  // Thai: [LINE] ประวัติการแชทกับ Sam Lee
};

// The words for before and after noon, written before or after the time,
// with or without a space between.
struct DayPeriod {
    std::string_view am, pm;
};
constexpr DayPeriod kDayPeriods[] = {
    {"AM", "PM"},      // English, in any case: 9:07 PM, 9:07pm
    {"午前", "午後"},  // Japanese: 午前9:07, 午後04:52
    {"上午", "下午"},  // Chinese: 上午9:07, 下午04:52
    {"오전", "오후"},  // Korean: 오전 9:07, 오후04:52
};

// A system line is a name followed by one of these endings; a final "." or
// "。" does not count.
constexpr std::string_view kSystemEndings[] = {
    " unsent a message",                   // English: Sam Lee unsent a message.
    " joined the group",                   // English: Sam Lee joined the group.
    " left the group",                     // English: Sam Lee left the group.
    "がメッセージの送信を取り消しました",  // Japanese: Sam Leeがメッセージの送信を取り消しました
    "がグループに参加しました",    // Japanese: Sam Leeがグループに参加しました。
    "がグループを退会しました",    // Japanese: Sam Leeがグループを退会しました。
    "已收回訊息",                  // Chinese: Sam Lee已收回訊息
    "님이 메시지를 취소했습니다",  // Korean: Sam Lee님이 메시지를 취소했습니다
    " ยกเลิกข้อความแล้ว",  // Thai: Sam Lee ยกเลิกข้อความแล้ว
};

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

std::string titleName(std::string_view line) {
    std::string_view rest = line;
    if (startsWith(rest, "[LINE] ")) rest.remove_prefix(7);
    for (const TitleForm& form : kTitleForms)
        if (rest.size() >= form.before.size() + form.after.size() &&
            startsWith(rest, form.before) && endsWith(rest, form.after))
            return std::string(rest.substr(form.before.size(),
                                           rest.size() - form.before.size() - form.after.size()));
    return removeAll(line, "[LINE] ");
}

// The name in a system line such as "Sam Lee unsent a message.", or none.
std::optional<std::string> systemName(std::string_view text) {
    if (endsWith(text, "."))
        text.remove_suffix(1);
    else if (endsWith(text, "\u3002"))
        text.remove_suffix(3);
    for (std::string_view ending : kSystemEndings)
        if (text.size() > ending.size() && endsWith(text, ending))
            return std::string(text.substr(0, text.size() - ending.size()));
    return std::nullopt;
}

// A line that begins with a time. Tab-separated, it holds the sender and
// the text; space-separated, `text` holds everything after the time.
struct MessageLine {
    std::string clock;        // "9:07", or "9:07 PM" with a day-period word
    bool twelveHour = false;  // a day-period word was written
    bool tabbed = false;
    std::string sender, text;
};

std::optional<MessageLine> messageLine(const std::string& line) {
    static const std::string pattern = [] {
        std::string words;
        for (const DayPeriod& p : kDayPeriods)
            for (std::string_view w : {p.am, p.pm})
                words += (words.empty() ? "\\Q" : "|\\Q") + std::string(w) + "\\E";
        std::string period = "((?i:" + words + "))";
        return "^(?:" + period + "\\s?)?(\\d{1,2}:\\d{2})(?:\\s?" + period +
               ")?(?:\\t([^\\t]*)\\t?(.*)| +(\\S.*))$";
    }();
    static const Regex head(pattern.c_str());
    icu::UnicodeString u = toUnicode(line);
    auto m = head.matcher(u);
    UErrorCode status = U_ZERO_ERROR;
    if (!m->matches(status)) return std::nullopt;
    MessageLine r;
    r.clock = *groupText(*m, 2);
    auto period = groupText(*m, 1);
    if (!period) period = groupText(*m, 3);
    if (period) {
        bool pm = std::any_of(
            std::begin(kDayPeriods), std::end(kDayPeriods),
            [&](const DayPeriod& p) { return asciiLower(*period) == asciiLower(p.pm); });
        r.clock += pm ? " PM" : " AM";
        r.twelveHour = true;
    }
    if (auto sender = groupText(*m, 4)) {
        r.tabbed = true;
        r.sender = *sender;
        r.text = *groupText(*m, 5);
    } else {
        r.text = *groupText(*m, 6);
    }
    return r;
}

// The longest of the senders (sorted longest first) that begins the text,
// followed by a space or the end.
const std::string* senderAt(std::string_view text, const std::vector<std::string>& senders) {
    for (const std::string& s : senders)
        if (startsWith(text, s) && (text.size() == s.size() || text[s.size()] == ' ')) return &s;
    return nullptr;
}

using Words = std::vector<std::string_view>;

// Lines by their word at `index`; "" for a line with fewer words.
std::map<std::string_view, std::vector<const Words*>> byWord(const std::vector<const Words*>& lines,
                                                             size_t index) {
    std::map<std::string_view, std::vector<const Words*>> parts;
    for (const Words* w : lines)
        parts[index < w->size() ? (*w)[index] : std::string_view()].push_back(w);
    return parts;
}

// Adds the name that two or more lines begin with, or the names of each
// part when the next words split them into parts of two or more lines.
void addNames(const std::vector<const Words*>& lines, std::vector<std::string>& senders) {
    const Words& first = *lines[0];
    size_t shared = first.size(), fewest = first.size();
    for (const Words* w : lines) {
        shared = std::mismatch(first.begin(), first.begin() + shared, w->begin(), w->end()).first -
                 first.begin();
        fewest = std::min(fewest, w->size());
    }
    auto parts = byWord(lines, shared);
    if (parts.size() > 1 && std::all_of(parts.begin(), parts.end(),
                                        [](const auto& p) { return p.second.size() > 1; })) {
        for (const auto& [word, part] : parts)
            addNames(part, senders);
        return;
    }
    size_t n = std::max<size_t>(1, std::min(shared, fewest - 1));
    senders.push_back(join(std::vector<std::string>(first.begin(), first.begin() + n), " "));
}

// The senders of space-separated lines, learnt as the comment at the top of
// this file says, longest first.
std::vector<std::string> spaceSenders(const std::string& title,
                                      const std::vector<std::optional<MessageLine>>& lines) {
    std::vector<std::string> senders;
    if (!title.empty()) senders.push_back(title);
    std::vector<Words> unknown;
    for (const auto& l : lines) {
        if (!l || l->tabbed || systemName(l->text) || senderAt(l->text, senders)) continue;
        Words& words = unknown.emplace_back();
        for (size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
            end = l->text.find(' ', start);
            words.push_back(std::string_view(l->text).substr(start, end - start));
        }
    }
    std::vector<const Words*> all;
    for (const Words& w : unknown)
        all.push_back(&w);
    for (const auto& [firstWord, group] : byWord(all, 0))
        if (group.size() > 1) addNames(group, senders);
    std::stable_sort(
        senders.begin(), senders.end(),
        [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
    return senders;
}

// Fills in the sender and text of a message line; false when the line is
// no message but continues the one before.
bool readFields(MessageLine& l, const std::vector<std::string>& senders) {
    if (l.tabbed) {
        // The event stands in the only field, or after the sender's name.
        bool system =
            l.text.empty() ? systemName(l.sender).has_value() : systemName(l.text) == l.sender;
        if (system) {
            if (l.text.empty()) l.text = l.sender;
            l.sender.clear();
        }
        return true;
    }
    const std::string* sender = senderAt(l.text, senders);
    auto name = systemName(l.text);
    if (name && (!sender || *name == *sender)) return true;
    if (!sender) return false;
    l.sender = *sender;
    l.text.erase(0, std::min(l.text.size(), sender->size() + 1));
    return true;
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
        "(?:\\s*[(（]?[A-Za-z\\p{Han}\\p{Hangul}\\p{Thai}]{1,12}\\.?[)）]?)?\\s*$");
    icu::UnicodeString u = toUnicode(line);
    auto m = dayHeader.matcher(u);
    UErrorCode status = U_ZERO_ERROR;
    if (!m->matches(status)) return std::nullopt;
    // \d takes digits of every script; the expression bounds their number.
    auto number = [&](int n) { return static_cast<int>(decimalValue(*groupText(*m, n))); };
    return Calendar::makeDate(number(1), number(2), number(3));
}

LineChat line(std::string_view text, const std::string& fileID) {
    std::vector<std::string> lines = splitLines(text);
    LineChat chat;
    const SharedText sharedID(fileID);
    size_t first = 0;
    if (!lines.empty() && startsWith(lines[0], "[LINE]")) {
        chat.title = titleName(lines[0]);
        first = 1;
    }
    std::vector<std::optional<MessageLine>> messages(lines.size());
    bool tabbed = false;
    for (size_t i = first; i < lines.size(); ++i) {
        messages[i] = messageLine(lines[i]);
        tabbed = tabbed || (messages[i] && messages[i]->tabbed);
    }
    std::vector<std::string> senders = spaceSenders(chat.title, messages);
    std::optional<Instant> day;
    for (size_t i = first; i < lines.size(); ++i) {
        const std::string& l = lines[i];
        int64_t n = static_cast<int64_t>(i) + 1;
        if (chat.items.empty() && startsWith(l, "Saved on:")) continue;
        if (auto d = lineDay(l)) {
            day = d;
            continue;
        }
        std::optional<MessageLine>& m = messages[i];
        if (day && m && m->tabbed == tabbed && readFields(*m, senders)) {
            auto time = Calendar::parse(m->clock, m->twelveHour ? "h:mm a" : "H:mm");
            if (!time)
                throw EvidenceError::invalid("Could not read the time on line " +
                                             std::to_string(n) + ".");
            Calendar::CivilTime t = Calendar::civil(*time);
            Evidence e;
            e.date = *day + t.hour * 3600 + t.minute * 60;
            e.sender = std::move(m->sender);
            e.text = std::move(m->text);
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
