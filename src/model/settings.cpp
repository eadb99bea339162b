#include "model/settings.h"

#include <unicode/timezone.h>

#include <array>
#include <charconv>
#include <chrono>
#include <memory>

#include "model/calendar.h"

namespace kinfolio {

namespace {

template <typename E, size_t N>
std::optional<E> fromRaw(const std::array<std::string_view, N>& names, std::string_view raw) {
    for (size_t i = 0; i < N; ++i)
        if (names[i] == raw) return static_cast<E>(i);
    return std::nullopt;
}

constexpr std::array<std::string_view, 2> kPaperRaw = {"a4", "letter"};
constexpr std::array<std::string_view, 2> kPaperNames = {"A4", "US Letter"};
constexpr std::array<std::string_view, 2> kArrangementRaw = {"byDate", "byType"};
constexpr std::array<std::string_view, 2> kArrangementNames = {"Timeline", "Type of evidence"};
constexpr std::array<std::string_view, 3> kDateOrderRaw = {"automatic", "dayFirst", "monthFirst"};
constexpr std::array<std::string_view, 3> kDateOrderNames = {"Automatic", "Day / Month",
                                                             "Month / Day"};

std::string quoted(std::string_view key) {
    return "\u201c" + std::string(key) + "\u201d";
}

[[noreturn]] void wrongType(std::string_view key, std::string_view what) {
    throw EvidenceError::invalid("The setting " + quoted(key) + " must be " + std::string(what) +
                                 ".");
}

std::string jsonString(const Json& v, std::string_view key) {
    if (!v.is_string()) wrongType(key, "text");
    return v.get<std::string>();
}
bool jsonBool(const Json& v, std::string_view key) {
    if (!v.is_boolean()) wrongType(key, "true or false");
    return v.get<bool>();
}
double jsonNumber(const Json& v, std::string_view key) {
    if (!v.is_number()) wrongType(key, "a number of seconds since 2001-01-01");
    return v.get<double>();
}
int jsonInt(const Json& v, std::string_view key) {
    if (!v.is_number_integer()) wrongType(key, "a whole number");
    auto n = v.get<int64_t>();
    if (n < 0 || n > 1000000) wrongType(key, "a whole number from 0 to 1000000");
    return static_cast<int>(n);
}
std::set<std::string> jsonSet(const Json& v, std::string_view key) {
    if (!v.is_array()) wrongType(key, "a list of texts");
    std::set<std::string> result;
    for (const auto& e : v) {
        if (!e.is_string()) wrongType(key, "a list of texts");
        result.insert(e.get<std::string>());
    }
    return result;
}
template <typename E, size_t N>
E jsonEnum(const Json& v, std::string_view key, const std::array<std::string_view, N>& names) {
    std::string allowed;
    for (auto n : names)
        allowed += (allowed.empty() ? "" : " or ") + std::string(n);
    if (!v.is_string()) wrongType(key, allowed);
    auto e = fromRaw<E>(names, v.get<std::string>());
    if (!e) wrongType(key, allowed);
    return *e;
}

bool textBool(std::string_view text, std::string_view key) {
    if (text == "true") return true;
    if (text == "false") return false;
    wrongType(key, "true or false");
}
int textInt(std::string_view text, std::string_view key) {
    int value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || value < 0 || value > 1000000)
        wrongType(key, "a whole number from 0 to 1000000");
    return value;
}
Instant textDate(std::string_view text, std::string_view key) {
    if (text.size() == 10)
        if (auto d = Calendar::isoDay(text)) return *d;
    wrongType(key, "a date written yyyy-MM-dd");
}
[[noreturn]] void notScalar(std::string_view key) {
    throw EvidenceError::invalid("The setting " + quoted(key) +
                                 " is a list; give it in a settings file with --settings.");
}

// One field of the record: how to read it from JSON and from command-line
// text, and how to store it. Each reader throws EvidenceError with a sentence
// naming the key.
struct Field {
    std::string_view key;
    void (*fromJson)(Settings&, const Json&, std::string_view key);
    void (*fromText)(Settings&, std::string_view text, std::string_view key);
    Json (*toJson)(const Settings&);
};

template <std::string Settings::*M>
constexpr Field text(std::string_view key) {
    return {key, [](Settings& s, const Json& v, std::string_view k) { s.*M = jsonString(v, k); },
            [](Settings& s, std::string_view t, std::string_view) { s.*M = std::string(t); },
            [](const Settings& s) { return Json(s.*M); }};
}
template <bool Settings::*M>
constexpr Field flag(std::string_view key) {
    return {key, [](Settings& s, const Json& v, std::string_view k) { s.*M = jsonBool(v, k); },
            [](Settings& s, std::string_view t, std::string_view k) { s.*M = textBool(t, k); },
            [](const Settings& s) { return Json(s.*M); }};
}
template <int Settings::*M>
constexpr Field count(std::string_view key) {
    return {key, [](Settings& s, const Json& v, std::string_view k) { s.*M = jsonInt(v, k); },
            [](Settings& s, std::string_view t, std::string_view k) { s.*M = textInt(t, k); },
            [](const Settings& s) { return Json(s.*M); }};
}
template <Instant Settings::*M>
constexpr Field day(std::string_view key) {
    return {key, [](Settings& s, const Json& v, std::string_view k) { s.*M = jsonNumber(v, k); },
            [](Settings& s, std::string_view t, std::string_view k) { s.*M = textDate(t, k); },
            [](const Settings& s) { return Json(s.*M); }};
}
// A time zone ICU knows; any other name would quietly read times as UTC.
std::string knownZone(std::string text, std::string_view key) {
    if (!Calendar::isKnownTimeZone(text))
        throw EvidenceError::invalid("The setting " + quoted(key) +
                                     " must be a time zone such as \u201cEurope/London\u201d; " +
                                     quoted(std::string_view(text)) + " is not one.");
    return text;
}
template <std::string Settings::*M>
constexpr Field zone(std::string_view key) {
    return {key,
            [](Settings& s, const Json& v, std::string_view k) {
                s.*M = knownZone(jsonString(v, k), k);
            },
            [](Settings& s, std::string_view t, std::string_view k) {
                s.*M = knownZone(std::string(t), k);
            },
            [](const Settings& s) { return Json(s.*M); }};
}
// Lists are only read from JSON: a command line has no good way to write one.
template <std::set<std::string> Settings::*M>
constexpr Field list(std::string_view key) {
    return {key, [](Settings& s, const Json& v, std::string_view k) { s.*M = jsonSet(v, k); },
            [](Settings&, std::string_view, std::string_view k) { notScalar(k); },
            [](const Settings& s) {
                return Json(std::vector<std::string>((s.*M).begin(), (s.*M).end()));
            }};
}
template <typename E, E Settings::*M, const auto& Names>
constexpr Field choice(std::string_view key) {
    return {key,
            [](Settings& s, const Json& v, std::string_view k) { s.*M = jsonEnum<E>(v, k, Names); },
            [](Settings& s, std::string_view t, std::string_view k) {
                s.*M = jsonEnum<E>(Json(std::string(t)), k, Names);
            },
            [](const Settings& s) { return Json(Names[static_cast<size_t>(s.*M)]); }};
}

// In the order of the record; this is also the order of the stored keys.
const std::array<Field, 19> kFields = {
    text<&Settings::title>("title"),
    text<&Settings::applicant>("applicant"),
    text<&Settings::partner>("partner"),
    text<&Settings::reference>("reference"),
    text<&Settings::ownerName>("ownerName"),
    flag<&Settings::limitDates>("limitDates"),
    day<&Settings::rangeStart>("rangeStart"),
    day<&Settings::rangeEnd>("rangeEnd"),
    count<&Settings::messagesPerMonth>("messagesPerMonth"),
    count<&Settings::photosPerMonth>("photosPerMonth"),
    text<&Settings::hiddenText>("hiddenText"),
    choice<PaperSize, &Settings::paper, kPaperRaw>("paper"),
    choice<Arrangement, &Settings::arrangement, kArrangementRaw>("arrangement"),
    count<&Settings::maxFileMB>("maxFileMB"),
    choice<DateOrder, &Settings::dateOrder, kDateOrderRaw>("dateOrder"),
    zone<&Settings::timeZoneID>("timeZoneID"),
    list<&Settings::excludedSources>("excludedSources"),
    list<&Settings::excludedItems>("excludedItems"),
    list<&Settings::addedItems>("addedItems"),
};

const Field* findField(std::string_view key) {
    for (const auto& f : kFields)
        if (f.key == key) return &f;
    return nullptr;
}

[[noreturn]] void unknownKey(std::string_view key) {
    throw EvidenceError::invalid("There is no setting called " + quoted(key) + ".");
}

}  // namespace

