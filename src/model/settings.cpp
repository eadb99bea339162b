#include "model/settings.h"

#include <unicode/timezone.h>

#include <array>
#include <charconv>
#include <chrono>
#include <memory>

#include "importers/dates.h"

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

// One field of the record: how to read it from JSON and from command-line text.
// Each reader throws EvidenceError with a sentence naming the key.
struct Field {
    std::string_view key;
    void (*fromJson)(Settings&, const Json&);
    void (*fromText)(Settings&, std::string_view);
};

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
        if (auto d = Importer::date(std::string(text), DateOrder::dayFirst)) return *d;
    wrongType(key, "a date written yyyy-MM-dd");
}
[[noreturn]] void notScalar(std::string_view key) {
    throw EvidenceError::invalid("The setting " + quoted(key) +
                                 " is a list; give it in a settings file with --settings.");
}

#define KF_STRING(name)                                                                          \
    Field {                                                                                      \
#name, [](Settings & s,                                                                  \
                  const Json&                                                                    \
                      v) { s.name = jsonString(v, #name); },                                     \
                                                          [](Settings & s,                       \
                                                             std::string_view                    \
                                                                 t) { s.name = std::string(t); } \
    }
#define KF_INT(name)                                                                             \
    Field {                                                                                      \
#name, [](Settings & s,                                                                  \
                  const Json&                                                                    \
                      v) { s.name = jsonInt(v, #name); },                                        \
                                                       [](Settings & s,                          \
                                                          std::string_view                       \
                                                              t) { s.name = textInt(t, #name); } \
    }
#define KF_DATE(name)                                                                             \
    Field {                                                                                       \
#name,                                                                                    \
            [](Settings & s,                                                                      \
               const Json&                                                                        \
                   v) { s.name = jsonNumber(v, #name); },                                         \
                                                       [](Settings & s,                           \
                                                          std::string_view                        \
                                                              t) { s.name = textDate(t, #name); } \
    }
#define KF_SET(name)                                                                              \
    Field {                                                                                       \
#name, [](Settings & s,                                                                   \
                  const Json&                                                                     \
                      v) { s.name = jsonSet(v, #name); },                                         \
                                                       [](Settings&,                              \
                                                          std::string_view) { notScalar(#name); } \
    }
#define KF_ENUM(name, type, names)                                                      \
    Field {                                                                             \
#name, [](Settings& s, const Json& v) { s.name = jsonEnum<type>(v, #name, names); },  \
            [](Settings& s, std::string_view t) {                                             \
                s.name = jsonEnum<type>(Json(std::string(t)), #name, names);                  \
            } \
    }

// In the order of the record; this is also the order of the stored keys.
const std::array<Field, 19> kFields = {
    KF_STRING(title),
    KF_STRING(applicant),
    KF_STRING(partner),
    KF_STRING(reference),
    KF_STRING(ownerName),
    Field{"limitDates",
          [](Settings& s, const Json& v) { s.limitDates = jsonBool(v, "limitDates"); },
          [](Settings& s, std::string_view t) { s.limitDates = textBool(t, "limitDates"); }},
    KF_DATE(rangeStart),
    KF_DATE(rangeEnd),
    KF_INT(messagesPerMonth),
    KF_INT(photosPerMonth),
    KF_STRING(hiddenText),
    KF_ENUM(paper, PaperSize, kPaperRaw),
    KF_ENUM(arrangement, Arrangement, kArrangementRaw),
    KF_INT(maxFileMB),
    KF_ENUM(dateOrder, DateOrder, kDateOrderRaw),
    KF_STRING(timeZoneID),
    KF_SET(excludedSources),
    KF_SET(excludedItems),
    KF_SET(addedItems),
};

#undef KF_STRING
#undef KF_INT
#undef KF_DATE
#undef KF_SET
#undef KF_ENUM

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
    if (id.empty() || id == "Etc/Unknown") id = "UTC";
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
    auto set = [](const std::set<std::string>& v) {
        return Json(std::vector<std::string>(v.begin(), v.end()));
    };
    Json j = Json::object();
    j["title"] = s.title;
    j["applicant"] = s.applicant;
    j["partner"] = s.partner;
    j["reference"] = s.reference;
    j["ownerName"] = s.ownerName;
    j["limitDates"] = s.limitDates;
    j["rangeStart"] = s.rangeStart;
    j["rangeEnd"] = s.rangeEnd;
    j["messagesPerMonth"] = s.messagesPerMonth;
    j["photosPerMonth"] = s.photosPerMonth;
    j["hiddenText"] = s.hiddenText;
    j["paper"] = rawValue(s.paper);
    j["arrangement"] = rawValue(s.arrangement);
    j["maxFileMB"] = s.maxFileMB;
    j["dateOrder"] = rawValue(s.dateOrder);
    j["timeZoneID"] = s.timeZoneID;
    j["excludedSources"] = set(s.excludedSources);
    j["excludedItems"] = set(s.excludedItems);
    j["addedItems"] = set(s.addedItems);
    return j;
}

std::optional<Settings> decode(const Json& json) {
    if (!json.is_object()) return std::nullopt;
    Settings s = Settings::defaults();
    try {
        for (const auto& f : kFields) {
            auto it = json.find(std::string(f.key));
            if (it == json.end()) return std::nullopt;
            f.fromJson(s, *it);
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
        f->fromJson(base, value);
    }
    return base;
}

void setField(Settings& settings, std::string_view key, std::string_view value) {
    const Field* f = findField(key);
    if (!f) unknownKey(key);
    f->fromText(settings, value);
}

}  // namespace kinfolio
