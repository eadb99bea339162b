#include "importers/line.h"

#include "importers/dates.h"
#include "model/text.h"

namespace kinfolio::Importer {

std::optional<Instant> lineDay(std::string_view line) {
    static const Regex dayHeader(
        "^(?:[A-Za-z]{3,9},?\\s+)?(\\d{4})[/.\\-](\\d{1,2})[/.\\-](\\d{1,2})"
        "(?:\\s*\\(?[A-Za-z\\p{Han}]{1,9}\\)?)?\\s*$");
    icu::UnicodeString u = toUnicode(line);
    auto m = dayHeader.matcher(u);
    UErrorCode status = U_ZERO_ERROR;
    if (!m->matches(status)) return std::nullopt;
    return makeDate(std::stoi(*groupText(*m, 1)), std::stoi(*groupText(*m, 2)),
                    std::stoi(*groupText(*m, 3)));
}

}  // namespace kinfolio::Importer
