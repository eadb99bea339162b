#include "importers/kakaotalk.h"

#include <algorithm>

#include "importers/text_dates.h"
#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::Importer {

namespace {

// One way KakaoTalk writes a line, matched as a whole by an ICU expression
// with named groups: year, month (a number or an English name) and day; hour,
// minute and marker (AM/PM, 오전/오후); then either rest ("Sender : text", or
// a system line) or sender and text. A line with a date and no rest is a day
// line. No two forms match the same line, so they may be tried in any order.
struct Form {
    std::string_view name;     // "Korean, iOS"
    std::string_view example;  // a line written this way
    const char* pattern;
};

const std::vector<Form>& forms() {
    static const std::vector<Form> table = {
        {"English, Android", "6:12pm, March 4, 2023, Sam Lee : Hello",
         R"(^(?<hour>\d{1,2}):(?<minute>\d{2}) ?(?<marker>[AaPp][Mm]), (?<month>[A-Za-z]{3,9})\.? )"
         R"((?<day>\d{1,2}), (?<year>\d{4})(?:, (?<rest>.*))?$)"},
        {"English, iOS", "Mar 4, 2023, 6:12 PM, Sam Lee : Hello",
         R"(^(?<month>[A-Za-z]{3,9})\.? (?<day>\d{1,2}), (?<year>\d{4})(?:,| at) )"
         R"((?<hour>\d{1,2}):(?<minute>\d{2})(?: ?(?<marker>[AaPp][Mm]))?(?:, (?<rest>.*))?$)"},
        {"Korean, Android", "2023년 3월 4일 오후 6:12, Sam Lee : 안녕",
         R"(^(?<year>\d{4})년 (?<month>\d{1,2})월 (?<day>\d{1,2})일 (?:(?<marker>오전|오후) )?)"
         R"((?<hour>\d{1,2}):(?<minute>\d{2})(?:, (?<rest>.*))?$)"},
        {"Korean, iOS", "2023. 3. 4. 오후 6:12, Sam Lee : 안녕",
         R"(^(?<year>\d{4})\. (?<month>\d{1,2})\. (?<day>\d{1,2})\.? (?:(?<marker>오전|오후) )?)"
         R"((?<hour>\d{1,2}):(?<minute>\d{2})(?:, (?<rest>.*))?$)"},
        {"Windows, English", "[Sam Lee] [6:12 PM] Hello",
         R"(^\[(?<sender>[^\]]+)\] \[(?<hour>\d{1,2}):(?<minute>\d{2}))"
         R"((?: ?(?<marker>[AaPp][Mm]))?\](?: (?<text>.*))?$)"},
        {"Windows, Korean", "[Sam Lee] [오후 6:12] 안녕",
         R"(^\[(?<sender>[^\]]+)\] \[(?<marker>오전|오후) (?<hour>\d{1,2}):(?<minute>\d{2})\])"
         R"((?: (?<text>.*))?$)"},
        {"English day", "Saturday, March 4, 2023",
         R"(^(?:[A-Za-z]+, )?(?<month>[A-Za-z]{3,9})\.? (?<day>\d{1,2}), (?<year>\d{4})$)"},
        {"Korean day", "2023년 3월 4일 토요일",
         R"(^(?<year>\d{4})년 (?<month>\d{1,2})월 (?<day>\d{1,2})일(?: [월화수목금토일]요일)?$)"},
    };
    return table;
}

// The text of a named group; none when the form has no such group or the
// group took no part in the match.
std::optional<std::string> field(icu::RegexMatcher& m, const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t group = m.pattern().groupNumberFromName(name, -1, status);
    if (U_FAILURE(status)) return std::nullopt;
    return groupText(m, group);
}

std::optional<std::string> titleOf(std::string_view line) {
    static const Regex english("^KakaoTalk Chats? with (?<title>.+)$");
    static const Regex korean("^(?<title>.+?) ?님과 카카오톡 대화$");
    icu::UnicodeString u = toUnicode(line);
    for (const Regex* title : {&english, &korean}) {
        auto m = title->matcher(u);
        UErrorCode status = U_ZERO_ERROR;
        if (m->matches(status)) return field(*m, "title");
    }
    return std::nullopt;
}

bool isSavedLine(std::string_view line) {
    return startsWith(line, "Date Saved") || startsWith(line, "저장한 날짜");
}

std::string_view withoutByteOrderMark(std::string_view text) {
    if (startsWith(text, "\uFEFF")) text.remove_prefix(3);
    return text;
}

// The Windows app writes day lines between dashes:
// "--------------- Saturday, March 4, 2023 ---------------".
std::optional<std::string_view> betweenDashes(std::string_view line) {
    if (!startsWith(line, "---") || !endsWith(line, "---")) return std::nullopt;
    size_t start = line.find_first_not_of("- "), end = line.find_last_not_of("- ");
    if (start == std::string_view::npos) return std::nullopt;
    return line.substr(start, end - start + 1);
}

// The Windows app writes joins, invitations and leavings as lines of their
// own, without a time.
bool isSystemLine(std::string_view line) {
    static const Regex system(
        "^.+(?: joined this chatroom| left this chatroom| invited .+"
        "|님이 들어왔습니다|님이 나갔습니다|님을 초대했습니다|님을 초대하였습니다)\\.$");
    return system.matchesWhole(toUnicode(line));
}

EvidenceError unreadableDate(int64_t n) {
    return EvidenceError::invalid("Could not read the date on line " + std::to_string(n) + ".");
}

int number(const std::string& digits) {
    return static_cast<int>(decimalValue(digits));
}

// What the timestamp of a matched line says: the day it names, if it names
// one, and the time of day in seconds, if it gives one.
struct Stamp {
    std::optional<Instant> day;
    std::optional<double> seconds;
};

Stamp stampOf(icu::RegexMatcher& m, int64_t n) {
    Stamp stamp;
    if (auto year = field(m, "year")) {
        std::string month = *field(m, "month");
        int monthValue = decimalValue(month) > 0 ? number(month) : monthNumber(month);
        stamp.day = Calendar::makeDate(number(*year), monthValue, number(*field(m, "day")));
        if (!stamp.day) throw unreadableDate(n);
    }
    if (auto hourText = field(m, "hour")) {
        int hour = number(*hourText), minute = number(*field(m, "minute"));
        auto marker = field(m, "marker");
        if (marker) {
            if (hour < 1 || hour > 12) throw unreadableDate(n);
            bool afternoon = asciiLower(*marker) == "pm" || *marker == "오후";
            hour = hour % 12 + (afternoon ? 12 : 0);
        }
        if (hour > 23 || minute > 59) throw unreadableDate(n);
        stamp.seconds = hour * 3600.0 + minute * 60.0;
    }
    return stamp;
}

// Tries every form on a line, the one that matched last time first.
class FormMatcher {
public:
    FormMatcher() {
        static const std::vector<Regex> compiled = [] {
            std::vector<Regex> regexes;
            for (const auto& form : forms())
                regexes.emplace_back(form.pattern);
            return regexes;
        }();
        for (const auto& regex : compiled)
            matchers_.push_back(regex.matcher(line_));
    }

