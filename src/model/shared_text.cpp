#include "model/shared_text.h"

#include <array>
#include <mutex>
#include <unordered_set>

namespace kinfolio {

const std::string* SharedText::kept(std::string_view text) {
    // A chat's messages name the same few senders over and over: each
    // thread remembers the texts it asked for last and needs no lock for them.
    constexpr size_t kRecent = 8;
    thread_local std::array<const std::string*, kRecent> recent{};
    thread_local size_t next = 0;
    for (const std::string* known : recent)
        if (known && *known == text) return known;
    static std::mutex lock;
    // Never freed: a text may be read from static objects while others are
    // destroyed at exit. A set's elements keep their place as it grows.
    static auto* texts = new std::unordered_set<std::string>();
    std::lock_guard<std::mutex> hold(lock);
    const std::string* found = &*texts->emplace(text).first;
    recent[next] = found;
    next = (next + 1) % kRecent;
    return found;
}

}  // namespace kinfolio
