#include <gtest/gtest.h>

#include "layout/layout.h"
#include "model/calendar.h"
#include "support/pdf_reader.h"

namespace kinfolio {
namespace {

using testing::message;
using testing::readPDF;

const std::string kFile = std::string(64, 'f');

Evidence item(ItemKind kind, int month, int day, const std::string& sender = "") {
    Evidence e = message(kFile, month * 100 + day, *Calendar::makeDate(2025, month, day, 12),
                         sender, "text");
    e.kind = kind;
    return e;
}

ExportInput byType(std::vector<Evidence> items) {
    ExportInput input;
    input.settings.arrangement = Arrangement::byType;
    input.files[kFile] = {"f.txt", kFile, 1};
    input.items = std::move(items);
    return input;
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

TEST(Timeline, GroupsByTypeOfEvidence) {
    Evidence certificate = item(ItemKind::document, 1, 2, "Certificate");
    Evidence other = item(ItemKind::document, 1, 3, "Document");
    Evidence shot = item(ItemKind::screenshot, 1, 4);
    Evidence photo = item(ItemKind::photo, 1, 5);
    Layout layout(byType({certificate, other, shot, photo}));
    auto sections = layout.sections();
    std::vector<std::string> titles;
    for (const auto& section : sections)
        titles.push_back(section.title);
    EXPECT_EQ(titles, (std::vector<std::string>{"Communication", "Photos and videos",
                                                "Certificates", "Other documents"}));
    EXPECT_EQ(sections[0].items.front().kind, ItemKind::screenshot);
    EXPECT_TRUE(Layout(ExportInput{}).timeline().empty()) << "no items give no body pieces";
}

TEST(Timeline, OneDaySeparatorPerDayAndMonthSubheadingsByType) {
    auto input = byType({item(ItemKind::message, 2, 1, "Jo"), item(ItemKind::message, 2, 1, "Jo"),
                         item(ItemKind::message, 3, 9, "Jo"), item(ItemKind::photo, 3, 9, "Jo")});
    auto all = readPDF(PDFExporter::make(input).data).allFlat();
    EXPECT_EQ(count(all, "Saturday, February 1, 2025"), 1u);
    // Sunday, March 9 is the first item of both sections.
    EXPECT_EQ(count(all, "Sunday, March 9, 2025"), 2u);
    // The cover's period names both months once more.
    EXPECT_EQ(count(all, "February 2025"), 2u);
    EXPECT_EQ(count(all, "March 2025"), 3u);
    EXPECT_NE(all.find("Photo from Jo \u00b7 12:00 PM \u00b7 Source 1, entry 309"),
              std::string::npos);
}

TEST(Timeline, MediaItemsKeepTheirMetaLine) {
    Evidence video = item(ItemKind::video, 4, 1);
    video.detailsForWriting().duration = 75;
    Evidence shot = item(ItemKind::screenshot, 4, 1);
    shot.detailsForWriting().textBoxes = {{"Call Robin", 0, 0, 1, 0.1},
                                          {"Robin again", 0, 0.2, 1, 0.1}};
    Evidence doc = item(ItemKind::document, 4, 1, "Travel");
    doc.text = "Boarding pass";
    doc.dateIsEstimated = true;
    auto input = byType({video, shot, doc});
    input.settings.hiddenText = "robin";
    auto all = readPDF(PDFExporter::make(input).data).allFlat();
    EXPECT_NE(all.find("Video, 1 min 15 s \u00b7 12:00 PM"), std::string::npos);
    EXPECT_NE(all.find("Screenshot \u00B7 2 lines covered"), std::string::npos);
    EXPECT_NE(all.find("Document: Boarding pass \u00b7 12:00 PM \u00b7 Source 1, entry 401 \u00b7 "
                       "date estimated from the file"),
              std::string::npos);
    // A video without a frame says so; a screenshot whose file is unknown
    // takes no space.
    EXPECT_NE(all.find("(No preview frame.)"), std::string::npos);
    Layout layout(input);
    EXPECT_TRUE(layout.pictures(shot).empty());
}

TEST(Timeline, RunningHeadJoinsTitleAndNames) {
    ExportInput input = byType({item(ItemKind::message, 2, 1, "Jo")});
    input.settings.title = "";
    input.settings.applicant = "Alex";
    auto pdf = readPDF(PDFExporter::make(input).data);
    EXPECT_NE(pdf.pages[1].find("Relationship evidence \u00b7 Alex\n"), std::string::npos);
    input.settings.applicant = "";
    pdf = readPDF(PDFExporter::make(input).data);
    EXPECT_NE(pdf.pages[1].find("Relationship evidence\n"), std::string::npos);
    EXPECT_EQ(pdf.pages[1].find("Relationship evidence \u00b7"), std::string::npos);
}

}  // namespace
}  // namespace kinfolio
