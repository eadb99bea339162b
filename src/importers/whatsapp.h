#pragma once

#include <string_view>

#include "importers/import_result.h"
#include "model/files.h"
#include "model/settings.h"

namespace kinfolio::Importer {

// Whether the text reads as a WhatsApp chat export (iPhone or Android lines).
bool looksLikeWhatsApp(std::string_view text);

// Every message of a WhatsApp chat text; throws EvidenceError. When the text
// lies in `mapped`, the pages already read are released as reading goes on.
ImportResult whatsapp(std::string_view text, const std::string& fileID, DateOrder order,
                      MappedFile* mapped = nullptr);

}  // namespace kinfolio::Importer
