#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "importers/import_result.h"
#include "model/files.h"
#include "model/settings.h"

namespace kinfolio::Importer {

// Whether the text reads as a WhatsApp chat export (iPhone or Android lines).
bool looksLikeWhatsApp(std::string_view text);

// Every message of a WhatsApp chat text, each with the attachment it names;
// throws EvidenceError. When the text lies in `mapped`, the pages already
// read are released as reading goes on.
ImportResult whatsapp(std::string_view text, const std::string& fileID, DateOrder order,
                      MappedFile* mapped = nullptr);

// The attachment file name a message names, iPhone or Android style.
std::optional<std::string> whatsappAttachmentName(const std::string& text);

}  // namespace kinfolio::Importer
