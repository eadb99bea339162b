#include "cli/json_output.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "example/example_folder.h"
#include "scan/scanner.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio::cli {
namespace {

Evidence item(double date, const std::string& text) {
    return testing::message("ab12", 7, date, "Sam \"Lee\"", text);
}

// The scan's JSON is written without a tree per item; every byte must still
// be what the JSON library prints for the tree.
TEST(ScanJson, WrittenItemsEqualTheLibrarysTree) {
    struct Case {
        const char* name;
        Evidence item;
    };
    std::vector<Case> cases;
    cases.push_back({"plain", item(725846400, "hi")});
    cases.push_back({"escapes", item(1.5, "a\"b\\c\b\f\n\r\t\x01\x1f\x7f end")});
    cases.push_back({"non-ASCII", item(-3.25, "café 😀 日本 \u2028")});
    cases.push_back({"escapes among long plain runs",
                     item(2,
                          "a plain run of text before a \"quote\", then\ta tab; another run "
                          "of plain words, a backslash \\ and a bell\x07 at the end")});
    cases.push_back({"negative zero", item(-0.0, "")});
    cases.push_back({"fraction", item(123456789.123, "x")});
    cases.push_back({"large", item(1e15, "x")});
    cases.push_back({"larger", item(4.5e16, "x")});
    cases.push_back({"not a number", item(std::numeric_limits<double>::quiet_NaN(), "x")});
    Evidence detailed = item(86400, "photo");
    detailed.kind = ItemKind::photo;
    detailed.dateIsEstimated = true;
    auto& d = detailed.detailsForWriting();
    d.imageURL = "/tmp/a \"b\".jpg";
    d.attachmentName = "IMG-1.jpg";
    d.attachmentID = "ff00";
    d.textBoxes = {{"line\tone", 0.1, 0.25, 0.5, 0.125}, {"two", 0, 1, 1, 0.3333333333333333}};
    d.duration = 12.5;
    d.heading = "Subject: \"Hello\"";
    cases.push_back({"every detail", std::move(detailed)});
    Evidence whole = item(60, "call");
    whole.detailsForWriting().duration = 3.0;
    cases.push_back({"whole duration", std::move(whole)});

    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Source source;
        source.id = "s1";
        source.items = {c.item, c.item};
        ScanResult scan{"/tmp/materials",
                        {source, Source{}},
                        {{"notes.docx", "Not a file type Kinfolio reads."}}};
        std::ostringstream written;
        writeJson(written, scan);
        EXPECT_EQ(written.str(), toJson(scan).dump(2) + "\n");
    }
}

// The streamed JSON of a scan is byte for byte what the JSON tree prints.
TEST(ScanJson, StreamedOutputEqualsTheTree) {
    testing::TempFolder temp;
    std::string folder = temp.path() + "/materials";
    ExampleFolder::write(folder);
    ScanResult scan = Scanner::scan(folder, DateOrder::automatic, "Europe/London");
    // Every file of the example is read: the demo shows no skipped file.
    for (const auto& skipped : scan.skipped)
        ADD_FAILURE() << skipped.path << ": " << skipped.reason;
    scan.skipped.push_back({"notes.docx", "Not a file type Kinfolio reads."});
    scan.sources.push_back(Source{});  // a source without items or files
    for (const ScanResult& s : {scan, ScanResult{}}) {
        std::ostringstream streamed;
        writeJson(streamed, s);
        EXPECT_EQ(streamed.str(), toJson(s).dump(2) + "\n");
    }
}

}  // namespace
}  // namespace kinfolio::cli
