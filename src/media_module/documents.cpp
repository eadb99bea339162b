#include "media_module/media_module.h"

#include <poppler.h>

#include <memory>

#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::MediaModule {

using namespace Scanner;

namespace {

// Releases a poppler (GObject) object.
struct GObjectUnref {
    void operator()(gpointer object) const {
        if (object) g_object_unref(object);
    }
};
using DocumentPtr = std::unique_ptr<PopplerDocument, GObjectUnref>;
// A PDF's first page; it keeps its document, and for a file the file, open
// for as long as it lives.
using FirstPage = std::unique_ptr<PopplerPage, GObjectUnref>;

// The first page of the PDF at `path`; null when the file is gone, cannot be
// opened or has no page.
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

// The page's text in reading order, as UTF-8.
std::string pageText(PopplerPage* page) {
    char* text = poppler_page_get_text(page);
    std::string result = text ? repairUtf8(text) : "";
    g_free(text);
    return result;
}

std::optional<Instant> wallClock(GDateTime* when) {
    if (!when) return std::nullopt;
    return Calendar::makeDate(g_date_time_get_year(when), g_date_time_get_month(when),
                              g_date_time_get_day_of_month(when), g_date_time_get_hour(when),
                              g_date_time_get_minute(when), g_date_time_get_second(when));
}

}  // namespace

std::optional<PageFacts> firstPageFacts(const std::string& path, bool withText) {
    FirstPage page = firstPage(path);
    if (!page) return std::nullopt;
    PageFacts facts;
    // Already in the orientation the page is shown in: a page turned by 90
    // or 270 degrees reports its width and height swapped.
    poppler_page_get_size(page.get(), &facts.width, &facts.height);
    if (withText) facts.text = pageText(page.get());
    return facts;
}

bool drawFirstPage(cairo_t* cr, const std::string& path, const std::function<void()>& before) {
    FirstPage page = firstPage(path);
    if (!page) return false;
    before();
    // Printing mode draws what the page would print.
    poppler_page_render_for_printing(page.get(), cr);
    return true;
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

}  // namespace kinfolio::MediaModule
