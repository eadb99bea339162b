#pragma once

#include <cairo.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "model/evidence.h"
#include "model/settings.h"

// PDF documents: tickets, bookings, statements, leases and certificates,
// dated by the first full date on their first page and sorted by keywords.
namespace kinfolio::Scanner {

// What the scan reads from a PDF. Only the first page is read, however long
// the document: it is where a booking or a statement states its date.
struct DocumentInfo {
    std::string firstPageText;  // empty for a scan without a text layer
    // When the file says it was made, as the clock of its maker showed it.
    std::optional<Instant> created;
};

// What the layout needs of a PDF's first page: its size in points, in the
// orientation it is shown in, and on request its text in reading order.
struct PageFacts {
    double width = 0, height = 0;
    std::string text;  // empty for a page without text
};
// The first page of the PDF at `path`; none when the file is gone, cannot be
// opened or has no page.
std::optional<PageFacts> firstPageFacts(const std::string& path, bool withText);
// Draws that page into `cr` at its own size in points, as vectors (its text
// stays text) and as it would print, after `before` has prepared `cr` (a
// sheet, a place, a scale). False, with nothing drawn and `before` not
// called, when the file is gone or cannot be opened.
bool drawFirstPage(cairo_t* cr, const std::string& path, const std::function<void()>& before);

// None when the bytes are no PDF poppler can open: damaged beyond repair,
// protected by a password, or without a page.
std::optional<DocumentInfo> documentInfo(std::string_view bytes);

// "Travel", "Finance", "Home", "Certificate" or "Document", decided by
// keywords in the first 3,000 characters of the text and in the file name.
std::string category(std::string_view text, std::string_view name);

// The first date in the first 4,000 characters of the text whose wording
// carries a four-digit year ("3 March 2025", "03/03/2025"); a date without one
// ("Friday 14:30", "12/04/25") is passed over. Numeric dates follow `order`.
std::optional<Instant> firstDate(std::string_view text, DateOrder order);

}  // namespace kinfolio::Scanner
