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

// Whether the item's date lies within the settings' date range (always true
// when the range is off). Whole days, the last one included.
bool inRange(const Evidence& item, const Settings& settings);

// Every item of every source that is not left out, within the date range.
std::vector<Evidence> candidates(const ScanResult& scan, const Settings& settings);

// The written month of a date as year × 12 + month − 1: the same grouping and
// order as the "yyyy-MM" month key, from arithmetic instead of formatting.
int monthIndex(Instant date);

// Up to perMonth evenly spaced items of every calendar month.
IdSet sample(const std::vector<Evidence>& items, int perMonth);

// The ids plus the items just before and after each of them in its file.
IdSet withContext(const IdSet& ids, const std::vector<Evidence>& items);

// What the automatic rule picks.
IdSet proposed(const ScanResult& scan, const Settings& settings);

// The proposal corrected by addedItems and excludedItems (exclusion wins),
// ordered by date, file and position: what the layout receives.
std::vector<Evidence> selected(const ScanResult& scan, const Settings& settings);

// A user's tick on an item, recorded as a change to the settings. `proposal`
// is the current proposal (empty when nothing has been scanned).
void setSelected(Settings& settings, const IdSet& proposal, const std::string& itemID, bool on);
// "Back to Automatic Choice": forgets every tick, so the proposal stands.
void backToAutomaticChoice(Settings& settings);

// Items the export will contain: selected items that are not system lines.
int exportCount(const std::vector<Evidence>& selected);
// "4 messages, 2 photos", or "Nothing".
std::string summary(const std::vector<Evidence>& selected);
// "MMM yyyy" of every month between the first and last selected item with
// nothing selected.
std::vector<std::string> gapMonths(const std::vector<Evidence>& selected);
// "Nothing selected for Feb 2025, Mar 2025. Add material for those months if
// you have it."; empty without gaps.
std::string gapSentence(const std::vector<std::string>& gapMonths);
// How the selection was made, for the appendix.
std::string samplingNote(const Settings& settings);

}  // namespace kinfolio::Selection
