#include <filesystem>

#include "app/export_job.h"
#include "cli/commands.h"
#include "model/text.h"

namespace kinfolio::cli {

namespace {

namespace fs = std::filesystem;

// Without -o the file goes into the current folder under the proposed name;
// -o naming a folder puts it there; any other -o is the file itself.
std::string targetPath(const Invocation& inv) {
    std::string proposed = ExportJob::baseName(inv.settings) + ".pdf";
    if (!inv.output) return (fs::current_path() / proposed).string();
    std::error_code ec;
    if (fs::is_directory(*inv.output, ec)) return (fs::path(*inv.output) / proposed).string();
    return *inv.output;
}

bool insideFolder(const std::string& path, const std::string& folder) {
    std::error_code ec;
    std::string p = fs::weakly_canonical(fs::absolute(path), ec).string();
    std::string f = fs::weakly_canonical(fs::absolute(folder), ec).string();
    return startsWith(p, f + "/");
}

int runExport(Invocation& inv) {
    std::string folder;
    if (!takeFolder(inv, folder)) return 2;
    std::string target = targetPath(inv);
    // The materials folder is the user's originals: only an explicit -o
    // may put the document there.
    if (!inv.output && insideFolder(target, folder)) {
        inv.err << "kinfolio-cli: the current folder is inside the materials folder; give -o "
                   "to say where the PDF goes.\n";
        return 2;
    }

    ScanResult scan = scanFolder(inv, folder);
    AppServices services = AppServices::standard();
    // On a terminal the drawing, the long part, reports how far it has got.
    services.make = [&inv](const ExportInput& input) {
        if (inv.showProgress) inv.err << "Making the PDF of " << input.items.size() << " items…\n";
        return PDFExporter::make(input, progressReport(inv, "Drawing pages"));
    };
    ExportJob::Result result = ExportJob::run(services, scan, inv.settings, target);

    for (const auto& file : result.written.files)
        inv.out << "Wrote " << file << "\n";
    inv.out << result.pageCount << (result.pageCount == 1 ? " page" : " pages") << ".\n";
    for (const auto& note : result.written.notes)
        inv.out << note << "\n";
    return finish(inv, 0);
}

}  // namespace

Command exportCommand() {
    return Command{
        "export", "export FOLDER [-o PATH]",
        "Make the PDF of a materials folder's selection and save it.",
        "Reads the folder, chooses the items with the effective settings and writes the PDF\n"
        "(or its numbered parts when maxFileMB is set). Files are written whole or not at all.\n"
        "  -o PATH   where to save: a folder (the file gets the proposed name) or a file\n"
        "            name; without it, the current folder under the proposed name\n",
        runExport};
}

}  // namespace kinfolio::cli
