#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "app/app_services.h"

namespace kinfolio::testing {

// What the stand-in services saw, shared with the copies the model keeps.
struct FakeLog {
    int scans = 0;
    int renders = 0;
    std::vector<size_t> renderedItemCounts;
    std::vector<std::string> scannedZones;
    std::vector<DateOrder> scannedOrders;
};

// Stand-ins for the scanner, the selection and the PDF writer: a folder
// scans as one chat of `messages` items, one a day; the proposal is the
// first messagesPerMonth items (0 = all); a render is one page per item and
// its bytes are the title and the item ids; splitting cuts the bytes into equal chunks.
// The export names follow the product's rules.
AppServices fakeServices(std::shared_ptr<FakeLog> log, size_t messages = 20);

}  // namespace kinfolio::testing
