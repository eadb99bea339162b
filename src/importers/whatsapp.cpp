#include "importers/whatsapp.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "importers/dates.h"
#include "importers/whatsapp_fast.h"
#include "importers/whatsapp_forms.h"
#include "importers/whatsapp_line.h"
#include "model/parallel.h"
#include "model/text.h"

namespace kinfolio::Importer {

const Regex& whatsappLine() {
    static const Regex line(
        "^(?:\\[(\\d{1,4}[/.-]\\d{1,2}[/.-]\\d{1,4},?\\s+\\d{1,2}:\\d{2}(?::\\d{2})?"
        "(?:\\s*[APap]\\.?\\s?[Mm]\\.?)?)\\]|(\\d{1,4}[/.-]\\d{1,2}[/.-]\\d{1,4},?\\s+"
        "\\d{1,2}:\\d{2}(?::\\d{2})?(?:\\s*[APap]\\.?\\s?[Mm]\\.?)?)\\s+[-\u2013])\\s*(.*)$");
    return line;
}

std::optional<WhatsAppLine> splitWhatsAppLine(std::string_view line) {
    icu::UnicodeString u = toUnicode(line);
    auto m = whatsappLine().matcher(u);
    if (!m->find()) return std::nullopt;
    auto stamp = groupText(*m, 1);
    if (!stamp) stamp = groupText(*m, 2);
    return WhatsAppLine{stamp.value_or(""), groupText(*m, 3).value_or("")};
}

bool startsLikeDate(std::string_view line) {
    static const Regex dateLike("^\\[?\\d{1,4}[/.-]\\d{1,2}[/.-]\\d{1,4}");
    return dateLike.find(toUnicode(line));
}

std::string normaliseTimestamp(std::string_view stamp) {
    std::string out;
    normaliseTimestamp(stamp, out);
    return out;
}

void normaliseTimestamp(std::string_view stamp, std::string& out) {
    out.clear();
    // Copied in runs between the characters that change: a comma, and the
    // first letter of a dotted "a.m." or "p.m.".
    size_t run = 0;
    for (size_t i = 0; i < stamp.size(); ++i) {
        char c = stamp[i];
        if (c == ',') {
            out.append(stamp, run, i - run);
            run = i + 1;
        } else if ((c == 'a' || c == 'A' || c == 'p' || c == 'P') && i + 3 < stamp.size() &&
                   stamp[i + 1] == '.' && (stamp[i + 2] == 'm' || stamp[i + 2] == 'M') &&
                   stamp[i + 3] == '.') {
            out.append(stamp, run, i - run);
            out += (c == 'a' || c == 'A') ? "AM" : "PM";
            i += 3;
            run = i + 1;
        }
    }
    out.append(stamp, run, stamp.size() - run);
}

std::optional<std::string> whatsappAttachmentName(const std::string& text) {
    // Both expressions need their literal words; most messages have neither.
    // The searches start at a rare character: one starting at a space would
    // stop at every word.
    if (text.find("<attached: ") != std::string::npos) {
        static const Regex iphone("<attached: ([^>]+)>");
        icu::UnicodeString u = toUnicode(text);
        auto m = iphone.matcher(u);
        if (m->find()) return groupText(*m, 1);
    }
    if (text.find("(file attached)") != std::string::npos) {
        static const Regex android("^(\\S.*\\.\\w{2,4}) \\(file attached\\)");
        icu::UnicodeString u = toUnicode(text);
        auto m = android.matcher(u);
        if (m->find()) return groupText(*m, 1);
    }
    return std::nullopt;
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
        if (whatsappLine().find(line) || isFormLine(toUtf8(line))) ++matching;
    }
    if (matching >= 2) return true;
    return matching == 1 && lines.size() < 3;
}