std::string_view rawValue(PaperSize v) {
    return kPaperRaw[static_cast<size_t>(v)];
}
std::string_view rawValue(Arrangement v) {
    return kArrangementRaw[static_cast<size_t>(v)];
}
std::string_view rawValue(DateOrder v) {
    return kDateOrderRaw[static_cast<size_t>(v)];
}
std::string_view displayName(PaperSize v) {
    return kPaperNames[static_cast<size_t>(v)];
}
std::string_view displayName(Arrangement v) {
    return kArrangementNames[static_cast<size_t>(v)];
}
std::string_view displayName(DateOrder v) {
    return kDateOrderNames[static_cast<size_t>(v)];
}
std::optional<PaperSize> paperSizeFromRaw(std::string_view raw) {
    return fromRaw<PaperSize>(kPaperRaw, raw);
}
std::optional<Arrangement> arrangementFromRaw(std::string_view raw) {
    return fromRaw<Arrangement>(kArrangementRaw, raw);
}
std::optional<DateOrder> dateOrderFromRaw(std::string_view raw) {
    return fromRaw<DateOrder>(kDateOrderRaw, raw);
}

PageSize pageSize(PaperSize paper) {
    return paper == PaperSize::a4 ? PageSize{595, 842} : PageSize{612, 792};
}

