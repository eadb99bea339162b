// A KakaoTalk text export: both recognisers and the reader.
#include "fuzz/fuzz_support.h"
#include "importers/kakaotalk.h"

using namespace kinfolio;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = Fuzz::asText(data, size);
    Importer::looksLikeKakaoTalk(text);
    Importer::looksLikeKakaoTalkCsv(text);
    Fuzz::allowRefusal([&] { Importer::kakaoTalk(text, "fuzz"); });
    return 0;
}
