#include <cairo.h>
#include <pango/pangocairo.h>

#include "example/example_parts.h"
#include "example/example_video.h"

// Loose photos and phone screenshots of the example: camera photos with
// their EXIF dates (one with the place it was taken), a photo dated only by
// its name, and two screenshots of chats with no export, one of them
// holding the door code the example hides.
namespace kinfolio::ExampleFolder {

namespace {

std::string jpegOf(const std::string& png) {
    return media().jpegOf(png);
}

struct Bubble {
    bool mine;
    const char* text;
};

// A phone screenshot of a chat (portrait, so it reads as a screenshot): the
// partner's name at the top and one bubble per line, large enough for text
// recognition to read every word.
std::string screenshot(const char* title, const std::vector<Bubble>& bubbles) {
    const int width = 585, height = 1266;
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_source_rgb(cr, 0.96, 0.96, 0.97);
    cairo_rectangle(cr, 0, 0, width, 110);
    cairo_fill(cr);

    PangoLayout* layout = pango_cairo_create_layout(cr);
    PangoFontDescription* bold = pango_font_description_from_string("Noto Sans Bold 26px");
    PangoFontDescription* regular = pango_font_description_from_string("Noto Sans 26px");
    pango_layout_set_font_description(layout, bold);
    pango_layout_set_text(layout, title, -1);
    cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
    cairo_move_to(cr, 40, 45);
    pango_cairo_show_layout(cr, layout);

    pango_layout_set_font_description(layout, regular);
    double top = 170;
    for (const auto& bubble : bubbles) {
        pango_layout_set_text(layout, bubble.text, -1);
        int w = 0, h = 0;
        pango_layout_get_pixel_size(layout, &w, &h);
        double x = bubble.mine ? width - 36 - w - 40 : 36;
        if (bubble.mine)
            cairo_set_source_rgb(cr, 0.82, 0.9, 1.0);
        else
            cairo_set_source_rgb(cr, 0.92, 0.92, 0.93);
        cairo_rectangle(cr, x, top, w + 40, h + 28);
        cairo_fill(cr);
        cairo_set_source_rgb(cr, 0.08, 0.08, 0.08);
        cairo_move_to(cr, x + 20, top + 14);
        pango_cairo_show_layout(cr, layout);
        top += h + 60;
    }
    pango_font_description_free(bold);
    pango_font_description_free(regular);
    g_object_unref(layout);

    std::string png;
    cairo_surface_write_to_png_stream(surface, appendBytes, &png);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return png;
}

}  // namespace

std::string withExif(const std::string& jpeg,
                     const std::vector<std::pair<std::string, std::string>>& tags) {
    return media().withExif(jpeg, tags);
}

void addPhotos(Files& out) {
    auto camera = [](const char* date) -> std::vector<std::pair<std::string, std::string>> {
        return {{"Exif.Image.Make", "Google"},
                {"Exif.Image.Model", "Pixel 8"},
                {"Exif.Image.DateTime", date},
                {"Exif.Photo.DateTimeOriginal", date}};
    };
    auto beach = camera("2024:08:16 19:48:02");
    // Where it was taken: what a case officer may never see, and Kinfolio
    // leaves out of the document.
    beach.insert(beach.end(), {{"Exif.GPSInfo.GPSLatitudeRef", "N"},
                               {"Exif.GPSInfo.GPSLatitude", "38/1 42/1 3012/100"},
                               {"Exif.GPSInfo.GPSLongitudeRef", "W"},
                               {"Exif.GPSInfo.GPSLongitude", "9/1 25/1 1830/100"}});
    out.emplace_back("Photos/PXL_20240816_184802.jpg", withExif(jpegOf(photo(0)), beach));
    out.emplace_back("Photos/PXL_20241228_114510.jpg",
                     withExif(jpegOf(photo(1)), camera("2024:12:28 11:45:10")));
    // Sent through a messenger, which drops the camera's tags: only the
    // name still tells the day.
    out.emplace_back("Photos/PHOTO-2025-03-22-16-05-31.jpg", jpegOf(photo(3)));

    out.emplace_back("Screenshots/Screenshot 2025-02-14 at 21.30.00.png",
                     screenshot(kPartner, {{false, "Happy Valentine's Day!"},
                                           {true, "Dinner at Luca's at 8?"},
                                           {false, "Yes! The door code is 4471"},
                                           {true, "See you soon"}}));
    out.emplace_back("Screenshots/Screenshot 2025-04-02 at 08.12.45.png",
                     screenshot(kPartner, {{false, "Flight booked for Friday"},
                                           {false, "Landing at 18:40"},
                                           {true, "I will be at the gate"}}));
}

}  // namespace kinfolio::ExampleFolder
