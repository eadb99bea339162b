#pragma once

#include "model/text.h"

namespace kinfolio::Importer {

// One message line of a WhatsApp export. Group 1: the timestamp of an iPhone
// line (in square brackets); group 2: that of an Android line (followed by
// " - " or an en dash); group 3: sender and text.
const Regex& whatsappLine();

}  // namespace kinfolio::Importer
