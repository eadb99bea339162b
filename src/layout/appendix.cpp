#include "layout/layout.h"
#include "model/text.h"
#include "selection/selection.h"

namespace kinfolio {

std::vector<Piece> Layout::appendix() {
    const double width = contentWidth();
    std::vector<Piece> pieces;
    auto add = [&](std::vector<Piece> more) {
        pieces.insert(pieces.end(), more.begin(), more.end());
    };
    add(textBlock("How this file was prepared", 16, true, Colours::ink, 10, width));
    pieces.front().breakBefore = true;
    pieces.front().marker = "appendix";

    size_t estimated = 0;
    for (const auto& item : input.items)
        estimated += item.dateIsEstimated ? 1 : 0;
    std::string dates =
        "Times are shown exactly as written in each source, without time-zone conversion.";
    if (estimated > 0)
        dates += " " + std::to_string(estimated) +
                 " item(s) have no recorded date and use the date in the file name or the "
                 "file\u2019s own date; they are marked \u201cdate estimated\u201d.";
    size_t rules = hiddenRuleCount();
    std::string hidden =
        rules > 0
            ? std::to_string(rules) +
                  " word(s) or phrase(s) were replaced with [REDACTED] in this file; the original "
                  "wording is not present in it. In screenshots, lines where on-device text "
                  "recognition found them are covered in black in the image itself; recognition "
                  "can miss text. Photos and videos are shown as they are; the first page of a "
                  "document that holds hidden text is left out."
            : "No text was hidden.";
    std::string references =
        "\u201cSource 3, entry 12\u201d points at the source file listed below and the position "
        "in it: the line number in text exports, the row in spreadsheets, and the message number "
        "in Telegram, Messenger and Instagram exports, counted from the start of the file across "
        "every chat it holds. Messenger and Instagram store times in "
        "UTC; they are shown in " +
        replaceAll(s.timeZoneID, "_", " ") + " time.";
    const std::pair<const char*, std::string> sectionsText[] = {
        {"Selection", Selection::samplingNote(s)},
        {"Dates and times", dates},
        {"Hidden text", hidden},
        {"Source references", references},
        {"Original files",
         "The applicant\u2019s original files were read but never changed. Each is listed below "
         "with its SHA-256 fingerprint, which identifies the exact file that was used. A "
         "fingerprint does not prove who made a file or that it was not edited before."},
    };
    for (const auto& [heading, body] : sectionsText) {
        add(textBlock(heading, 10.5, true, Colours::ink, 2, width));
        add(textBlock(body, 10, false, Colours::ink, 12, width));
    }

    add(textBlock("Source files", 13, true, Colours::ink, 6, width));
    for (const auto& id : sourceOrder) {
        auto found = input.files.find(id);
        if (found == input.files.end()) continue;
        const FileRecord& file = found->second;
        add(textBlock(
            "Source " + std::to_string(sourceNumbers[id]) + " \u00b7 " + redact(file.path), 9.5,
            true, Colours::ink, 1, width));
        add(textBlock("SHA-256 " + file.sha256 + " \u00b7 " + fileSize(file.bytes), 8, false,
                      Colours::muted, 7, width));
    }
    return pieces;
}

}  // namespace kinfolio
