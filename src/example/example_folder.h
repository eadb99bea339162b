#pragma once

#include <string>
#include <utility>
#include <vector>

// The example materials folder: a fictional couple's chats, photos and
// e-mails in every format Kinfolio reads, for trying the program without
// one's own records. The same bytes on every run.
namespace kinfolio::ExampleFolder {

// Relative path ("/"-separated) and contents of every file, sorted by path.
std::vector<std::pair<std::string, std::string>> files();

// Throws EvidenceError when `folder` is a file or a folder that is not empty:
// the example is never mixed with someone's own files.
void checkTarget(const std::string& folder);

// Writes the files below `folder`, creating it when missing. Refuses, before
// writing anything, a folder that is not empty. Throws EvidenceError.
void write(const std::string& folder);

// Whether `folder` holds every example file, its texts unchanged. Reads
// only those files and makes none of the example.
bool holdsExample(const std::string& folder);

}  // namespace kinfolio::ExampleFolder
