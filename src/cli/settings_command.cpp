#include "cli/commands.h"
#include "model/json.h"

namespace kinfolio::cli {

Command settingsCommand() {
    return Command{"settings", "settings", "Print the effective settings as JSON.",
                   "The saved settings, or those of --settings, with any --set applied.\n",
                   [](Invocation& inv) {
                       if (!inv.arguments.empty()) {
                           inv.err << "kinfolio-cli: settings takes no arguments.\n";
                           return 2;
                       }
                       inv.out << encode(inv.settings).dump(2) << "\n";
                       return 0;
                   }};
}

}  // namespace kinfolio::cli
