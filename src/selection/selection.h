#pragma once

#include <set>
#include <string>
#include <vector>

#include "model/settings.h"
#include "model/source.h"

// Which items go into the document: an even sample of every month of every
// chat and media group, corrected by the user's own ticks.
namespace kinfolio::Selection {

using IdSet = std::set<std::string>;
// Items of a scan by address, in place of copies: a scan of a million items
// is handed around without duplicating it. Valid while that scan lives.
using ItemRefs = std::vector<const Evidence*>;

// Whether the item's date lies within the settings' date range (always true
// when the range is off). Whole days, the last one included.
bool inRange(const Evidence& item, const Settings& settings);

// Every item of every source that is not left out, within the date range.
ItemRefs candidates(const ScanResult& scan, const Settings& settings);

// The written month of a date as year × 12 + month − 1: the same grouping and
// order as the "yyyy-MM" month key, from arithmetic instead of formatting.
int monthIndex(Instant date);

// Up to perMonth evenly spaced items of every calendar month.
IdSet sample(const ItemRefs& items, int perMonth);

// The ids plus the items just before and after each of them in its file.
IdSet withContext(const IdSet& ids, const ItemRefs& items);

// What the automatic rule picks, without the user's ticks.
ItemRefs proposed(const ScanResult& scan, const Settings& settings);

// The proposal corrected by addedItems and excludedItems (exclusion wins),
// ordered by date, file and position: what the layout receives.
ItemRefs selected(const ScanResult& scan, const Settings& settings);

// How many chats hold at least one of the items (or an item sharing the id
// of one): the conversations a document of those items draws on.
int chatCount(const ScanResult& scan, const ItemRefs& items);

// A user's tick on an item, recorded as a change to the settings. `proposal`
// holds the ids of the current proposal, at least the item's own when it is
// proposed (empty when nothing has been scanned).
void setSelected(Settings& settings, const IdSet& proposal, const std::string& itemID, bool on);
// "Back to Automatic Choice": forgets every tick, so the proposal stands.
void backToAutomaticChoice(Settings& settings);

// Items the export will contain: selected items that are not system lines.
int exportCount(const ItemRefs& selected);
// "4 messages, 2 photos", or "Nothing".
std::string summary(const ItemRefs& selected);
// "MMM yyyy" of every month between the first and last selected item with
// nothing selected.
std::vector<std::string> gapMonths(const ItemRefs& selected);
// "Nothing selected for Feb 2025, Mar 2025. Add material for those months if
// you have it."; empty without gaps.
std::string gapSentence(const std::vector<std::string>& gapMonths);
// How the selection was made, for the appendix.
std::string samplingNote(const Settings& settings);

}  // namespace kinfolio::Selection
