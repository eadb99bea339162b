#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

#include "app/export_job.h"
#include "cli/cli.h"
#include "scan/scanner.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio::testing {

// A materials folder exported the ways a user does it, for the layout tests
// that check what lands on the page.
class LayoutExport : public ::testing::Test {
protected:
    // The command line's export of every item with the given hidden words:
    // the PDF's bytes, or a failure with what the command said.
    std::string exportPDF(const std::string& hidden = "") {
        std::string target = output.path() + "/out.pdf";
        std::ostringstream out, err;
        EXPECT_EQ(cli::run({"export", materials.path(), "-o", target, "--set", "photosPerMonth=0",
                            "--set", "hiddenText=" + hidden},
                           out, err),
                  0)
            << err.str();
        return readFile(target);
    }

    // The window's way: the folder is scanned, `change` runs, and only then
    // is the scan exported with the default settings.
    std::string exportAfterScan(const std::function<void()>& change) {
        ScanResult scan = Scanner::scan(materials.path(), DateOrder::automatic, "UTC");
        change();
        std::string target = output.path() + "/out.pdf";
        ExportJob::run(AppServices::standard(), scan, Settings::defaults(), target);
        return readFile(target);
    }

    // The 0-based page whose text holds `words`, or -1.
    static int pageWith(const ReadPDF& read, const std::string& words) {
        for (size_t i = 0; i < read.pages.size(); ++i)
            if (read.flat(i).find(words) != std::string::npos) return static_cast<int>(i);
        return -1;
    }

    ScopedHome home;
    TempFolder materials, output;
};

}  // namespace kinfolio::testing
