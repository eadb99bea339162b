#pragma once

#include <string>

#include "layout/redaction.h"
#include "model/evidence.h"

// The rows of the item list, in the window's item picker and in
// `kinfolio-cli select`: the user's hidden words are replaced there as in
// the document.
namespace kinfolio::ItemList {

// "2025-03-14 18:05"
std::string date(const Evidence& item);
// The sender, or the kind in brackets for an item without one: "(photo)".
std::string sender(const Evidence& item, const Importer::Redactor& redact);
// The start of the item's text on one line, at most `limit` characters. The
// whole line is redacted before it is shortened, so no cut leaves part of a
// hidden word.
std::string textStart(const Evidence& item, const Importer::Redactor& redact, size_t limit = 60);

}  // namespace kinfolio::ItemList