namespace {

// Exports put left-to-right marks and byte-order marks around names and times.
// Both marks are three bytes outside ASCII, so plain text is passed over.
bool hasInvisibleMarks(std::string_view line) {
    for (size_t i = plainAsciiEnd(line, 0); i < line.size(); i = plainAsciiEnd(line, i + 1)) {
        std::string_view three = line.substr(i, 3);
        if (three == "\u200E" || three == "\uFEFF") return true;
    }
    return false;
}

std::string withoutInvisibleMarks(std::string_view line) {
    return removeAll(removeAll(line, "\u200E"), "\uFEFF");
}

// The rest of a message line after its timestamp, which goes to `stamp` as
// written, or none. The fast matcher answers almost every line; the
// expression decides the odd ones, and then `slow` holds what both point to.
std::optional<std::string_view> messageLine(std::string_view line, bool plainAscii,
                                            std::string_view& stamp, WhatsAppLine& slow) {
    auto fast = fast::matchLine(line, plainAscii);
    if (fast.verdict == fast::Verdict::no) return std::nullopt;
    if (fast.verdict == fast::Verdict::yes) {
        stamp = fast.timestamp;
        return fast.rest;
    }
    auto split = splitWhatsAppLine(line);
    if (!split) return std::nullopt;
    slow = std::move(*split);
    stamp = slow.timestamp;
    return std::string_view(slow.rest);
}

bool dateLike(std::string_view line) {
    auto fast = fast::dateLikeStart(line);
    if (fast == fast::Verdict::unsure) return startsLikeDate(line);
    return fast == fast::Verdict::yes;
}

// Most stamps read as written; the rest are normalised into `normalised`
// first.
std::optional<Instant> messageDate(std::string_view stamp, DateOrder order,
                                   std::string& normalised) {
    if (auto t = fast::timestamp(stamp, order)) return t;
    normaliseTimestamp(stamp, normalised);
    if (auto t = fast::timestamp(normalised, order)) return t;
    return date(normalised, order);
}

// Looked at once its text is whole, while it is still at hand.
void nameAttachment(Evidence& e) {
    if (auto name = whatsappAttachmentName(e.text)) e.detailsForWriting().attachmentName = name;
}

// What one stretch of a chat reads as: its items are in the slots it was
// given, one per line at most (a file rewritten in place between the line
// count and the reading could hold more: it stops there). Lines are numbered
// in the whole chat: the stretch's first line follows line `firstLine`. Its
// first trouble ends it.
struct Stretch {
    size_t items = 0;
    std::vector<int64_t> headerLines;
    const char* trouble = nullptr;  // the message, finished by " on line N."
    int64_t troubleLine = 0;
    fast::OrderClues clues;
};

Stretch parseStretch(std::string_view text, int64_t firstLine, const SharedText& fileID,
                     DateOrder order, MappedFile* mapped, Evidence* slots, size_t slotCount) {
    Stretch out;
    std::string cleaned, normalised, otherRest;
    std::string_view stamp;
    WhatsAppLine slow;
    bool mayName = false;  // whether the last item's text may name an attachment
    fast::QuickLine quick;
    size_t start = 0;
    const char* released = text.data();
    int64_t n = firstLine;
    while (start <= text.size()) {
        // A chat of a hundred megabytes and its million items would
        // otherwise be resident together.
        if (mapped && text.data() + start - released >= (1 << 20)) {
            mapped->releaseBetween(released, text.data() + start);
            released = text.data() + start;
        }
        // Most lines are plain ASCII: one look finds their end, shows that
        // they need no closer one, and whether they may name an attachment.
        auto [end, marked] = plainAsciiRun(text, start, '<', '(');
        bool plain = end == text.size() || text[end] == '\n';
        if (!plain) end = std::min(text.find('\n', end), text.size());
        bool last = end == text.size();
        std::string_view line = text.substr(start, end - start);
        std::string_view fromLineStart = text.substr(start);
        start = end + 1;
        ++n;
        if (last && line.empty()) break;
        std::optional<std::string_view> rest;
        std::optional<Instant> when;
        // Nearly every message line has one of two shapes, read at once.
        if (plain && fast::quickLine(line, order, quick)) {
            out.clues.sawDate(quick.first, quick.second);
            rest = quick.rest;
            when = quick.date;
        } else {
            out.clues.lookAt(fromLineStart);
            if (!plain) {
                out.clues.unsure = out.clues.unsure || fast::holdsLineBreak(line);
                if (hasInvisibleMarks(line)) {
                    cleaned = withoutInvisibleMarks(line);
                    line = cleaned;
                }
            }
            // A timestamp that the shared date lists do not read may be in
            // a form that phones of other languages write.
            rest = messageLine(line, plain, stamp, slow);
            if (rest) when = messageDate(stamp, order, normalised);
            if (!when) {
                if (auto other = formLine(line, order)) {
                    otherRest = std::move(other->rest);
                    rest = otherRest;
                    when = other->date;
                }
            }
        }
        if (rest) {
            if (!when) {
                out.trouble = "Could not read the date";
                out.troubleLine = n;
                return out;
            }
            if (out.items == slotCount) {
                out.trouble = "The chat changed while it was read";
                out.troubleLine = n;
                return out;
            }
            if (out.items > 0 && mayName) nameAttachment(slots[out.items - 1]);
            mayName = !plain || marked;
            // Filled in its slot, which is new.
            Evidence& e = slots[out.items++];
            e.date = *when;
            size_t colon = rest->find(": ");
            if (colon == std::string_view::npos) {
                e.text = *rest;
            } else {
                // Some languages put a space before the colon: "Sam : hi".
                std::string_view sender = rest->substr(0, colon);
                bool mayEndInSpace =
                    !sender.empty() && (sender.back() == ' ' || sender.back() & 0x80);
                if (mayEndInSpace)
                    e.sender = trimWhitespace(sender);
                else
                    e.sender = sender;
                e.text = rest->substr(colon + 2);
            }
            if (!fileID.empty()) e.fileID = fileID;
            e.position = n;
        } else if (dateLike(line)) {
            out.trouble = "Unsupported timestamp";
            out.troubleLine = n;
            return out;
        } else if (out.items > 0) {
            std::string& body = slots[out.items - 1].text;
            body += '\n';
            body += line;
            mayName = mayName || !plain || marked;
        } else if (!line.empty()) {
            out.headerLines.push_back(n);
        }
        if (last) break;
    }
    if (out.items > 0 && mayName) nameAttachment(slots[out.items - 1]);
    return out;
}

// Where the chat may be cut so that each piece reads as it would in the
// whole: at the start of a line that begins a message, so that no message
// loses its continuation lines to the next piece. Below a megabyte one
// piece is quicker than starting threads.
std::vector<size_t> cutPoints(std::string_view text) {
    std::string cleaned;
    std::string_view stamp;
    WhatsAppLine slow;
    return Parallel::lineCuts(text, [&](std::string_view line) {
        if (hasInvisibleMarks(line)) {
            cleaned = withoutInvisibleMarks(line);
            line = cleaned;
        }
        return messageLine(line, false, stamp, slow).has_value();
    });
}

// Making a million slots is mostly the system handing out and clearing
// pages. Each piece asks for the pages of its own slots at once, so both
// cores share that work and the slots are then filled without a fault.
void prepareSlots(const Evidence* slots, size_t count) {
    const auto page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<uintptr_t>(slots);
    const uintptr_t first = (start + page - 1) & ~(page - 1),
                    end = (start + count * sizeof(Evidence)) & ~(page - 1);
    if (end > first) ::madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE);
}

