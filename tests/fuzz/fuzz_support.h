#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "model/evidence.h"
#include "model/settings.h"

// What every fuzz target shares: the input as text, and the one outcome a
// reader may end in besides success. Any other exception, a crash, a hang or
// a huge allocation escapes and is reported by the fuzzer as a finding.
namespace kinfolio::Fuzz {

inline std::string_view asText(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline constexpr std::initializer_list<DateOrder> kOrders = {
    DateOrder::dayFirst, DateOrder::monthFirst, DateOrder::automatic};

// Runs `read`; an EvidenceError is a refusal with a reason, which is allowed.
template <typename Read>
void allowRefusal(Read&& read) {
    try {
        read();
    } catch (const EvidenceError&) {
    }
}

}  // namespace kinfolio::Fuzz
