#pragma once

#include <optional>
#include <string_view>

#include "model/evidence.h"
#include "model/settings.h"

// Hand-written readers of WhatsApp lines and timestamps. A chat holds up to
// millions of lines; the ICU expression and date parsing cost microseconds
// each, these nanoseconds. Each one answers only where it is sure and says so
// otherwise, and then the caller asks the ICU reference (whatsappLine() and
// Importer::date), so the results are always the reference's.
namespace kinfolio::Importer::fast {

enum class Verdict { yes, no, unsure };

// A line of a WhatsApp export split as whatsappLine() splits it.
struct LineMatch {
    Verdict verdict = Verdict::unsure;
    std::string_view timestamp;  // group 1 or 2
    std::string_view rest;       // group 3
};
// `plainAscii`: the caller has seen that the line holds only ASCII from 0x0E
// up, so it holds no line terminator to look for.
LineMatch matchLine(std::string_view line, bool plainAscii = false);

// The two shapes nearly every export writes, read at once from a line of
// plain ASCII (no character below 0x0E or outside ASCII):
//   [d/M/y, H:mm:ss] rest   and   d/M/y, H:mm - rest
// with "." for "/", seconds or an " AM"/" PM" marker or neither, a 2- or
// 4-digit year. Exactly what matchLine and timestamp() answer for such a
// line; false for any other shape, which the general reading decides.
struct QuickLine {
    Instant date = 0;
    std::string_view rest;
    int first = 0, second = 0;  // the day and month, in the line's order
};
bool quickLine(std::string_view line, DateOrder order, QuickLine& out);

// Whether the line begins like a timestamp: ^\[?\d{1,4}[/.-]\d{1,2}[/.-]\d{1,4}
Verdict dateLikeStart(std::string_view line);

// The instant of a WhatsApp timestamp for the common day/month/year forms;
// none when unsure. A stamp as written, with its comma after the year, reads
// as its normalised form (commas removed, dotted markers rewritten) does.
std::optional<Instant> timestamp(std::string_view text, DateOrder order);

// What the dates at the starts of a chat's lines tell of the order of day
// and month, gathered a line at a time as Importer::detectOrder gathers them
// over a whole text.
struct OrderClues {
    bool unsure = false, any = false, dayFirst = false, monthFirst = false;
    // A line from its start on; only its first ten bytes count, and a line
    // shorter than that may run on into the next.
    void lookAt(std::string_view from);
    // A line whose start reads as a date with these first two numbers.
    void sawDate(int first, int second);
    void join(const OrderClues& other);
    // What Importer::detectOrder answers for the lines looked at: the outer
    // none when unsure, the inner when they tell neither order or both.
    std::optional<std::optional<DateOrder>> verdict() const;
};

// Whether the text holds a line break that the expressions see: \n, \v,
// \f, \r, U+0085, U+2028 or U+2029. Plain ASCII is passed over sixteen bytes
// at a time.
bool holdsLineBreak(std::string_view s);

// Importer::detectOrder over a whole chat: the outer none means unsure.
std::optional<std::optional<DateOrder>> detectOrder(std::string_view text);

// The order that the dates in a few stretches spread over a chat tell; none
// when they tell neither or the look is unsure. A guess: the rest of the
// chat may say otherwise.
std::optional<DateOrder> likelyOrder(std::string_view text);

}  // namespace kinfolio::Importer::fast
