#include "app/export_guides.h"
#include "cli/commands.h"

namespace kinfolio::cli {

Command guidesCommand() {
    std::string names;
    for (const auto& guide : exportGuides())
        names += (names.empty() ? "" : ", ") + guide.id;
    return Command{"guides", "guides [APP]", "How do I export my chats? Steps for each app.",
                   "Without APP, prints the guide of every app. APP is one of:\n  " + names + "\n",
                   [names](Invocation& inv) {
                       if (inv.arguments.size() > 1) {
                           inv.err << "kinfolio-cli: give at most one app.\n";
                           return 2;
                       }
                       if (inv.arguments.empty()) {
                           inv.out << "How do I export my chats?\n";
                           for (const auto& guide : exportGuides())
                               inv.out << "\n" << guideText(guide);
                           return 0;
                       }
                       const ExportGuide* guide = findGuide(inv.arguments[0]);
                       if (!guide) {
                           inv.err << "kinfolio-cli: no guide for \"" << inv.arguments[0]
                                   << "\". Choose one of: " << names << ".\n";
                           return 2;
                       }
                       inv.out << guideText(*guide);
                       return 0;
                   }};
}

}  // namespace kinfolio::cli
