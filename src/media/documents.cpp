#include "media/documents.h"

#include <poppler.h>

#include <array>
#include <memory>
#include <vector>

#include "importers/text_dates.h"
#include "model/calendar.h"
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

using DocumentPtr = std::unique_ptr<PopplerDocument, GObjectUnref>;

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

std::optional<Instant> wallClock(GDateTime* when) {
    if (!when) return std::nullopt;
    return Calendar::makeDate(g_date_time_get_year(when), g_date_time_get_month(when),
                              g_date_time_get_day_of_month(when), g_date_time_get_hour(when),
                              g_date_time_get_minute(when), g_date_time_get_second(when));
}

}  // namespace

FirstPage firstPage(const std::string& path) {
    char* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
    if (!uri) return nullptr;
    GError* error = nullptr;
    DocumentPtr document(poppler_document_new_from_file(uri, nullptr, &error));
    g_free(uri);
    if (error) g_error_free(error);
    if (!document || poppler_document_get_n_pages(document.get()) < 1) return nullptr;
    // The page holds its own reference to the document.
    return FirstPage(poppler_document_get_page(document.get(), 0));
}

std::string pageText(PopplerPage* page) {
    char* text = poppler_page_get_text(page);
    std::string result = text ? repairUtf8(text) : "";
    g_free(text);
    return result;
}

std::optional<DocumentInfo> documentInfo(std::string_view bytes) {
    if (bytes.empty()) return std::nullopt;
    // The bytes stay mapped for the whole call; poppler reads them in place.
    GBytes* data = g_bytes_new_static(bytes.data(), bytes.size());
    GError* error = nullptr;
    DocumentPtr document(poppler_document_new_from_bytes(data, nullptr, &error));
    g_bytes_unref(data);
    if (error) g_error_free(error);
    if (!document || poppler_document_get_n_pages(document.get()) < 1) return std::nullopt;
    FirstPage first(poppler_document_get_page(document.get(), 0));
    if (!first) return std::nullopt;

    DocumentInfo info;
    info.firstPageText = pageText(first.get());
    if (GDateTime* created = poppler_document_get_creation_date_time(document.get())) {
        info.created = wallClock(created);
        g_date_time_unref(created);
    }
    return info;
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
