#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <unicode/unistr.h>

// Hiding the words a user lists: text that the document prints is rewritten,
// matching without regard to letter case or Unicode form (composed or
// decomposed accents, full-width and other compatibility forms).
namespace kinfolio::Importer {

inline constexpr std::string_view kRedacted = "[REDACTED]";

// The words and phrases of the hidden-text setting in typed order: one per
// line, spaces and tabs trimmed from both ends, empty lines dropped.
std::vector<std::string> redactionRules(std::string_view hiddenText);

// Whether `word` occurs in `text`, both compared in NFKC case-folded form.
bool containsIgnoringCase(std::string_view text, std::string_view word);

// The rules of one hidden-text setting, sorted and folded once so that the
// thousands of texts of one export do not pay for it again.
class Redactor {
public:
    explicit Redactor(std::string_view hiddenText);
    // Every occurrence of every rule replaced by "[REDACTED]", longest rule
    // first, each rule running over what the previous ones left. A match is
    // found in the folded text; the replacement covers the original
    // characters it came from, and the rest of the text keeps its own form.
    std::string operator()(std::string_view text) const;
    size_t ruleCount() const { return folded_.size(); }

private:
    std::vector<icu::UnicodeString> folded_;
};

std::string redact(std::string_view text, std::string_view hiddenText);

}  // namespace kinfolio::Importer
