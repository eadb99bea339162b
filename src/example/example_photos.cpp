#include <cairo.h>

#include <cmath>

#include "example/example_parts.h"

namespace kinfolio::ExampleFolder {

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

namespace {

void person(cairo_t* cr, double x, double ground, double r, double g, double b) {
    cairo_set_source_rgb(cr, 0.32, 0.22, 0.16);
    cairo_arc(cr, x, ground - 118, 17, 0, 2 * M_PI);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, r, g, b);
    cairo_move_to(cr, x - 24, ground - 30);
    cairo_line_to(cr, x - 16, ground - 98);
    cairo_line_to(cr, x + 16, ground - 98);
    cairo_line_to(cr, x + 24, ground - 30);
    cairo_close_path(cr);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.2, 0.2, 0.25);
    cairo_rectangle(cr, x - 14, ground - 30, 10, 30);
    cairo_rectangle(cr, x + 4, ground - 30, 10, 30);
    cairo_fill(cr);
}

}  // namespace

std::string photo(int variant) {
    // Scenes: 0 beach at sunset, 1 snowy hills, 2 city park, 3 mountains.
    static constexpr double skies[4][2][3] = {
        {{0.98, 0.62, 0.38}, {0.99, 0.85, 0.6}},
        {{0.62, 0.75, 0.9}, {0.9, 0.94, 0.98}},
        {{0.35, 0.6, 0.92}, {0.7, 0.85, 0.98}},
        {{0.4, 0.55, 0.85}, {0.85, 0.9, 0.95}},
    };
    static constexpr double grounds[4][3] = {
        {0.93, 0.82, 0.6}, {0.97, 0.97, 0.99}, {0.36, 0.66, 0.3}, {0.45, 0.55, 0.35}};
    int v = ((variant % 4) + 4) % 4;
    const int width = 640, height = 480;
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);

    cairo_pattern_t* sky = cairo_pattern_create_linear(0, 0, 0, 320);
    cairo_pattern_add_color_stop_rgb(sky, 0, skies[v][0][0], skies[v][0][1], skies[v][0][2]);
    cairo_pattern_add_color_stop_rgb(sky, 1, skies[v][1][0], skies[v][1][1], skies[v][1][2]);
    cairo_set_source(cr, sky);
    cairo_paint(cr);
    cairo_pattern_destroy(sky);

    cairo_set_source_rgb(cr, 1.0, 0.93, 0.55);
    cairo_arc(cr, 120 + 110 * v, 110 - 12 * v, 42, 0, 2 * M_PI);
    cairo_fill(cr);

    if (v == 0) {
        cairo_set_source_rgb(cr, 0.2, 0.45, 0.7);
        cairo_rectangle(cr, 0, 300, width, 60);
        cairo_fill(cr);
    } else {
        cairo_set_source_rgb(cr, grounds[v][0] * 0.8, grounds[v][1] * 0.8, grounds[v][2] * 0.8);
        cairo_move_to(cr, 0, 330);
        for (int i = 0; i <= 8; ++i)
            cairo_line_to(cr, i * 80.0, (i % 2 ? 190.0 : 270.0) + 10 * v);
        cairo_line_to(cr, width, 330);
        cairo_close_path(cr);
        cairo_fill(cr);
    }
    cairo_set_source_rgb(cr, grounds[v][0], grounds[v][1], grounds[v][2]);
    cairo_rectangle(cr, 0, v == 0 ? 360 : 330, width, height);
    cairo_fill(cr);

    person(cr, 280, 440, 0.85, 0.25, 0.3);
    person(cr, 350, 440, 0.2, 0.4, 0.75);

    std::string png;
    cairo_surface_write_to_png_stream(surface, appendBytes, &png);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return png;
}

}  // namespace kinfolio::ExampleFolder
