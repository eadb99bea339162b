#include "media/module.h"
#include "media_module/media_module.h"

// The module's only exported symbols: its tables, which the program checks
// by their size and build before it calls anything in them.
extern "C" {

__attribute__((visibility("default"))) const kinfolio::Scanner::detail::ModuleTable*
kinfolio_media_functions() {
    using namespace kinfolio;
    static const Scanner::detail::MediaFunctions table{
        {sizeof(Scanner::detail::MediaFunctions), KINFOLIO_MODULE_BUILD},
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
    return &table.head;
}

__attribute__((visibility("default"))) const kinfolio::Scanner::detail::ModuleTable*
kinfolio_example_media() {
    using namespace kinfolio;
    static const ExampleFolder::ExampleMediaFunctions table{
        {sizeof(ExampleFolder::ExampleMediaFunctions), KINFOLIO_MODULE_BUILD},
        MediaModule::exampleVideo,
        MediaModule::jpegOf,
        MediaModule::withExif,
    };
    return &table.head;
}

}  // extern "C"
