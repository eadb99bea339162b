#include "media/module.h"
#include "media_module/media_module.h"

// The module's only exported symbols: its tables, which the program checks
// by their size before it calls anything in them.
extern "C" {

__attribute__((visibility("default"))) const void* kinfolio_media_functions() {
    using namespace kinfolio;
    static const Scanner::detail::MediaFunctions table{
        sizeof(Scanner::detail::MediaFunctions),
        MediaModule::imageInfo,
        MediaModule::picture,
        MediaModule::videoInfo,
        MediaModule::documentInfo,
        MediaModule::firstPageFacts,
        MediaModule::drawFirstPage,
        MediaModule::recognizeText,
        MediaModule::recognizeAll,
        MediaModule::warmUpTextRecognition,
        MediaModule::recognitionLanguages,
        MediaModule::clearTextCache,
    };
    return &table;
}

__attribute__((visibility("default"))) const void* kinfolio_example_media() {
    using namespace kinfolio;
    static const ExampleFolder::ExampleMediaFunctions table{
        sizeof(ExampleFolder::ExampleMediaFunctions),
        MediaModule::exampleVideo,
        MediaModule::jpegOf,
        MediaModule::withExif,
    };
    return &table;
}

}  // extern "C"
