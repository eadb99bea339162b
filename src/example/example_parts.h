#pragma once

#include <cairo.h>

#include <string>
#include <utility>
#include <vector>

#include "model/evidence.h"

// The pieces of the example folder, one function per kind of export.
namespace kinfolio::ExampleFolder {

using Files = std::vector<std::pair<std::string, std::string>>;

inline constexpr const char* kApplicant = "Maya Okafor";
inline constexpr const char* kPartner = "Jonas Berg";

// A written time in the zero-offset zone.
Instant at(int year, int month, int day, int hour, int minute, int second = 0);

// A picture as PNG bytes: a small scene drawn from `variant`.
std::string photo(int variant);

void addWhatsApp(Files& out);
void addTelegram(Files& out);
void addMeta(Files& out);
void addLine(Files& out);
void addSpreadsheets(Files& out);
void addEmails(Files& out);
void addPhotos(Files& out);
void addVideos(Files& out);
void addDocuments(Files& out);

// A cairo write function that appends to the std::string `closure`.
cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length);

// The image (JPEG, PNG, ...) with these EXIF tags added, as a phone's camera
// writes them ({"Exif.Photo.DateTimeOriginal", "2024:03:05 07:08:09"});
// values are read the way exiv2 reads them from text.
std::string withExif(const std::string& image,
                     const std::vector<std::pair<std::string, std::string>>& tags);

}  // namespace kinfolio::ExampleFolder
