#include "support/fake_services.h"

#include <algorithm>

namespace kinfolio::testing {

namespace {

std::vector<Evidence> candidatesOf(const ScanResult& scan, const Settings& settings) {
    std::vector<Evidence> out;
    for (const auto& source : scan.sources)
        if (!settings.excludedSources.contains(source.id))
            out.insert(out.end(), source.items.begin(), source.items.end());
    return out;
}

AppServices::IdSet proposalOf(const ScanResult& scan, const Settings& settings) {
    AppServices::IdSet ids;
    int taken = 0;
    for (const auto& item : candidatesOf(scan, settings))
        if (settings.messagesPerMonth == 0 || taken++ < settings.messagesPerMonth)
            ids.insert(item.id());
    return ids;
}

}  // namespace

AppServices fakeServices(std::shared_ptr<FakeLog> log, size_t messages) {
    AppServices s;
    s.scan = [log, messages](const std::string& folder, DateOrder order, const std::string& zone,
                             const AppServices::Progress&) {
        ++log->scans;
        log->scannedZones.push_back(zone);
        log->scannedOrders.push_back(order);
        ScanResult scan;
        scan.folder = folder;
        Source chat;
        chat.id = "chat1";
        chat.kind = SourceKind::whatsapp;
        chat.name = "Sam Lee";
        chat.files = {{"chat.txt", "f1", 100}};
        for (size_t i = 0; i < messages; ++i) {
            Evidence e;
            e.fileID = "f1";
            e.position = static_cast<int64_t>(i);
            e.date = 86400.0 * static_cast<double>(messages - i);  // newest first
            e.sender = i % 2 ? "Sam" : "Alex";
            e.text = "message " + std::to_string(i);
            chat.items.push_back(e);
        }
        scan.sources.push_back(chat);
        return scan;
    };
    s.candidates = candidatesOf;
    s.proposed = proposalOf;
    s.selected = [](const ScanResult& scan, const Settings& settings) {
        AppServices::IdSet proposal = proposalOf(scan, settings);
        std::vector<Evidence> out;
        for (const auto& item : candidatesOf(scan, settings))
            if ((proposal.contains(item.id()) || settings.addedItems.contains(item.id())) &&
                !settings.excludedItems.contains(item.id()))
                out.push_back(item);
        sortByDateFileAndPosition(out);
        return out;
    };
    s.setSelected = [](Settings& settings, const AppServices::IdSet& proposal,
                       const std::string& id, bool on) {
        if (on) {
            settings.excludedItems.erase(id);
            if (!proposal.contains(id)) settings.addedItems.insert(id);
        } else {
            settings.addedItems.erase(id);
            if (proposal.contains(id)) settings.excludedItems.insert(id);
        }
    };
    s.make = [log](const ExportInput& input) {
        if (input.items.empty()) throw EvidenceError::invalid("Nothing is selected.");
        for (const auto& item : input.items)
            if (!input.files.contains(item.fileID))
                throw EvidenceError::invalid(
                    "The source file for an item is missing. Scan the folder again.");
        ++log->renders;
        log->renderedItemCounts.push_back(input.items.size());
        Output out;
        out.data = input.settings.title + "|";
        for (const auto& item : input.items)
            out.data += item.id() + ";";
        out.pageCount = static_cast<int>(input.items.size());
        return out;
    };
    s.split = [](const std::string& data, int64_t maxBytes) {
        std::vector<std::string> parts;
        for (size_t at = 0; at < data.size(); at += static_cast<size_t>(maxBytes))
            parts.push_back(data.substr(at, static_cast<size_t>(maxBytes)));
        return parts;
    };
    return s;
}

}  // namespace kinfolio::testing
