#pragma once

#include <unicode/timezone.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "importers/json_reader.h"
#include "model/evidence.h"

// The "message_N.json" files of a Messenger or Instagram download.
namespace kinfolio::Importer {

struct MetaChat {
    std::string title;  // "title", else the participants joined with " & "
    std::vector<std::string> participants;
    std::vector<Evidence> items;  // in file order (Meta writes newest first)
};

bool isMeta(std::string_view data);

// Meta writes each UTF-8 byte of non-ASCII text as its own \u00XX character;
// this undoes it. Text that is plain ASCII, already holds characters above
// U+00FF, or does not decode, comes back unchanged.
std::string fixMeta(std::string_view text);

// Meta stores true instants (UTC milliseconds); each is moved into `zone`,
// daylight saving included, and kept as the wall-clock time there.
// `slack` as for parseJson. Throws EvidenceError.
MetaChat meta(std::string_view data, const std::string& fileID, const icu::TimeZone& zone,
              size_t slack = 0);
MetaChat meta(JsonValue root, const std::string& fileID, const icu::TimeZone& zone);

}  // namespace kinfolio::Importer
