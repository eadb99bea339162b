#include "importers/whatsapp.h"

#include "importers/whatsapp_line.h"
#include "model/text.h"

namespace kinfolio::Importer {

const Regex& whatsappLine() {
    static const Regex line(
        "^(?:\\[(\\d{1,4}[/.-]\\d{1,2}[/.-]\\d{1,4},?\\s+\\d{1,2}:\\d{2}(?::\\d{2})?"
        "(?:\\s*[APap]\\.?\\s?[Mm]\\.?)?)\\]|(\\d{1,4}[/.-]\\d{1,2}[/.-]\\d{1,4},?\\s+"
        "\\d{1,2}:\\d{2}(?::\\d{2})?(?:\\s*[APap]\\.?\\s?[Mm]\\.?)?)\\s+[-\u2013])\\s*(.*)$");
    return line;
}

bool looksLikeWhatsApp(std::string_view text) {
    icu::UnicodeString prefix = toUnicode(prefixCodePoints(text, 4000));
    // Lines split at any line break, empty ones left out.
    std::vector<icu::UnicodeString> lines;
    int32_t start = 0;
    for (int32_t i = 0; i <= prefix.length(); ++i) {
        bool atEnd = i == prefix.length();
        char16_t c = atEnd ? 0 : prefix.charAt(i);
        bool isBreak = c == '\n' || c == '\r' || c == 0x0B || c == 0x0C || c == 0x85 ||
                       c == 0x2028 || c == 0x2029;
        if (atEnd || isBreak) {
            if (i > start) lines.push_back(prefix.tempSubStringBetween(start, i));
            start = i + 1;
        }
    }
    int matching = 0;
    for (size_t i = 0; i < lines.size() && i < 30; ++i) {
        icu::UnicodeString line = lines[i];
        line.findAndReplace(icu::UnicodeString(u"\u200E"), icu::UnicodeString());
        line.findAndReplace(icu::UnicodeString(u"\uFEFF"), icu::UnicodeString());
        if (whatsappLine().find(line)) ++matching;
    }
    if (matching >= 2) return true;
    return matching == 1 && lines.size() < 3;
}

}  // namespace kinfolio::Importer
