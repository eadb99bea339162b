#include "media/text_recognition.h"

#include "media/module.h"

namespace kinfolio::Scanner {

std::vector<TextBox> recognizeText(const std::string& path, const std::string& fileID) {
    return detail::mediaModule().recognizeText(path, fileID);
}

void recognizeAll(std::vector<RecognitionJob>& jobs,
                  const std::function<void(size_t read, size_t total)>& progress,
                  unsigned workers) {
    detail::mediaModule().recognizeAll(jobs, progress, workers);
}

void warmUpTextRecognition() {
    try {
        detail::mediaModule().warmUpTextRecognition();
    } catch (const EvidenceError&) {
        // Without the module no screenshot is read, and each says why.
    }
}

std::string recognitionLanguages() {
    return detail::mediaModule().recognitionLanguages();
}

void detail::clearTextCacheForTesting() {
    mediaModule().clearTextCache();
}

}  // namespace kinfolio::Scanner
