#include "media/images.h"

#include <sys/stat.h>
#include <unicode/timezone.h>

#include <chrono>
#include <memory>

#include "media/module.h"
#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::Scanner {

namespace {

std::string_view lastPart(std::string_view name) {
    size_t slash = name.rfind('/');
    return slash == std::string_view::npos ? name : name.substr(slash + 1);
}

double localOffsetSeconds(double unixSeconds) {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    int32_t raw = 0, dst = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone->getOffset(unixSeconds * 1000.0, false, raw, dst, status);
    return U_FAILURE(status) ? 0.0 : (raw + dst) / 1000.0;
}

}  // namespace

std::optional<ImageInfo> imageInfo(std::string_view bytes, const std::string& fileName) {
    return detail::mediaModule().imageInfo(bytes, std::string(lastPart(fileName)));
}

std::optional<Instant> dateInName(std::string_view name) {
    static const Regex pattern(
        R"((20\d{2})[-_]?(\d{2})[-_]?(\d{2})(?:[ _-](?:at )?(\d{2})[.:_-]?(\d{2})[.:_-]?(\d{2}))?)");
    icu::UnicodeString text = toUnicode(name);
    auto m = pattern.matcher(text);
    if (!m->find()) return std::nullopt;
    int parts[6] = {};  // a time that is not written counts as midnight
    for (int group = 1; group <= 6; ++group) {
        auto digits = groupText(*m, group);
        if (!digits) continue;
        long long value = decimalValue(*digits);
        if (value < 0) return std::nullopt;
        parts[group - 1] = static_cast<int>(value);
    }
    auto [year, month, day, hour, minute, second] = parts;
    if (month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
    // Digits that are no time of day (25.61.00) make the name no date, rather
    // than carrying into the next day.
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return Calendar::makeDate(year, month, day, hour, minute, second);
}

Instant fallbackDate(const std::string& path) {
    double unixSeconds = 0;
    struct stat st {};
    if (::stat(path.c_str(), &st) == 0) {
        unixSeconds = static_cast<double>(st.st_mtim.tv_sec) + st.st_mtim.tv_nsec / 1e9;
    } else {
        using namespace std::chrono;
        unixSeconds = duration<double>(system_clock::now().time_since_epoch()).count();
    }
    if (auto named = dateInName(lastPart(path))) return *named;
    // A real instant becomes the wall-clock reading of this computer, the
    // form every written time is kept in.
    return instantFromUnix(unixSeconds) + localOffsetSeconds(unixSeconds);
}

}  // namespace kinfolio::Scanner
