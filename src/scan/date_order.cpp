#include "scan/date_order.h"

#include <algorithm>
#include <exception>

#include "importers/dates.h"
#include "importers/whatsapp_fast.h"

namespace kinfolio::Scanner {

namespace {

constexpr const char* kAssumed =
    "The dates could be day/month or month/day; day first was assumed. Change Date order if "
    "they look wrong.";

size_t backwardSteps(const std::vector<Evidence>& items) {
    size_t steps = 0;
    for (size_t i = 1; i < items.size(); ++i)
        if (items[i].date < items[i - 1].date) ++steps;
    return steps;
}

bool sameDates(const std::vector<Evidence>& a, const std::vector<Evidence>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Evidence& x, const Evidence& y) { return x.date == y.date; });
}

// Clearly better: fewer steps back in time, and at most a quarter as many.
bool clearlyBetter(size_t steps, size_t otherSteps) {
    return steps < otherSteps && steps * 4 <= otherSteps;
}

}  // namespace

ChatDateOrder chatDateOrder(std::string_view text, DateOrder setting) {
    if (setting != DateOrder::automatic) return {setting, std::nullopt};
    // The hand-written reader answers for plain texts at once; the ICU
    // expression decides the rest.
    auto quick = Importer::fast::detectOrder(text);
    if (auto detected = quick ? *quick : Importer::detectOrder(text))
        return {*detected, std::nullopt};
    return {DateOrder::dayFirst, kAssumed};
}

ChatReading readInChatOrder(std::string_view text, DateOrder setting,
                            const std::function<Importer::ImportResult(DateOrder)>& read) {
    if (setting != DateOrder::automatic) return {read(setting), setting, std::nullopt};
    // A reader that looks at every line's date as it reads tells the order
    // itself: the chat is read once, in the order that a few stretches of it
    // suggest, and again only when the whole of it tells the other.
    if (auto guess = Importer::fast::likelyOrder(text)) {
        try {
            auto result = read(*guess);
            if (result.orderSeen == std::make_optional(guess))
                return {std::move(result), *guess, std::nullopt};
        } catch (const EvidenceError&) {
            // A chat whose dates make no sense in the guessed order is
            // decided as one without a guess.
        }
    }
    ChatDateOrder decided = chatDateOrder(text, setting);
    if (!decided.note) return {read(decided.order), decided.order, std::nullopt};

    std::optional<Importer::ImportResult> dayFirst, monthFirst;
    std::exception_ptr dayFirstError;
    try {
        dayFirst = read(DateOrder::dayFirst);
    } catch (const EvidenceError&) {
        dayFirstError = std::current_exception();
    }
    try {
        monthFirst = read(DateOrder::monthFirst);
    } catch (const EvidenceError&) {
    }
    // A date that one order cannot read (a 13th month) decides it.
    if (!dayFirst && !monthFirst) std::rethrow_exception(dayFirstError);
    if (!monthFirst) return {std::move(*dayFirst), DateOrder::dayFirst, std::nullopt};
    if (!dayFirst) return {std::move(*monthFirst), DateOrder::monthFirst, std::nullopt};
    // So does a line that only one order reads as a message.
    if (dayFirst->items.size() != monthFirst->items.size()) {
        bool more = monthFirst->items.size() > dayFirst->items.size();
        return more ? ChatReading{std::move(*monthFirst), DateOrder::monthFirst, std::nullopt}
                    : ChatReading{std::move(*dayFirst), DateOrder::dayFirst, std::nullopt};
    }
    // Years first, or the same day and month: the order changes nothing.
    if (sameDates(dayFirst->items, monthFirst->items))
        return {std::move(*dayFirst), DateOrder::dayFirst, std::nullopt};

    size_t dayFirstSteps = backwardSteps(dayFirst->items);
    size_t monthFirstSteps = backwardSteps(monthFirst->items);
    if (clearlyBetter(monthFirstSteps, dayFirstSteps))
        return {std::move(*monthFirst), DateOrder::monthFirst,
                "The dates could be day/month or month/day; month first was chosen, because the "
                "dates only make sense as month/day. Change Date order if they look wrong."};
    if (clearlyBetter(dayFirstSteps, monthFirstSteps))
        return {std::move(*dayFirst), DateOrder::dayFirst,
                "The dates could be day/month or month/day; day first was chosen, because the "
                "dates only make sense as day/month. Change Date order if they look wrong."};
    return {std::move(*dayFirst), DateOrder::dayFirst, kAssumed};
}

}  // namespace kinfolio::Scanner
