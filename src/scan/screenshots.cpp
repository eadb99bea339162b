#include "scan/screenshots.h"

#include "media/text_recognition.h"

namespace kinfolio::Scanner {

namespace {

template <typename Scan, typename Visit>
void eachScreenshotToRead(Scan& scan, Visit visit) {
    for (auto& source : scan.sources) {
        if (source.kind != SourceKind::screenshots) continue;
        for (auto& item : source.items)
            if (item.details().textBoxes.empty() && item.details().imageURL) visit(item);
    }
}

}  // namespace

size_t screenshotsToRead(const ScanResult& scan) {
    size_t count = 0;
    eachScreenshotToRead(scan, [&](const Evidence&) { ++count; });
    return count;
}

void recognizeScreenshots(ScanResult& scan, const Progress& progress) {
    std::vector<Evidence*> items;
    std::vector<RecognitionJob> jobs;
    eachScreenshotToRead(scan, [&](Evidence& item) {
        items.push_back(&item);
        jobs.push_back({*item.details().imageURL, item.fileID.str(), {}});
    });
    if (jobs.empty()) return;
    recognizeAll(jobs, progress);
    for (size_t i = 0; i < jobs.size(); ++i) {
        if (jobs[i].boxes.empty()) continue;
        std::string text;
        for (const auto& box : jobs[i].boxes)
            text += (text.empty() ? "" : "\n") + box.text;
        items[i]->text = std::move(text);
        items[i]->detailsForWriting().textBoxes = std::move(jobs[i].boxes);
    }
}

}  // namespace kinfolio::Scanner
