#pragma once

#include <cairo.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "example/example_video.h"
#include "media/documents.h"
#include "media/images.h"
#include "media/pictures.h"
#include "media/text_recognition.h"
#include "media/video.h"

// The media module, kinfolio-media.so: all the code that needs libvips,
// exiv2, poppler, Tesseract or FFmpeg. The program loads it on first use and
// reaches it only through the tables entry.cpp exports; each function here
// does what its namesake in media/ or example/ promises.
namespace kinfolio::MediaModule {

// Starts libvips and exiv2 once per process, from whichever thread comes
// first. Safe to call before every use.
void startImageLibraries();

// Whether a file id may name a file in a cache folder. Ids are SHA-256 hex
// digits, but they arrive as plain strings: a "/" or ".." must never reach a
// path.
bool isCacheName(std::string_view id);
// `privateCacheDirectory(sub)`; none when the cache cannot be used, so the
// caller goes on without it.
std::optional<std::string> cacheFolder(const std::string& sub);

// `fileName` is a name without folders.
std::optional<Scanner::ImageInfo> imageInfo(std::string_view bytes, const std::string& fileName);
std::optional<Scanner::Picture> picture(const std::string& path, const std::string& fileID,
                                        int maxPixel, const std::vector<TextBox>& mask);
std::optional<Scanner::VideoInfo> videoInfo(std::string_view bytes, const std::string& fileID);
std::optional<Scanner::DocumentInfo> documentInfo(std::string_view bytes);
std::optional<Scanner::PageFacts> firstPageFacts(const std::string& path, bool withText);
bool drawFirstPage(cairo_t* cr, const std::string& path, const std::function<void()>& before);

std::vector<TextBox> recognizeText(const std::string& path, const std::string& fileID);
void recognizeAll(std::vector<Scanner::RecognitionJob>& jobs,
                  const std::function<void(size_t read, size_t total)>& progress, unsigned workers);
void warmUpTextRecognition();
std::string recognitionLanguages();
void clearTextCache();

std::string exampleVideo(const ExampleFolder::VideoSpec& spec);
std::string jpegOf(const std::string& png);
std::string withExif(const std::string& jpeg,
                     const std::vector<std::pair<std::string, std::string>>& tags);

}  // namespace kinfolio::MediaModule
