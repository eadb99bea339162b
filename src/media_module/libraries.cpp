#include "media_module/media_module.h"

#include <glib.h>
#include <vips/vips.h>

#include <exiv2/exiv2.hpp>
#include <mutex>

namespace kinfolio::MediaModule {

namespace {

void ignoreMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

}  // namespace

void startImageLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        // A damaged file makes libvips warn once per tile, thousands of lines
        // for one truncated PNG; a failure still arrives as an error.
        g_log_set_handler("VIPS", G_LOG_LEVEL_WARNING, ignoreMessage, nullptr);
        if (vips_init("kinfolio") != 0) return;  // every later call then fails and says none
        // The operation cache would keep decoded pictures that are never asked
        // for again, and it keys buffers by address: a new file read into the
        // same memory could be answered with the old picture.
        vips_cache_set_max(0);
        // Loaders that libvips itself marks as unfit for files from strangers;
        // pictures received in a chat are exactly that.
        vips_block_untrusted_set(TRUE);

        // exiv2 builds its XMP parser lazily, which is not safe once several
        // threads read metadata at the same time.
        Exiv2::XmpParser::initialize();
        // Damaged metadata is common and harmless here; it must not reach the
        // terminal.
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        // Without it HEIC and HEIF files open but show no EXIF at all.
        Exiv2::enableBMFF(true);
    });
}

}  // namespace kinfolio::MediaModule
