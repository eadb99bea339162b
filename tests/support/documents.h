#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kinfolio::testing {

// A PDF made for a test: A4 pages of text, as an office program writes them.
struct PDFSpec {
    // `created` as "2025-02-01T09:30:00"; none: the file records no creation date.
    explicit PDFSpec(std::vector<std::string> pages, std::optional<std::string> created = {})
        : pages(std::move(pages)), created(std::move(created)) {}

    // Opening needs this password.
    PDFSpec& locked(std::string with) {
        password = std::move(with);
        return *this;
    }
    // The first page is shown turned by these degrees.
    PDFSpec& turned(int degrees) {
        rotate = degrees;
        return *this;
    }
    // Every page filled with this colour (0xRRGGBB), so a test can find the
    // page where it is drawn.
    PDFSpec& onPaper(uint32_t colour) {
        paper = colour;
        return *this;
    }

    std::vector<std::string> pages;  // the text of each page
    std::optional<std::string> created;
    std::optional<std::string> password;
    int rotate = 0;
    std::optional<uint32_t> paper;
};

std::string makePDF(const PDFSpec& spec);

}  // namespace kinfolio::testing
