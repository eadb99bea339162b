#include "importers/whatsapp_forms.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <utility>

#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::Importer {

const std::vector<WhatsAppForm>& whatsappForms() {
    // Day-first rows come before year-first ones, and those take four-digit
    // years only, so that "07/03/23" is never read as the year 2007.
    static const std::vector<WhatsAppForm> forms = {
        {"12-hour clock with any day-period word (Spanish, Arabic, Greek, Tamil, Malay)",
         "d/M/y, h:mm a", "28/3/2025, 9:29 p. m."},
        {"marker before the time (Hong Kong Chinese)", "d/M/y a h:mm", "7/3/2023 下午6:05"},
        {"24-hour clock after an Arabic comma (Arabic, Urdu, Persian)", "d/M/y, H:mm",
         "٧‏/٣‏/٢٠٢٣، ١٨:٠٥"},
        {"time with dots (Indonesian)", "d/M/y H.mm", "07/03/23 18.05.42"},
        {"French, older phones", "d/M/y 'à' H:mm", "07/03/2023 à 18:05"},
        {"dashes with seconds or a two-digit year (Dutch)", "d-M-y, H:mm", "21-03-23 07:42:19"},
        {"dashes, 12-hour clock (Dutch, English)", "d-M-y, h:mm a", "21-03-2023, 07:42:19 PM"},
        {"dots, two-digit year or in either order (German, US phones)", "d.M.y, H:mm",
         "03.28.23, 19:42:19"},
        {"dots with a time in dots (Danish, Norwegian)", "d.M.y, H.mm", "07.03.2023, 18.05"},
        {"dots, 12-hour clock", "d.M.y, h:mm a", "07.03.23, 6:05 PM"},
        {"Finnish", "d.M.y 'klo' H.mm", "7.3.2023 klo 18.05.42"},
        {"French, Swiss phones", "d.M.y 'à' H:mm", "02.05.18 à 18:00"},
        {"year first, 24-hour clock (Japanese, Chinese, South African English)", "yyyy/M/d, H:mm",
         "2023/03/07, 18:05"},
        {"year first, 12-hour clock", "yyyy/M/d, h:mm a", "2022/09/18 8:12:40 p. m."},
        {"year first, marker before the time (Chinese, Japanese)", "yyyy/M/d a h:mm",
         "2023/3/7 下午6:05"},
        {"ISO date, 12-hour clock (Canadian English)", "yyyy-M-d, h:mm a", "2022-11-05, 9:14 PM"},
        {"year first with dots", "yyyy.M.d, H:mm", "2023.03.07 18:05"},
        {"year first with dots and spaces (Korean, Hungarian)", "yyyy. M. d. H:mm",
         "2023. 3. 7. 18:05"},
        {"Korean, 12-hour clock", "yyyy. M. d. a h:mm", "2023. 3. 7. 오후 6:05"},
        {"Canadian French", "yyyy-M-d H 'h' mm", "2023-03-07 18 h 05"},
    };
    return forms;
}

