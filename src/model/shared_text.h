#pragma once

#include <compare>
#include <ostream>
#include <string>
#include <string_view>

namespace kinfolio {

// An immutable text that copies share instead of duplicating: every item of
// a file holds its file's SHA-256, and a chat of a million messages would
// otherwise hold a million copies of the same 64 characters. It reads like
// the std::string it converts to.
//
// Each distinct text is kept once for the life of the program, so a copy is
// a pointer: a million items made or freed on several cores never contend
// for a shared count. The texts are file fingerprints and names: fingerprints,
// senders and categories, a few kilobytes for most folders.
class SharedText {
public:
    SharedText() = default;
    SharedText(std::string_view text) : text_(text.empty() ? nullptr : kept(text)) {}
    SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
    SharedText(const char* text) : SharedText(std::string_view(text)) {}

    const std::string& str() const { return text_ ? *text_ : empty_; }
    operator const std::string&() const { return str(); }
    bool empty() const { return !text_; }
    size_t size() const { return str().size(); }

    friend bool operator==(const SharedText& a, const SharedText& b) {
        return a.text_ == b.text_ || a.str() == b.str();
    }
    friend std::strong_ordering operator<=>(const SharedText& a, const SharedText& b) {
        return a.str() <=> b.str();
    }
    // One overload per kind of text, so a comparison with a literal or a
    // std::string is never ambiguous between converting either side.
    friend bool operator==(const SharedText& a, std::string_view b) { return a.str() == b; }
    friend bool operator==(const SharedText& a, const std::string& b) { return a.str() == b; }
    friend bool operator==(const SharedText& a, const char* b) { return a.str() == b; }
    friend std::strong_ordering operator<=>(const SharedText& a, std::string_view b) {
        return std::string_view(a.str()) <=> b;
    }
    friend std::strong_ordering operator<=>(const SharedText& a, const std::string& b) {
        return a.str() <=> b;
    }
    friend std::strong_ordering operator<=>(const SharedText& a, const char* b) {
        return std::string_view(a.str()) <=> std::string_view(b);
    }
    friend std::string operator+(const SharedText& a, std::string_view b) {
        return a.str() + std::string(b);
    }

private:
    // The one kept copy of `text`; safe from any thread.
    static const std::string* kept(std::string_view text);

    static inline const std::string empty_;
    const std::string* text_ = nullptr;
};

inline std::ostream& operator<<(std::ostream& out, const SharedText& text) {
    return out << text.str();
}

}  // namespace kinfolio
