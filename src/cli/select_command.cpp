#include "app/item_list.h"
#include "cli/commands.h"
#include "layout/redaction.h"
#include "selection/selection.h"

namespace kinfolio::cli {

namespace {

// One line per item: date, sender, the start of its text.
std::string itemLine(const Evidence& item, const Importer::Redactor& redact) {
    std::string line = ItemList::date(item) + "  " + ItemList::sender(item, redact);
    if (std::string text = ItemList::textStart(item, redact); !text.empty()) line += "  " + text;
    return line;
}

int runSelect(Invocation& inv) {
    std::string folder;
    if (!takeFolder(inv, folder)) return 2;
    ScanResult scan = scanFolder(inv, folder);
    if (inv.json)
        inv.out << selectionJson(scan, inv.settings).dump(2) << "\n";
    else
        printSelection(inv.out, scan, inv.settings);
    return finish(inv, 0);
}

}  // namespace

Json selectionJson(const ScanResult& scan, const Settings& settings) {
    Selection::ItemRefs chosen = Selection::selected(scan, settings);
    Json ids = Json::array();
    for (const Evidence* item : chosen)
        ids.push_back(item->id());
    Json j = Json::object();
    j["candidates"] = Selection::candidates(scan, settings).size();
    j["selected"] = std::move(ids);
    j["summary"] = Selection::summary(chosen);
    j["exportCount"] = Selection::exportCount(chosen);
    j["gapMonths"] = Selection::gapMonths(chosen);
    j["samplingNote"] = Selection::samplingNote(settings);
    return j;
}

void printSelection(std::ostream& out, const ScanResult& scan, const Settings& settings) {
    Selection::ItemRefs chosen = Selection::selected(scan, settings);
    int count = Selection::exportCount(chosen);
    out << Selection::summary(chosen) << "\n"
        << count << (count == 1 ? " item" : " items") << " in the export.\n";
    if (std::string gaps = Selection::gapSentence(Selection::gapMonths(chosen)); !gaps.empty())
        out << gaps << "\n";
    out << Selection::samplingNote(settings) << "\n";
    if (!chosen.empty()) out << "\n";
    Importer::Redactor redact(settings.hiddenText);
    for (const Evidence* item : chosen)
        out << itemLine(*item, redact) << "\n";
}

Command selectCommand() {
    return Command{
        "select", "select FOLDER [--json]",
        "Read a materials folder and list the items the document would contain.",
        "Samples every month of every chat and media group as the settings say, applies the\n"
        "items added and removed by hand, and prints what the selection covers, then each\n"
        "selected item (date, sender, the start of its text). Nothing in the folder is changed.\n"
        "  --json   print one JSON object: the number of candidates, the selected item ids\n"
        "           in document order, the summary, the export count, the months without\n"
        "           anything selected and the sampling note\n",
        runSelect};
}

}  // namespace kinfolio::cli
