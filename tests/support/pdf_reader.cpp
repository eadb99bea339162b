#include "support/pdf_reader.h"

#include <cairo.h>
#include <gtest/gtest.h>
#include <pango/pangocairo.h>
#include <poppler.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "support/temp_folder.h"

namespace kinfolio::testing {

namespace {

std::string flatten(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    return text;
}

PopplerDocument* open(const std::string& bytes) {
    GBytes* data = g_bytes_new(bytes.data(), bytes.size());
    GError* error = nullptr;
    PopplerDocument* doc = poppler_document_new_from_bytes(data, nullptr, &error);
    g_bytes_unref(data);
    if (!doc) {
        std::string message = error ? error->message : "unknown";
        if (error) g_error_free(error);
        throw std::runtime_error("poppler cannot open the PDF: " + message);
    }
    return doc;
}

// One page of a document opened from bytes, both released together.
struct OpenPage {
    OpenPage(const std::string& bytes, int index)
        : doc(open(bytes)), page(poppler_document_get_page(doc, index)) {}
    ~OpenPage() {
        g_object_unref(page);
        g_object_unref(doc);
    }
    OpenPage(const OpenPage&) = delete;
    OpenPage& operator=(const OpenPage&) = delete;
    PopplerDocument* doc;
    PopplerPage* page;
};

}  // namespace

std::string ReadPDF::flat(size_t page) const {
    return flatten(pages.at(page));
}

std::string ReadPDF::allFlat() const {
    std::string all;
    for (const auto& page : pages)
        all += flatten(page) + " ";
    return all;
}

ReadPDF readPDF(const std::string& bytes) {
    PopplerDocument* doc = open(bytes);
    ReadPDF result;
    for (int i = 0; i < poppler_document_get_n_pages(doc); ++i) {
        PopplerPage* page = poppler_document_get_page(doc, i);
        char* text = poppler_page_get_text(page);
        result.pages.push_back(text ? text : "");
        g_free(text);
        double w = 0, h = 0;
        poppler_page_get_size(page, &w, &h);
        result.sizes.emplace_back(w, h);
        char* label = poppler_page_get_label(page);
        result.labels.push_back(label ? label : "");
        g_free(label);
        g_object_unref(page);
    }
    g_object_unref(doc);
    return result;
}

Raster rasterise(const std::string& bytes, int pageIndex, double scale) {
    OpenPage opened(bytes, pageIndex);
    double w = 0, h = 0;
    poppler_page_get_size(opened.page, &w, &h);
    Raster raster;
    raster.width = static_cast<int>(std::ceil(w * scale));
    raster.height = static_cast<int>(std::ceil(h * scale));
    cairo_surface_t* surface =
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, raster.width, raster.height);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_scale(cr, scale, scale);
    poppler_page_render(opened.page, cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x)
            raster.pixels.push_back(*reinterpret_cast<const uint32_t*>(data + y * stride + x * 4) &
                                    0xFFFFFF);
    cairo_surface_destroy(surface);
    return raster;
}

Box boxOf(const Raster& raster, uint32_t colour, Box region) {
    auto near = [&](uint32_t p) {
        for (int shift : {0, 8, 16})
            if (std::abs(static_cast<int>((p >> shift) & 0xFF) -
                         static_cast<int>((colour >> shift) & 0xFF)) > 2)
                return false;
        return true;
    };
    Box box{raster.width, raster.height, -1, -1};
    const int right = std::min(raster.width - 1, region.maxX);
    for (int y = std::max(0, region.minY); y <= std::min(raster.height - 1, region.maxY); ++y) {
        for (int x = std::max(0, region.minX); x <= right;) {
            int end = x;
            while (end <= right && near(raster.at(end, y)))
                ++end;
            if (end - x >= 12) {
                box.minX = std::min(box.minX, x);
                box.minY = std::min(box.minY, y);
                box.maxX = std::max(box.maxX, end - 1);
                box.maxY = std::max(box.maxY, y);
            }
            x = std::max(end, x + 1);
        }
    }
    return box;
}