    // The matcher of the form that reads the whole line, or null.
    icu::RegexMatcher* match(std::string_view line) {
        line_ = toUnicode(line);
        for (size_t k = 0; k < matchers_.size(); ++k) {
            size_t i = (last_ + k) % matchers_.size();
            UErrorCode status = U_ZERO_ERROR;
            matchers_[i]->reset(line_);
            if (matchers_[i]->matches(status) && U_SUCCESS(status)) {
                last_ = i;
                return matchers_[i].get();
            }
        }
        return nullptr;
    }

private:
    icu::UnicodeString line_;  // declared first: the matchers read it
    std::vector<std::unique_ptr<icu::RegexMatcher>> matchers_;
    size_t last_ = 0;
};

}  // namespace

bool looksLikeKakaoTalk(std::string_view text) {
    std::vector<std::string_view> lines = textLines(withoutByteOrderMark(text).substr(0, 4000));
    if (lines.empty()) return false;
    return titleOf(lines[0]) || isSavedLine(lines[0]) ||
           (lines.size() > 1 && isSavedLine(lines[1]));
}

bool looksLikeKakaoTalkCsv(std::string_view text) {
    text = withoutByteOrderMark(text);
    return text.substr(0, text.find_first_of("\r\n")) == "Date,User,Message";
}

KakaoTalkChat kakaoTalk(std::string_view text, const std::string& fileID) {
    std::vector<std::string_view> lines = textLines(withoutByteOrderMark(text));
    KakaoTalkChat chat;
    const SharedText sharedID(fileID);
    FormMatcher forms;
    std::optional<Instant> day;
    bool windows = false;  // day lines between dashes: system lines stand alone
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string_view l = lines[i];
        int64_t n = static_cast<int64_t>(i) + 1;
        if (i == 0) {
            if (auto title = titleOf(l)) {
                chat.title = *title;
                continue;
            }
        }
        if (trimWhitespace(l).empty() || (chat.items.empty() && isSavedLine(l))) continue;

        auto dashed = betweenDashes(l);
        if (icu::RegexMatcher* m = forms.match(dashed ? *dashed : l)) {
            Stamp stamp = stampOf(*m, n);
            auto rest = field(*m, "rest"), sender = field(*m, "sender");
            if (!rest && !sender && stamp.day) {
                day = stamp.day;
                windows = windows || dashed;
                continue;
            }
            if (!dashed) {
                if (stamp.day) day = stamp.day;
                if (!day) throw unreadableDate(n);
                Evidence e;
                e.date = *day + stamp.seconds.value_or(0);
                if (sender) {
                    e.sender = *sender;
                    e.text = field(*m, "text").value_or("");
                } else if (size_t colon = rest->find(" : "); colon != std::string::npos) {
                    e.sender = rest->substr(0, colon);
                    e.text = rest->substr(colon + 3);
                } else {
                    e.text = *rest;  // a join, an invitation or a leaving
                }
                e.fileID = sharedID;
                e.position = n;
                chat.items.push_back(std::move(e));
                continue;
            }
        }
        if (windows && day && isSystemLine(l)) {
            // It happened after the message before it, on the current day.
            Evidence e;
            e.date = chat.items.empty() ? *day : std::max(*day, chat.items.back().date);
            e.text = std::string(l);
            e.fileID = sharedID;
            e.position = n;
            chat.items.push_back(std::move(e));
            continue;
        }
        if (!chat.items.empty()) chat.items.back().text += "\n" + std::string(l);
    }
    bool anyMessage = std::any_of(chat.items.begin(), chat.items.end(),
                                  [](const Evidence& e) { return !e.isSystem(); });
    if (!anyMessage) throw EvidenceError::invalid("No KakaoTalk messages found.");
    return chat;
}

}  // namespace kinfolio::Importer