std::string currentTimeZoneID() {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    std::string id;
    if (zone) {
        icu::UnicodeString uid;
        zone->getID(uid);
        uid.toUTF8String(id);
    }
    // TZ may name anything; an unknown zone would read every time as UTC.
    if (!Calendar::isKnownTimeZone(id)) id = "UTC";
    return id;
}

Instant now() {
    using namespace std::chrono;
    auto us = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    return instantFromUnix(static_cast<double>(us) / 1e6);
}

Settings Settings::defaults() {
    Settings s;
    s.rangeStart = s.rangeEnd = now();
    s.timeZoneID = currentTimeZoneID();
    return s;
}

Json encode(const Settings& s) {
    Json j = Json::object();
    for (const auto& f : kFields)
        j[std::string(f.key)] = f.toJson(s);
    return j;
}

std::optional<Settings> decode(const Json& json, std::vector<std::string>* warnings) {
    if (!json.is_object()) return std::nullopt;
    Settings s = Settings::defaults();
    try {
        for (const auto& f : kFields) {
            auto it = json.find(std::string(f.key));
            if (it == json.end()) return std::nullopt;
            try {
                f.fromJson(s, *it, f.key);
            } catch (const EvidenceError& e) {
                // A zone this computer's ICU does not know (one renamed, or a
                // file from elsewhere) costs only itself: this computer's zone
                // stands in, and the caller says so.
                if (f.key != "timeZoneID") throw;
                if (warnings)
                    warnings->push_back(std::string(e.what()) + " Using " + s.timeZoneID +
                                        " instead.");
            }
        }
    } catch (const EvidenceError&) {
        return std::nullopt;
    }
    return s;
}

Settings applyPartial(Settings base, const Json& json) {
    if (!json.is_object())
        throw EvidenceError::invalid("A settings file must hold one JSON object.");
    for (const auto& [key, value] : json.items()) {
        const Field* f = findField(key);
        if (!f) unknownKey(key);
        f->fromJson(base, value, key);
    }
    return base;
}

void setField(Settings& settings, std::string_view key, std::string_view value) {
    const Field* f = findField(key);
    if (!f) unknownKey(key);
    f->fromText(settings, value, key);
}

}  // namespace kinfolio
