#include "scan/date_order.h"

#include "importers/dates.h"
#include "importers/whatsapp_fast.h"

namespace kinfolio::Scanner {

ChatDateOrder chatDateOrder(std::string_view text, DateOrder setting) {
    if (setting != DateOrder::automatic) return {setting, std::nullopt};
    // The hand-written reader answers for plain texts at once; the ICU
    // expression decides the rest.
    auto quick = Importer::fast::detectOrder(text);
    if (auto detected = quick ? *quick : Importer::detectOrder(text))
        return {*detected, std::nullopt};
    return {DateOrder::dayFirst,
            "The dates could be day/month or month/day; day first was assumed. Change Date "
            "order if they look wrong."};
}

}  // namespace kinfolio::Scanner
