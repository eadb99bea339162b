#include "app/item_list.h"

#include "model/calendar.h"
#include "model/text.h"

namespace kinfolio::ItemList {

std::string date(const Evidence& item) {
    return Calendar::format(item.date, "yyyy-MM-dd HH:mm");
}

std::string sender(const Evidence& item, const Importer::Redactor& redact) {
    if (item.sender.empty()) return "(" + std::string(rawValue(item.kind)) + ")";
    return redact(item.sender.str());
}

std::string textStart(const Evidence& item, const Importer::Redactor& redact, size_t limit) {
    std::string text = replaceAll(replaceAll(item.text, "\r\n", " "), "\n", " ");
    return prefixCodePoints(redact(replaceAll(text, "\r", " ")), limit);
}

}  // namespace kinfolio::ItemList
