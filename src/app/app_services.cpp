#include "app/app_services.h"

#include "media/text_recognition.h"
#include "scan/scanner.h"
#include "scan/screenshots.h"
#include "selection/selection.h"

namespace kinfolio {

AppServices AppServices::standard() {
    AppServices s;
    s.scan = [](const std::string& folder, DateOrder order, const std::string& zone,
                const Progress& progress) {
        return Scanner::scan(folder, order, zone, false, progress);
    };
    s.candidates = Selection::candidates;
    s.proposed = Selection::proposed;
    s.selected = Selection::selected;
    s.setSelected = Selection::setSelected;
    s.make = [](const ExportInput& input) { return PDFExporter::make(input); };
    s.split = PDFExporter::splitDrawn;
    s.screenshotsToRead = Scanner::screenshotsToRead;
    s.recognizeScreenshots = [](ScanResult& scan, const Progress& progress) {
        Scanner::recognizeScreenshots(scan, progress);
    };
    s.warmUp = Scanner::warmUpTextRecognition;
    return s;
}

}  // namespace kinfolio
