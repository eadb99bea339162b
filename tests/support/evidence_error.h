#pragma once

#include <string>
#include <utility>

#include "model/evidence.h"

namespace kinfolio::testing {

// The message of the EvidenceError that `call` throws, or "(no error)": a
// refusal is checked the way the user reads it, as one sentence.
template <typename Call>
std::string errorOf(Call&& call) {
    try {
        std::forward<Call>(call)();
    } catch (const EvidenceError& e) {
        return e.what();
    }
    return "(no error)";
}

}  // namespace kinfolio::testing
