#include "cli/commands.h"
#include "example/example_folder.h"

namespace kinfolio::cli {

Command exampleCommand() {
    return Command{
        "example", "example FOLDER",
        "Write a fictional couple's materials folder to try Kinfolio with.",
        "Writes chat exports (WhatsApp, Telegram, Messenger, Instagram, LINE, an iMessage\n"
        "export from Quillory, a chat spreadsheet), photos and e-mails of a made-up couple\n"
        "into FOLDER, which must be empty or not exist yet. The files are the same on\n"
        "every run. Then try: kinfolio-cli scan FOLDER\n",
        [](Invocation& inv) {
            if (inv.arguments.size() != 1) {
                inv.err << "kinfolio-cli: give exactly one folder to write the example into.\n";
                return 2;
            }
            ExampleFolder::write(inv.arguments[0]);
            inv.out << "Wrote the example materials folder to " << inv.arguments[0] << ".\n";
            return 0;
        }};
}

}  // namespace kinfolio::cli
