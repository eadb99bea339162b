#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "model/evidence.h"
#include "model/json.h"

namespace kinfolio {

enum class PaperSize { a4, letter };
enum class Arrangement { byDate, byType };
// How ambiguous numeric dates are read; automatic lets a WhatsApp chat decide
// and means day first everywhere else.
enum class DateOrder { automatic, dayFirst, monthFirst };

std::string_view rawValue(PaperSize value);
std::string_view rawValue(Arrangement value);
std::string_view rawValue(DateOrder value);
std::string_view displayName(PaperSize value);
std::string_view displayName(Arrangement value);
std::string_view displayName(DateOrder value);
std::optional<PaperSize> paperSizeFromRaw(std::string_view raw);
std::optional<Arrangement> arrangementFromRaw(std::string_view raw);
std::optional<DateOrder> dateOrderFromRaw(std::string_view raw);

struct PageSize {
    double width = 0, height = 0;
};
PageSize pageSize(PaperSize paper);

// Every choice the user makes for an export.
struct Settings {
    std::string title = "Relationship evidence";
    std::string applicant;
    std::string partner;
    std::string reference;
    std::string ownerName;
    bool limitDates = false;
    Instant rangeStart = 0;
    Instant rangeEnd = 0;
    int messagesPerMonth = 5;
    int photosPerMonth = 0;
    std::string hiddenText;
    PaperSize paper = PaperSize::a4;
    Arrangement arrangement = Arrangement::byDate;
    int maxFileMB = 0;
    DateOrder dateOrder = DateOrder::automatic;
    std::string timeZoneID;
    std::set<std::string> excludedSources;
    std::set<std::string> excludedItems;
    std::set<std::string> addedItems;

    // The defaults: the range starts and ends now, the zone is the machine's.
    static Settings defaults();

    bool operator==(const Settings&) const = default;
};

// The identifier of the machine's current time zone.
std::string currentTimeZoneID();
Instant now();

// The stored form: one JSON object holding every field under its own name,
// points in time as seconds since 2001-01-01.
Json encode(const Settings& settings);
// Strict: every key must be present with the right type, else nothing; only
// a time zone this computer does not know is replaced by its own zone, with a
// sentence for the user added to `warnings`.
std::optional<Settings> decode(const Json& json, std::vector<std::string>* warnings = nullptr);
// Lenient: the keys present are applied over `base`. Throws EvidenceError
// naming an unknown key or a value of the wrong type.
Settings applyPartial(Settings base, const Json& json);
// Sets one scalar field from text (dates as yyyy-MM-dd); throws EvidenceError.
void setField(Settings& settings, std::string_view key, std::string_view value);

}  // namespace kinfolio
