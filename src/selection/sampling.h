#pragma once

#include <vector>

#include "selection/selection.h"

// The sampling rules over item references and flags. The proposal runs them
// over a whole scan, where turning every item into an id string would cost
// more than the sampling itself.
namespace kinfolio::Selection {

using Flags = std::vector<char>;  // one per item of an ItemRefs

// Marks up to perMonth evenly spaced items of every calendar month.
Flags sampleFlags(const ItemRefs& items, int perMonth);

// Marks the chosen items and the items just before and after each of them in
// its file. An item sharing the id of a chosen one counts as chosen.
Flags contextFlags(const ItemRefs& items, const Flags& chosen);

}  // namespace kinfolio::Selection
