#include <string>

#include "selection/selection.h"

namespace kinfolio::Selection {

std::string samplingNote(const Settings& settings) {
    std::string note = "This is a selection, not a complete history. ";
    if (settings.messagesPerMonth != 0)
        note += "Messages: up to " + std::to_string(settings.messagesPerMonth) +
                " evenly spaced messages per calendar month from each conversation, each with "
                "the message before and after it for context. All calls are included.";
    else
        note += "All messages and calls in the chosen period are included.";
    note += " ";
    if (settings.photosPerMonth != 0)
        note += "Photos, screenshots and videos: up to " + std::to_string(settings.photosPerMonth) +
                " evenly spaced per calendar month.";
    else
        note += "All photos, screenshots and videos in the chosen period are included.";
    note += " ";
    if (!settings.excludedItems.empty() || !settings.addedItems.empty())
        note += "The applicant then added " + std::to_string(settings.addedItems.size()) +
                " and removed " + std::to_string(settings.excludedItems.size()) +
                " item(s) by hand.";
    else
        note += "No items were added or removed by hand.";
    return note;
}

}  // namespace kinfolio::Selection
