#include "support/fake_services.h"

#include "support/chat_items.h"

namespace kinfolio::testing {

AppServices fakeServices(std::shared_ptr<FakeLog> log, size_t messages) {
    AppServices s = AppServices::standard();
    s.warmUp = {};  // nothing real to load, and the queues stay as the tests count them
    s.scan = [log, messages](const std::string& folder, DateOrder order, const std::string& zone,
                             const AppServices::Progress&) {
        ++log->scans;
        log->scannedZones.push_back(zone);
        log->scannedOrders.push_back(order);
        ScanResult scan;
        scan.folder = folder;
        Source& chat = scan.sources.emplace_back();
        chat.id = "chat1";
        chat.kind = SourceKind::whatsapp;
        chat.name = "Sam Lee";
        chat.files = {{"chat.txt", "f1", 100}};
        for (size_t i = 0; i < messages; ++i)
            chat.items.push_back(message("f1", static_cast<int64_t>(i),
                                         86400.0 * static_cast<double>(messages - i),
                                         i % 2 ? "Sam" : "Alex", "message " + std::to_string(i)));
        return scan;
    };
    s.make = [log](const ExportInput& input) {
        ++log->renders;
        log->renderedItemCounts.push_back(input.items.size());
        Output out;
        out.data = input.settings.title + "|";
        for (const auto& item : input.items)
            out.data += item.id() + ";";
        out.pageCount = static_cast<int>(input.items.size());
        return out;
    };
    s.split = [](const ExportInput&, const std::string& data, int64_t maxBytes) {
        std::vector<std::string> parts;
        for (size_t at = 0; at < data.size(); at += static_cast<size_t>(maxBytes))
            parts.push_back(data.substr(at, static_cast<size_t>(maxBytes)));
        return parts;
    };
    return s;
}

}  // namespace kinfolio::testing