// A large chat is read in pieces on every core and joined in order; the
// result is the one reading of the whole, line numbers included. Each piece
// fills its own stretch of one vector, a slot for each of its lines, so a
// million items are never held twice while the pieces are joined. None when
// the text holds carriage returns or broken bytes: it is to be mended first.
std::optional<ImportResult> parseLines(std::string_view text, const std::string& fileID,
                                       DateOrder order, MappedFile* mapped) {
    const SharedText sharedID(fileID);
    std::vector<size_t> cuts = cutPoints(text);
    size_t pieces = cuts.size() - 1;
    std::vector<LineLook> looks(pieces);
    Parallel::forEach(pieces, [&](size_t k) {
        looks[k] = lookOverLines(text.substr(cuts[k], cuts[k + 1] - cuts[k]));
    });
    std::vector<size_t> firstSlot(pieces + 1, 0);
    for (size_t k = 0; k < pieces; ++k) {
        if (!looks[k].wellFormed || looks[k].carriageReturn) return std::nullopt;
        firstSlot[k + 1] = firstSlot[k] + looks[k].lineFeeds + 1;
    }

    // The passes above have brought the whole file into memory, and the
    // slots are about to join it there: its pages go first, and each piece
    // reads its stretch in again and lets it go as it reads.
    if (mapped) mapped->releaseBetween(text.data(), text.data() + text.size());
    ImportResult result;
    result.items.reserve(firstSlot[pieces]);
    Parallel::forEach(pieces, [&](size_t k) {
        prepareSlots(result.items.data() + firstSlot[k], firstSlot[k + 1] - firstSlot[k]);
    });
    result.items.resize(firstSlot[pieces]);
    std::vector<Stretch> stretches(pieces);
    Parallel::forEach(pieces, [&](size_t k) {
        // The earlier pieces hold a line for each line feed.
        auto firstLine = static_cast<int64_t>(firstSlot[k] - k);
        stretches[k] = parseStretch(text.substr(cuts[k], cuts[k + 1] - cuts[k]), firstLine,
                                    sharedID, order, mapped, result.items.data() + firstSlot[k],
                                    firstSlot[k + 1] - firstSlot[k]);
    });

    size_t filled = 0;
    fast::OrderClues clues;
    for (size_t k = 0; k < pieces; ++k) {
        const Stretch& s = stretches[k];
        clues.join(s.clues);
        if (s.trouble)
            throw EvidenceError::invalid(std::string(s.trouble) + " on line " +
                                         std::to_string(s.troubleLine) + ".");
        for (int64_t line : s.headerLines)
            result.notes.push_back("Ignored header line " + std::to_string(line) + ".");
        auto from = result.items.begin() + static_cast<ptrdiff_t>(firstSlot[k]);
        if (filled != firstSlot[k])
            std::move(from, from + static_cast<ptrdiff_t>(s.items),
                      result.items.begin() + static_cast<ptrdiff_t>(filled));
        filled += s.items;
    }
    result.items.resize(filled);
    if (result.items.empty()) throw EvidenceError::invalid("No WhatsApp messages found.");
    result.orderSeen = clues.verdict();
    return result;
}

}  // namespace

ImportResult whatsapp(std::string_view text, const std::string& fileID, DateOrder order,
                      MappedFile* mapped) {
    if (auto result = parseLines(text, fileID, order, mapped)) return std::move(*result);
    // Mended first: broken bytes, and every line break as a line feed. The
    // dates at line starts stay the ones the expression finds in the text as
    // written; what they tell of a text with broken bytes is the
    // expression's to say.
    bool repaired = !isValidUtf8(text);
    std::string mended = repaired ? repairUtf8(text) : std::string(text);
    mended = replaceAll(replaceAll(mended, "\r\n", "\n"), "\r", "\n");
    ImportResult result = parseLines(mended, fileID, order, nullptr).value();
    if (repaired) result.orderSeen.reset();
    return result;
}

}  // namespace kinfolio::Importer
