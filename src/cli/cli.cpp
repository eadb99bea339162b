#include "cli/cli.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "app/settings_store.h"
#include "cli/commands.h"
#include "model/evidence.h"
#include "model/json.h"

namespace kinfolio::cli {

namespace {

constexpr const char* kSharedOptions =
    "Options for every command:\n"
    "  --settings FILE   read settings from a JSON file (any subset of the keys,\n"
    "                    applied over the defaults) instead of the saved settings\n"
    "  --set KEY=VALUE   change one setting for this run (dates as yyyy-MM-dd);\n"
    "                    may be given more than once\n"
    "  --no-screenshot-text  leave the text of screenshots unread (faster; hidden\n"
    "                    words are then not covered in them)\n"
    "  --help            show help\n";

void printToolHelp(std::ostream& out) {
    out << "kinfolio-cli: turn a folder of chat exports, photos and documents into one\n"
           "clear, dated PDF of relationship evidence. Everything stays on this computer:\n"
           "Kinfolio never uploads your files and never changes them.\n\n"
           "Usage: kinfolio-cli COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n";
    for (const auto& c : commands()) {
        std::string usage = c.usage;
        usage.resize(std::max<size_t>(usage.size(), 34), ' ');
        out << "  " << usage << " " << c.summary << "\n";
    }
    out << "\n"
        << kSharedOptions << "\nRun kinfolio-cli COMMAND --help for more about a command.\n";
}

void printCommandHelp(std::ostream& out, const Command& c) {
    out << "Usage: kinfolio-cli " << c.usage << "\n\n" << c.summary << "\n";
    if (!c.help.empty()) out << "\n" << c.help;
    out << "\n" << kSharedOptions;
}

Settings settingsFromFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw EvidenceError::invalid("Could not read the settings file " + path + ".");
    std::stringstream buffer;
    buffer << in.rdbuf();
    Json json = Json::parse(buffer.str(), nullptr, false);
    if (json.is_discarded())
        throw EvidenceError::invalid("The settings file " + path + " is not valid JSON.");
    return applyPartial(Settings::defaults(), json);
}

}  // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> all = {scanCommand(),     selectCommand(),  exportCommand(),
                                             settingsCommand(), exampleCommand(), guidesCommand()};
    return all;
}

int finish(Invocation& inv, int status) {
    if (!inv.lastInProcess) return status;
    inv.out.flush();
    inv.err.flush();
    std::fflush(nullptr);
    std::_Exit(status);
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        bool showProgress, bool lastInProcess) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        printToolHelp(args.empty() ? err : out);
        return args.empty() ? 2 : 0;
    }
    const Command* command = nullptr;
    for (const auto& c : commands())
        if (c.name == args[0]) command = &c;
    if (!command) {
        err << "kinfolio-cli: unknown command \"" << args[0]
            << "\". Run kinfolio-cli --help to see the commands.\n";
        return 2;
    }

    Invocation inv{out, err, Settings{}, false, std::nullopt, {}, showProgress};
    inv.lastInProcess = lastInProcess;
    std::optional<std::string> settingsFile;
    std::vector<std::pair<std::string, std::string>> sets;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](const char* option) -> std::string {
            if (i + 1 >= args.size())
                throw EvidenceError::invalid(std::string(option) + " needs a value.");
            return args[++i];
        };
        try {
            if (a == "--help" || a == "-h") {
                printCommandHelp(out, *command);
                return 0;
            } else if (a == "--json") {
                inv.json = true;
            } else if (a == "--no-screenshot-text") {
                inv.readScreenshotText = false;
            } else if (a == "--settings") {
                settingsFile = value("--settings");
            } else if (a == "--set") {
                std::string kv = value("--set");
                auto eq = kv.find('=');
                if (eq == std::string::npos)
                    throw EvidenceError::invalid(
                        "--set needs KEY=VALUE, for example --set paper=letter.");
                sets.emplace_back(kv.substr(0, eq), kv.substr(eq + 1));
            } else if (a == "-o" || a == "--output") {
                inv.output = value("-o");
            } else if (a.size() > 1 && a[0] == '-') {
                throw EvidenceError::invalid("Unknown option " + a + ".");
            } else {
                inv.arguments.push_back(a);
            }
        } catch (const EvidenceError& e) {
            err << "kinfolio-cli: " << e.what() << "\n";
            return 2;
        }
    }

    try {
        if (settingsFile) {
            inv.settings = settingsFromFile(*settingsFile);
        } else {
            StoredState stored = SettingsStore().load();
            for (const auto& warning : stored.warnings)
                err << "kinfolio-cli: " << warning << "\n";
            inv.settings = stored.settings.value_or(Settings::defaults());
        }
        for (const auto& [key, value] : sets)
            setField(inv.settings, key, value);
    } catch (const EvidenceError& e) {
        err << "kinfolio-cli: " << e.what() << "\n";
        return 2;
    }

    try {
        return command->run(inv);
    } catch (const EvidenceError& e) {
        err << "kinfolio-cli: " << e.what() << "\n";
        return 1;
    } catch (const std::exception& e) {
        // Faults outside the readers (a vanished current folder, memory
        // running out) still end with a message rather than an abort.
        err << "kinfolio-cli: Could not finish: " << e.what() << ".\n";
        return 1;
    }
}

}  // namespace kinfolio::cli
