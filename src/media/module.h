#pragma once

#include <cairo.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/documents.h"
#include "media/images.h"
#include "media/pictures.h"
#include "media/text_recognition.h"
#include "media/video.h"

// The media libraries (libvips, exiv2, poppler, Tesseract, FFmpeg and what
// they bring along) are large: loaded with the program they would cost every
// run some 35 MB and 40 ms before it does anything. Their code is kept in a
// module, kinfolio-media.so, loaded the first time a picture, a video or a
// PDF is read; a scan of chats alone never loads it.
namespace kinfolio::Scanner::detail {

// How every table of the module begins: its size and the build it belongs
// to (KINFOLIO_MODULE_BUILD, the version and the interface's headers), which
// the program checks before it calls anything in it.
struct ModuleTable {
    size_t size;
    const char* build;
};

// What the module offers, one entry per function of the same name in this
// folder's headers (see there); the image reader is given a file name
// without folders.
struct MediaFunctions {
    ModuleTable head;
    std::optional<ImageInfo> (*imageInfo)(std::string_view bytes, const std::string& fileName);
    std::optional<Picture> (*picture)(const std::string& path, const std::string& fileID,
                                      int maxPixel, const std::vector<TextBox>& mask);
    std::optional<VideoInfo> (*videoInfo)(std::string_view bytes, const std::string& fileID);
    std::optional<DocumentInfo> (*documentInfo)(std::string_view bytes);
    std::optional<PageFacts> (*firstPageFacts)(const std::string& path, bool withText);
    bool (*drawFirstPage)(cairo_t* cr, const std::string& path,
                          const std::function<void()>& before);
    std::vector<TextBox> (*recognizeText)(const std::string& path, const std::string& fileID);
    void (*recognizeAll)(std::vector<RecognitionJob>& jobs,
                         const std::function<void(size_t read, size_t total)>& progress,
                         unsigned workers);
    void (*warmUpTextRecognition)();
    std::string (*recognitionLanguages)();
    void (*clearTextCache)();
};

// The table the module's function `entry` returns, checked to be `size`
// bytes long and of this build, the module loaded on first use from beside the program (a
// build) or from its library folder (an installation). Throws EvidenceError
// with a sentence for the user when it cannot be loaded.
const void* moduleTable(const char* entry, size_t size);

inline const MediaFunctions& mediaModule() {
    static const auto* table = static_cast<const MediaFunctions*>(
        moduleTable("kinfolio_media_functions", sizeof(MediaFunctions)));
    return *table;
}

}  // namespace kinfolio::Scanner::detail
