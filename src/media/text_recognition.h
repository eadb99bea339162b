#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "model/evidence.h"

namespace kinfolio::Scanner {

// The text lines of an image, each with its box (fractions of the image,
// origin at the lower-left corner), in the order the recogniser reads them.
// Empty when nothing was found or the image cannot be read. Each file id is
// recognised once: the answer is kept for the life of the process and on
// disk in the private cache. Any thread may call it.
std::vector<TextBox> recognizeText(const std::string& path, const std::string& fileID);

struct RecognitionJob {
    std::string path, fileID;
    std::vector<TextBox> boxes;  // filled in by recognizeAll
};

// Recognises every job with `workers` threads (0: one per core), the calling
// thread among them. `progress(read, total)` is called once per job, in job
// order (1, total) … (total, total), never by two threads at once.
void recognizeAll(std::vector<RecognitionJob>& jobs,
                  const std::function<void(size_t read, size_t total)>& progress,
                  unsigned workers = 0);

// Loads this thread's recogniser and runs it once on a blank image, so that
// the first real screenshot does not pay for it. Never fails.
void warmUpTextRecognition();

// The Tesseract languages every recogniser loads, joined by "+".
std::string recognitionLanguages();

namespace detail {
// Forgets the answers kept in this process (not those on disk).
void clearTextCacheForTesting();
}  // namespace detail

}  // namespace kinfolio::Scanner
