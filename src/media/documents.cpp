#include "media/documents.h"

#include <array>
#include <vector>

#include "importers/text_dates.h"
#include "media/module.h"
#include "model/text.h"

namespace kinfolio::Scanner {

namespace {

struct Category {
    std::string_view name;
    std::vector<std::string_view> keywords;
};

// Tried in this order, so the order settles ties: a hotel booking paid by
// bank transfer is travel, a bank statement that mentions the rent is
// finance. Keywords are plain substrings ("rent" also finds "parents"); a
// stray match costs a group heading, never an item.
const std::array<Category, 4>& categories() {
    static const std::array<Category, 4> table = {{
        {"Travel",
         {"boarding", "flight", "itinerary", "e-ticket", "eticket", "airline", "hotel",
          "reservation", "booking"}},
        {"Finance", {"statement", "account number", "balance", "bank", "transfer", "remittance"}},
        {"Home", {"lease", "tenancy", "tenant", "rent", "utility", "electricity", "water bill"}},
        {"Certificate", {"certificate", "marriage", "registry", "birth"}},
    }};
    return table;
}

constexpr size_t kCategoryChars = 3000;
constexpr size_t kDateChars = 4000;

// Whether the text holds a year of this century or the last: four digits
// starting 19 or 20.
bool holdsFullYear(std::string_view text) {
    auto digit = [](char c) { return c >= '0' && c <= '9'; };
    for (size_t i = 0; i + 4 <= text.size(); ++i)
        if (((text[i] == '1' && text[i + 1] == '9') || (text[i] == '2' && text[i + 1] == '0')) &&
            digit(text[i + 2]) && digit(text[i + 3]))
            return true;
    return false;
}

}  // namespace

std::optional<DocumentInfo> documentInfo(std::string_view bytes) {
    return detail::mediaModule().documentInfo(bytes);
}

std::optional<PageFacts> firstPageFacts(const std::string& path, bool withText) {
    return detail::mediaModule().firstPageFacts(path, withText);
}

bool drawFirstPage(cairo_t* cr, const std::string& path, const std::function<void()>& before) {
    return detail::mediaModule().drawFirstPage(cr, path, before);
}

std::string category(std::string_view text, std::string_view name) {
    std::string searched =
        asciiLower(prefixCodePoints(text, kCategoryChars) + " " + std::string(name));
    for (const auto& c : categories())
        for (auto keyword : c.keywords)
            if (searched.find(keyword) != std::string::npos) return std::string(c.name);
    return "Document";
}

std::optional<Instant> firstDate(std::string_view text, DateOrder order) {
    std::string head = prefixCodePoints(text, kDateChars);
    for (const auto& found : Importer::findDates(head, order))
        if (holdsFullYear(std::string_view(head).substr(found.begin, found.length)))
            return found.date;
    return std::nullopt;
}

}  // namespace kinfolio::Scanner