std::string textRightOf(const std::string& bytes, int pageIndex, const std::string& label) {
    OpenPage opened(bytes, pageIndex);
    char* text = poppler_page_get_text(opened.page);
    PopplerRectangle* rects = nullptr;
    guint count = 0;
    poppler_page_get_text_layout(opened.page, &rects, &count);
    std::string result;
    // Layout rectangles come one per character of the text. The cover names a
    // section above the contents ("Period: …") and a section that starts on
    // the contents page names itself below them: the contents row is the
    // first occurrence after the heading, or the last one on a page without it.
    std::string all = text ? text : "";
    size_t contents = all.find("Contents\n");
    size_t at = contents == std::string::npos ? all.rfind(label) : all.find(label, contents);
    if (at != std::string::npos) {
        glong index = g_utf8_pointer_to_offset(all.c_str(), all.c_str() + at + label.size() - 1);
        const PopplerRectangle& last = rects[index];
        double middle = (last.y1 + last.y2) / 2;
        const char* p = all.c_str();
        for (guint i = 0; i < count && *p; ++i, p = g_utf8_next_char(p)) {
            const PopplerRectangle& r = rects[i];
            if (r.x1 > last.x2 && r.y1 < middle && r.y2 > middle && *p != '\n')
                result.append(p, g_utf8_next_char(p) - p);
        }
    }
    g_free(rects);
    g_free(text);
    return result;
}

std::vector<double> imageResolutions(const std::string& bytes, int pageIndex) {
    OpenPage opened(bytes, pageIndex);
    std::vector<double> result;
    GList* mappings = poppler_page_get_image_mapping(opened.page);
    for (GList* m = mappings; m; m = m->next) {
        auto* mapping = static_cast<PopplerImageMapping*>(m->data);
        cairo_surface_t* image = poppler_page_get_image(opened.page, mapping->image_id);
        if (!image) continue;
        double drawn = mapping->area.x2 - mapping->area.x1;
        result.push_back(cairo_image_surface_get_width(image) / drawn);
        cairo_surface_destroy(image);
    }
    poppler_page_free_image_mapping(mappings);
    return result;
}

std::vector<Link> links(const std::string& bytes, int pageIndex) {
    OpenPage opened(bytes, pageIndex);
    std::vector<Link> result;
    GList* mappings = poppler_page_get_link_mapping(opened.page);
    for (GList* m = mappings; m; m = m->next) {
        auto* action = static_cast<PopplerLinkMapping*>(m->data)->action;
        EXPECT_EQ(action->type, POPPLER_ACTION_GOTO_DEST) << "a link leaving the file";
        if (action->type != POPPLER_ACTION_GOTO_DEST) continue;
        PopplerDest* dest = action->goto_dest.dest;
        if (dest->type != POPPLER_DEST_NAMED) {
            result.push_back({"", dest->page_num - 1});
            continue;
        }
        PopplerDest* found = poppler_document_find_dest(opened.doc, dest->named_dest);
        result.push_back({dest->named_dest, found ? found->page_num - 1 : -1});
        if (found) poppler_dest_free(found);
    }
    poppler_page_free_link_mapping(mappings);
    return result;
}

namespace {

void addOutline(QPDF& qpdf, std::vector<QPDFOutlineObjectHelper> items,
                std::vector<std::pair<std::string, int>>& into) {
    const auto& pages = qpdf.getAllPages();
    for (auto& item : items) {
        QPDFObjectHandle page = item.getDestPage();
        int index = -1;
        for (size_t i = 0; i < pages.size(); ++i)
            if (page.isIndirect() && pages[i].getObjGen() == page.getObjGen())
                index = static_cast<int>(i);
        into.emplace_back(item.getTitle(), index);
        addOutline(qpdf, item.getKids(), into);
    }
}

}  // namespace

std::vector<std::pair<std::string, int>> outline(const std::string& bytes) {
    QPDF qpdf;
    qpdf.processMemoryFile("read", bytes.data(), bytes.size());
    QPDFOutlineDocumentHelper helper(qpdf);
    std::vector<std::pair<std::string, int>> result;
    addOutline(qpdf, helper.getTopLevelOutlines(), result);
    return result;
}

std::map<std::string, std::string> information(const std::string& bytes) {
    QPDF qpdf;
    qpdf.processMemoryFile("read", bytes.data(), bytes.size());
    std::map<std::string, std::string> result;
    QPDFObjectHandle info = qpdf.getTrailer().getKey("/Info");
    if (info.isDictionary())
        for (const auto& key : info.getKeys())
            result[key] = info.getKey(key).getUTF8Value();
    return result;
}

bool qpdfCheckPasses(const std::string& bytes) {
    TempFolder folder;
    std::string file = folder.write("check.pdf", bytes);
    std::string command = "qpdf --check '" + file + "' > /dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

}  // namespace kinfolio::testing
