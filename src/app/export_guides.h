#pragma once

#include <string>
#include <vector>

// "How do I export my chats?": for every app Kinfolio reads, the steps that
// give the export it needs and where to put it. Shown by the window's guide
// sheet and by kinfolio-cli guides.
namespace kinfolio {

struct ExportGuide {
    std::string id;     // short name for the command line: "whatsapp-iphone"
    std::string title;  // "WhatsApp on iPhone"
    std::vector<std::string> steps;
    std::string inFolder;  // how the export goes into the materials folder
};

const std::vector<ExportGuide>& exportGuides();

// The guide whose id or title equals `name` ignoring case, or whose id starts
// with it when only one does ("telegram", "whatsapp-a"); none otherwise.
const ExportGuide* findGuide(const std::string& name);

// The guide as plain text: title, numbered steps, then the folder tip.
std::string guideText(const ExportGuide& guide);

}  // namespace kinfolio
