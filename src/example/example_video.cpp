#include <cairo.h>

#include <cmath>

#include "example/example_parts.h"
#include "example/example_video.h"
#include "media/module.h"

namespace kinfolio::ExampleFolder {

namespace {

// Evening at the sea, filmed upright on a phone: a sky that turns from blue
// to orange at the horizon, the sun sinking towards it, the light on the
// water moving with the waves, and a strip of beach.
void seaAtSunset(cairo_t* cr, double seconds) {
    const double width = 360, height = 640, horizon = 360;
    cairo_pattern_t* sky = cairo_pattern_create_linear(0, 0, 0, horizon);
    cairo_pattern_add_color_stop_rgb(sky, 0, 0.36, 0.45, 0.75);
    cairo_pattern_add_color_stop_rgb(sky, 0.6, 0.86, 0.6, 0.62);
    cairo_pattern_add_color_stop_rgb(sky, 1, 0.99, 0.72, 0.42);
    cairo_set_source(cr, sky);
    cairo_paint(cr);
    cairo_pattern_destroy(sky);

    cairo_set_source_rgb(cr, 1.0, 0.86, 0.5);
    cairo_arc(cr, 200, 300 + 12 * seconds, 38, 0, 2 * M_PI);
    cairo_fill(cr);

    cairo_pattern_t* sea = cairo_pattern_create_linear(0, horizon, 0, 520);
    cairo_pattern_add_color_stop_rgb(sea, 0, 0.25, 0.36, 0.58);
    cairo_pattern_add_color_stop_rgb(sea, 1, 0.12, 0.26, 0.45);
    cairo_set_source(cr, sea);
    cairo_rectangle(cr, 0, horizon, width, height - horizon);
    cairo_fill(cr);
    cairo_pattern_destroy(sea);

    cairo_set_source_rgb(cr, 1.0, 0.82, 0.55);
    for (int i = 0; i < 6; ++i) {
        double y = horizon + 14 + i * 22;
        double half = 36 - 4 * i + 6 * std::sin(seconds * 3 + i);
        cairo_rectangle(cr, 200 - half, y, 2 * half, 3);
    }
    cairo_fill(cr);

    cairo_set_source_rgb(cr, 0.91, 0.8, 0.6);
    cairo_move_to(cr, 0, 530);
    for (int x = 0; x <= 360; x += 30)
        cairo_line_to(cr, x, 520 + 8 * std::sin(x / 45.0 + seconds * 2));
    cairo_line_to(cr, width, height);
    cairo_line_to(cr, 0, height);
    cairo_close_path(cr);
    cairo_fill(cr);
}

}  // namespace

void addVideos(Files& out) {
    // Maya's first evening in Bergen, a few minutes before the beach photo:
    // a phone held upright stores landscape pixels and a quarter turn.
    VideoSpec clip;
    clip.width = 640;
    clip.height = 360;
    clip.rotation = 90;
    clip.framesPerSecond = 24;
    clip.duration = 3;
    clip.creationTime = "2024-08-16T19:05:12.000000Z";
    clip.scene = seaAtSunset;
    out.emplace_back("Videos/VID_20240816_190512.mp4", video(clip));
}

std::string video(const VideoSpec& spec) {
    return media().video(spec);
}

const ExampleMediaFunctions& media() {
    static const auto* table = static_cast<const ExampleMediaFunctions*>(
        Scanner::detail::moduleTable("kinfolio_example_media", sizeof(ExampleMediaFunctions)));
    return *table;
}

}  // namespace kinfolio::ExampleFolder
