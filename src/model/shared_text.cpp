#include "model/shared_text.h"

#include <mutex>
#include <unordered_set>

namespace kinfolio {

const std::string* SharedText::kept(std::string_view text) {
    static std::mutex lock;
    // Never freed: a text may be read from static objects while others are
    // destroyed at exit. A set's elements keep their place as it grows.
    static auto* texts = new std::unordered_set<std::string>();
    std::lock_guard<std::mutex> hold(lock);
    return &*texts->emplace(text).first;
}

}  // namespace kinfolio
