#pragma once

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

// The real selection with instant stand-ins for the slow work, for tests of
// the model's timing: a folder scans as one chat of `messages` items, one a
// day, newest first in the file; a render is one page per item and its
// bytes are the title and the item ids; splitting cuts the bytes into equal
// chunks.
AppServices fakeServices(std::shared_ptr<FakeLog> log, size_t messages = 20);

}  // namespace kinfolio::testing