namespace {

// The words for AM and PM, beside the Latin "AM", "a.m." and "a. m." that
// are read in every spelling.
struct DayPeriod {
    std::string_view word;
    bool pm;
};
constexpr std::array<DayPeriod, 28> kDayPeriods = {{
    {"午前", false},    {"午後", true},     // Japanese
    {"上午", false},    {"下午", true},     // Chinese
    {"오전", false},    {"오후", true},     // Korean
    {"ص", false},       {"م", true},        // Arabic, Urdu
    {"ق.ظ.", false},    {"ب.ظ.", true},     // Persian
    {"पूर्वाह्न", false},  {"अपराह्न", true},   // Hindi
    {"म.पू.", false},    {"म.उ.", true},     // Marathi
    {"পূর্বাহ্ণ", false},  {"অপরাহ্ণ", true},   // Bengali
    {"முற்பகல்", false},  {"பிற்பகல்", true},   // Tamil
    {"ก่อนเที่ยง", false}, {"หลังเที่ยง", true},  // Thai
    {"π.μ.", false},    {"μ.μ.", true},     // Greek
    {"sa", false},      {"ch", true},       // Vietnamese
    {"ÖÖ", false},      {"ÖS", true},       // Turkish
    {"pg", false},      {"ptg", true},      // Malay
}};

bool isBidiMark(UChar32 c) {
    return c == 0x200E || c == 0x200F || c == 0x061C || c == 0xFEFF ||
           (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool isSpace(UChar32 c) {
    return c == ' ' || c == '\t' || c == 0xA0 || c == 0x202F || (c >= 0x2000 && c <= 0x200A);
}

// The stamp with digits of every script written in ASCII, direction marks
// dropped, and every run of spaces of any kind written as one space.
std::optional<std::string> plainStamp(std::string_view s) {
    std::string out;
    bool space = false;
    int32_t i = 0, end = static_cast<int32_t>(s.size());
    while (i < end) {
        int32_t start = i;
        UChar32 c;
        U8_NEXT(reinterpret_cast<const uint8_t*>(s.data()), i, end, c);
        if (c < 0) return std::nullopt;
        if (isBidiMark(c)) continue;
        if (isSpace(c)) {
            space = !out.empty();
            continue;
        }
        if (space) out += ' ';
        space = false;
        if (u_isdigit(c) && u_charDigitValue(c) >= 0)
            out += static_cast<char>('0' + u_charDigitValue(c));
        else
            out.append(s.substr(start, i - start));
    }
    return out;
}

// A timestamp matched against one form: the numbers as written.
struct Reading {
    int year = -1, day = -1, month = -1, hour = -1, minute = -1, second = 0;
    bool twoDigitYear = false, yearFirst = false, twelveHour = false;
    int period = -1;  // 0 AM, 1 PM
};

class Matcher {
public:
    Matcher(std::string_view text, std::string_view pattern) : t_(text), p_(pattern) {}

    std::optional<Reading> run() {
        while (p_.size() > pi_) {
            if (!step()) return std::nullopt;
        }
        if (ti_ != t_.size()) return std::nullopt;
        return r_;
    }

private:
    std::string_view t_, p_;
    size_t ti_ = 0, pi_ = 0;
    Reading r_;
    char beforeMinutes_ = 0;

    // A run of min..max ASCII digits that no digit follows.
    bool number(size_t min, size_t max, int& value) {
        size_t n = 0;
        value = 0;
        while (ti_ + n < t_.size() && n <= max && t_[ti_ + n] >= '0' && t_[ti_ + n] <= '9')
            value = value * 10 + (t_[ti_ + n++] - '0');
        if (n < min || n > max) return false;
        ti_ += n;
        return true;
    }

    bool isDigitAt(size_t i) const { return i < t_.size() && t_[i] >= '0' && t_[i] <= '9'; }

    void skipSpace() {
        if (ti_ < t_.size() && t_[ti_] == ' ') ++ti_;
    }

    bool dayPeriod() {
        skipSpace();
        size_t start = ti_;
        // Latin: a or p, an optional dot and space, m, an optional dot.
        if (ti_ < t_.size() && std::string_view("aApP").find(t_[ti_]) != std::string_view::npos) {
            bool pm = t_[ti_] == 'p' || t_[ti_] == 'P';
            size_t i = ti_ + 1;
            if (i < t_.size() && t_[i] == '.') ++i;
            if (i < t_.size() && t_[i] == ' ') ++i;
            if (i < t_.size() && (t_[i] == 'm' || t_[i] == 'M')) {
                ++i;
                if (i < t_.size() && t_[i] == '.') ++i;
                if (endsWord(i)) {
                    ti_ = i;
                    r_.period = pm;
                    return skipSpace(), true;
                }
            }
        }
        std::string lower = asciiLower(t_.substr(start));
        for (const auto& p : kDayPeriods) {
            if (startsWith(lower, asciiLower(p.word)) && endsWord(start + p.word.size())) {
                ti_ = start + p.word.size();
                r_.period = p.pm;
                return skipSpace(), true;
            }
        }
        return false;
    }

    bool endsWord(size_t i) const { return i == t_.size() || t_[i] == ' ' || isDigitAt(i); }

    bool step() {
        char c = p_[pi_];
        size_t run = std::min(p_.find_first_not_of(c, pi_), p_.size()) - pi_;
        switch (c) {
            case 'y': {
                pi_ += run;
                if (r_.day < 0 && r_.month < 0) r_.yearFirst = true;
                size_t before = ti_;
                if (!number(run == 4 ? 4 : 2, run == 2 ? 2 : 4, r_.year)) return false;
                r_.twoDigitYear = ti_ - before == 2;
                return ti_ - before != 3;
            }
            case 'd':
                return ++pi_, number(1, 2, r_.day);
            case 'M':
                return ++pi_, number(1, 2, r_.month);
            case 'H':
            case 'h':
                r_.twelveHour = c == 'h';
                return ++pi_, number(1, 2, r_.hour);
            case 'm':
                pi_ += run;
                if (!number(2, 2, r_.minute)) return false;
                // Seconds follow with the separator of the minutes.
                if ((beforeMinutes_ == ':' || beforeMinutes_ == '.') && ti_ < t_.size() &&
                    t_[ti_] == beforeMinutes_ && isDigitAt(ti_ + 1)) {
                    ++ti_;
                    return number(2, 2, r_.second);
                }
                return true;
            case 'a':
                ++pi_;
                if (pi_ < p_.size() && p_[pi_] == ' ') ++pi_;
                return dayPeriod();
            case ',':
                ++pi_;
                for (std::string_view comma : {",", "\u060C", "\uFF0C"})
                    if (t_.substr(ti_, comma.size()) == comma) {
                        ti_ += comma.size();
                        break;
                    }
                return true;
            case ' ':
                ++pi_;
                // The spaces around a day-period word are optional.
                if (pi_ < p_.size() && p_[pi_] == 'a') return true;
                if (ti_ < t_.size() && t_[ti_] == ' ') return ++ti_, true;
                return false;
            case '\'': {
                size_t close = p_.find('\'', pi_ + 1);
                std::string_view literal = p_.substr(pi_ + 1, close - pi_ - 1);
                pi_ = close + 1;
                if (t_.substr(ti_, literal.size()) != literal) return false;
                ti_ += literal.size();
                return true;
            }
            default:
                ++pi_;
                beforeMinutes_ = c;
                if (ti_ >= t_.size() || t_[ti_] != c) return false;
                ++ti_;
                return true;
        }
    }
};

std::optional<Instant> instantOf(const Reading& r, DateOrder order) {
    int year = r.twoDigitYear ? Calendar::fullYear(r.year) : r.year;
    int day = r.day, month = r.month;
    if (!r.yearFirst && order == DateOrder::monthFirst) std::swap(day, month);
    int hour = r.hour;
    if (r.twelveHour) {
        if (r.period < 0 || hour > 12) return std::nullopt;
        hour = hour % 12 + (r.period == 1 ? 12 : 0);
    } else if (hour > 23) {
        return std::nullopt;
    }
    if (month < 1 || month > 12 || day < 1 || r.minute > 59 || r.second > 59) return std::nullopt;
    return Calendar::makeDate(year, month, day, hour, r.minute, r.second);
}

}  // namespace

namespace {

std::optional<std::pair<size_t, Instant>> readForm(std::string_view stamp, DateOrder order) {
    auto plain = plainStamp(stamp);
    if (!plain || plain->empty()) return std::nullopt;
    const auto& forms = whatsappForms();
    for (size_t i = 0; i < forms.size(); ++i)
        if (auto r = Matcher(*plain, forms[i].pattern).run())
            if (auto t = instantOf(*r, order)) return std::pair{i, *t};
    return std::nullopt;
}

}  // namespace

std::optional<size_t> formOf(std::string_view stamp, DateOrder order) {
    if (auto read = readForm(stamp, order)) return read->first;
    return std::nullopt;
}

std::optional<Instant> formTimestamp(std::string_view stamp, DateOrder order) {
    if (auto read = readForm(stamp, order)) return read->second;
    return std::nullopt;
}

namespace {

// Where a timestamp ends and the rest of the line begins: after "]" on an
// iPhone line, after " - " (or an en dash) on an Android line. Timestamps
// are short, so only the start of the line is searched.
constexpr size_t kLongestStamp = 80;

// Whether the line starts with a digit of any script, after the direction
// marks that right-to-left exports put first.
bool startsWithDigit(std::string_view line) {
    int32_t i = 0, end = static_cast<int32_t>(std::min(line.size(), size_t{40}));
    UChar32 c = 0;
    do {
        U8_NEXT(reinterpret_cast<const uint8_t*>(line.data()), i, end, c);
    } while (c >= 0 && isBidiMark(c) && i < end);
    return c >= 0 && u_isdigit(c);
}

std::string_view afterSpaces(std::string_view s) {
    while (!s.empty()) {
        if (s[0] == ' ' || s[0] == '\t') {
            s.remove_prefix(1);
        } else if (startsWith(s, "\u00A0")) {
            s.remove_prefix(2);
        } else if (startsWith(s, "\u202F")) {
            s.remove_prefix(3);
        } else {
            break;
        }
    }
    return s;
}

bool endsWithSpace(std::string_view s) {
    return endsWith(s, " ") || endsWith(s, "\t") || endsWith(s, "\u00A0") || endsWith(s, "\u202F");
}

}  // namespace

std::optional<FormLine> formLine(std::string_view line, DateOrder order) {
    std::string_view stamp, rest;
    if (startsWith(line, "[")) {
        size_t close = line.find(']');
        if (close == std::string_view::npos || close > kLongestStamp) return std::nullopt;
        stamp = line.substr(1, close - 1);
        rest = afterSpaces(line.substr(close + 1));
    } else {
        if (!startsWithDigit(line)) return std::nullopt;
        std::string_view head = line.substr(0, kLongestStamp);
        size_t dash = 0;
        while (true) {
            dash = head.find_first_of("-\xE2", dash);
            if (dash == std::string_view::npos) return std::nullopt;
            size_t width = head[dash] == '-' ? 1 : 3;
            if ((width == 1 || head.substr(dash, 3) == "\u2013") &&
                endsWithSpace(head.substr(0, dash)))
                break;
            dash += 1;
        }
        stamp = line.substr(0, dash);
        rest = afterSpaces(line.substr(dash + (line[dash] == '-' ? 1 : 3)));
    }
    auto date = formTimestamp(stamp, order);
    if (!date) return std::nullopt;
    return FormLine{*date, std::string(rest)};
}

bool isFormLine(std::string_view line) {
    return formLine(line, DateOrder::dayFirst) || formLine(line, DateOrder::monthFirst);
}

}  // namespace kinfolio::Importer
