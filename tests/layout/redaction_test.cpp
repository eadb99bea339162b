#include "layout/redaction.h"

#include <gtest/gtest.h>

#include "layout/layout.h"

namespace kinfolio {
namespace {

using Importer::redact;

TEST(Redaction, RulesAreTrimmedLinesWithoutEmptyOnes) {
    EXPECT_EQ(Importer::redactionRules("  Sam \t\n\n\n"), std::vector<std::string>{"Sam"});
    EXPECT_EQ(Importer::redactionRules("a b\r\nc\rd\u2028e"),
              (std::vector<std::string>{"a b", "c", "d", "e"}));
    EXPECT_TRUE(Importer::redactionRules(" \t \n").empty());
    EXPECT_EQ(Importer::Redactor("  Sam \n\n").ruleCount(), 1u);
}

TEST(Redaction, IgnoresLetterCaseAndMatchesInsideWords) {
    EXPECT_EQ(redact("Sam, SAM and Samuel", "sam"), "[REDACTED], [REDACTED] and [REDACTED]uel");
    EXPECT_EQ(redact("Hannah", "ann"), "H[REDACTED]ah");
    EXPECT_EQ(redact("ÉLODIE et élodie", "élodie"), "[REDACTED] et [REDACTED]");
}

TEST(Redaction, LongerRuleRunsFirst) {
    EXPECT_EQ(redact("New York is new", "New\nNew York"), "[REDACTED] is [REDACTED]");
}

TEST(Redaction, LaterRulesRunOverEarlierReplacements) {
    EXPECT_EQ(redact("Paris", "Paris\nact"), "[RED[REDACTED]ED]");
}

TEST(Redaction, EqualLengthRulesApplyInTypedOrder) {
    EXPECT_EQ(redact("abcd", "abc\nbcd"), "[REDACTED]d");
    EXPECT_EQ(redact("abcd", "bcd\nabc"), "a[REDACTED]");
}

TEST(Redaction, LengthIsCountedInUserPerceivedCharacters) {
    // "x👍🏽" is two characters but five UTF-16 units; "abx" is three of each.
    // By characters "abx" is the longer rule and goes first.
    EXPECT_EQ(redact("abx\U0001F44D\U0001F3FD", "x\U0001F44D\U0001F3FD\nabx"),
              "[REDACTED]\U0001F44D\U0001F3FD");
}

TEST(Redaction, FoldingThatChangesLengthMapsBackToTheOriginal) {
    // "ß" folds to "ss": the positions after it shift in the folded copy.
    EXPECT_EQ(redact("Maße, Maße und Sam", "sam"), "Maße, Maße und [REDACTED]");
    EXPECT_EQ(redact("STRASSE und Straße", "straße"), "[REDACTED] und [REDACTED]");
    // A match that covers only half of an expanded character hides all of it.
    EXPECT_EQ(redact("aß", "as"), "[REDACTED]");
}

TEST(Redaction, EmptyRulesLeaveTextAlone) {
    EXPECT_EQ(redact("Sam", ""), "Sam");
    EXPECT_EQ(redact("Sam", " \n\t"), "Sam");
}

TEST(Redaction, HiddenBoxesAreTheLinesHoldingARule) {
    ExportInput input;
    input.settings.hiddenText = " sam \n";
    Layout layout(input);
    Evidence shot;
    shot.kind = ItemKind::screenshot;
    shot.detailsForWriting().textBoxes = {{"Call Sam at 8", 0.1, 0.5, 0.6, 0.05},
                                          {"See you soon", 0.1, 0.4, 0.5, 0.05},
                                          {"SAMSAM", 0.1, 0.3, 0.3, 0.05}};
    auto boxes = layout.hiddenBoxes(shot);
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0], shot.details().textBoxes[0]);
    EXPECT_EQ(boxes[1], shot.details().textBoxes[2]);

    ExportInput none;
    Layout plain(none);
    EXPECT_TRUE(plain.hiddenBoxes(shot).empty());
}

}  // namespace
}  // namespace kinfolio
