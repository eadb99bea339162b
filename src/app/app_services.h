#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "layout/pdf_exporter.h"
#include "model/settings.h"
#include "model/source.h"
#include "selection/selection.h"

namespace kinfolio {

// The work the application model starts, as plain functions, so that the
// model can be driven with stand-ins and the real readers, sampling and PDF
// writer stay pure functions of the values handed to them.
struct AppServices {
    using Progress = std::function<void(size_t done, size_t total)>;
    using IdSet = std::set<std::string>;

    std::function<ScanResult(const std::string& folder, DateOrder order, const std::string& zone,
                             const Progress& progress)>
        scan;

    // All three point into the scan they are given.
    std::function<Selection::ItemRefs(const ScanResult&, const Settings&)> candidates;
    std::function<Selection::ItemRefs(const ScanResult&, const Settings&)> proposed;
    std::function<Selection::ItemRefs(const ScanResult&, const Settings&)> selected;
    // Records a tick on an item in the settings, given the current proposal.
    std::function<void(Settings&, const IdSet& proposal, const std::string& itemID, bool on)>
        setSelected;

    std::function<Output(const ExportInput&)> make;
    // Cuts make's PDF of the same input into parts of at most maxBytes.
    std::function<std::vector<std::string>(const ExportInput& input, const std::string& data,
                                           int64_t maxBytes)>
        split;

    // Screenshot text recognition after a scan; both may be left empty when
    // the scan reads screenshots itself.
    std::function<size_t(const ScanResult&)> screenshotsToRead;
    std::function<void(ScanResult&, const Progress&)> recognizeScreenshots;
    // Loads the text recogniser once at start, so the first screenshot does
    // not wait for it; may be left empty.
    std::function<void()> warmUp;

    // The real scanner, selection and PDF writer.
    static AppServices standard();
};

}  // namespace kinfolio
