#include "selection/sampling.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "model/calendar.h"
#include "selection/selection.h"

namespace kinfolio::Selection {

namespace {

// Positions 0..n-1 of `items` in the order `less` gives, stable. A chat's
// items usually arrive in that order already, so the sort is skipped then.
template <typename Less>
std::vector<size_t> sortedOrder(const ItemRefs& items, Less less) {
    std::vector<size_t> order(items.size());
    std::iota(order.begin(), order.end(), size_t{0});
    auto byItem = [&](size_t a, size_t b) { return less(*items[a], *items[b]); };
    if (!std::is_sorted(order.begin(), order.end(), byItem))
        std::stable_sort(order.begin(), order.end(), byItem);
    return order;
}

bool byDateAndPosition(const Evidence& a, const Evidence& b) {
    if (a.date != b.date) return a.date < b.date;
    return a.position < b.position;
}

bool byFileAndPosition(const Evidence& a, const Evidence& b) {
    if (a.fileID != b.fileID) return a.fileID < b.fileID;
    return a.position < b.position;
}

bool sameID(const Evidence& a, const Evidence& b) {
    return a.position == b.position && a.fileID == b.fileID;
}

// Marks k evenly spaced items of the month run order[first .. first + n).
void takeEvenly(const std::vector<size_t>& order, size_t first, size_t n, size_t k, Flags& taken) {
    if (k >= n) {
        for (size_t i = 0; i < n; ++i)
            taken[order[first + i]] = 1;
    } else if (k == 1) {
        taken[order[first]] = 1;
    } else {
        for (size_t i = 0; i < k; ++i) {
            double at = std::round(static_cast<double>(n - 1) * static_cast<double>(i) /
                                   static_cast<double>(k - 1));
            taken[order[first + static_cast<size_t>(at)]] = 1;
        }
    }
}

}  // namespace

int monthIndex(Instant date) {
    Calendar::CivilTime c = Calendar::civil(date);
    return c.year * 12 + c.month - 1;
}

Flags sampleFlags(const ItemRefs& items, int perMonth) {
    Flags taken(items.size(), 0);
    if (perMonth < 1) return taken;
    // Sorting the whole list by date and position sorts each month the same
    // way, and a month only grows with the date, so every month is one run.
    std::vector<size_t> order = sortedOrder(items, byDateAndPosition);
    std::vector<int> months(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        months[i] = monthIndex(items[order[i]]->date);
    for (size_t first = 0; first < order.size();) {
        size_t end = first + 1;
        while (end < order.size() && months[end] == months[first])
            ++end;
        takeEvenly(order, first, end - first, static_cast<size_t>(perMonth), taken);
        first = end;
    }
    return taken;
}

Flags contextFlags(const ItemRefs& items, const Flags& chosen) {
    Flags marked(items.size(), 0);
    // One stable sort by file and position keeps each file's items together
    // and in position order, as grouping by file and sorting each group does.
    std::vector<size_t> order = sortedOrder(items, byFileAndPosition);
    auto sameFile = [&](size_t a, size_t b) {
        return items[order[a]]->fileID == items[order[b]]->fileID;
    };
    for (size_t first = 0; first < order.size();) {
        // An id names every item of its file and position at once.
        size_t end = first;
        bool isChosen = false;
        for (; end < order.size() && sameID(*items[order[end]], *items[order[first]]); ++end)
            if (chosen[order[end]]) isChosen = true;
        if (isChosen) {
            for (size_t i = first; i < end; ++i)
                marked[order[i]] = 1;
            if (first > 0 && sameFile(first - 1, first)) marked[order[first - 1]] = 1;
            if (end < order.size() && sameFile(end, first)) marked[order[end]] = 1;
        }
        first = end;
    }
    return marked;
}

IdSet sample(const ItemRefs& items, int perMonth) {
    Flags taken = sampleFlags(items, perMonth);
    IdSet ids;
    for (size_t i = 0; i < items.size(); ++i)
        if (taken[i]) ids.insert(items[i]->id());
    return ids;
}

IdSet withContext(const IdSet& ids, const ItemRefs& items) {
    Flags chosen;
    chosen.reserve(items.size());
    for (const Evidence* item : items)
        chosen.push_back(ids.contains(item->id()) ? 1 : 0);
    Flags marked = contextFlags(items, chosen);
    IdSet result = ids;
    for (size_t i = 0; i < items.size(); ++i)
        if (marked[i]) result.insert(items[i]->id());
    return result;
}

}  // namespace kinfolio::Selection
