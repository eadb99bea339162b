#include "layout/redaction.h"

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>

#include <cstdlib>

#include "layout/layout.h"
#include "model/text.h"
#include "support/pdf_reader.h"
#include "support/temp_folder.h"

namespace kinfolio {
namespace {

using Importer::redact;

// Letter case is ignored and a rule matches inside words. A word is the same
// word whatever Unicode form its bytes take: an accent composed or as a
// combining mark, full-width or compatibility letters. Only the characters of
// the match are replaced; the rest keeps its own form.
TEST(Redaction, ReplacesEveryFormOfEachRule) {
    // Name, text, rules, expected.
    const std::tuple<const char*, std::string, std::string, std::string> cases[] = {
        {"any case, inside words", "Sam, SAM and Samuel", "sam",
         "[REDACTED], [REDACTED] and [REDACTED]uel"},
        {"inside a word", "Hannah", "ann", "H[REDACTED]ah"},
        {"accented capitals", "ÉLODIE et élodie", "élodie", "[REDACTED] et [REDACTED]"},
        {"longer rule first", "New York is new", "New\nNew York", "[REDACTED] is [REDACTED]"},
        {"later rules run over earlier replacements", "Paris", "Paris\nact", "[RED[REDACTED]ED]"},
        {"equal lengths in typed order", "abcd", "abc\nbcd", "[REDACTED]d"},
        {"equal lengths in typed order, swapped", "abcd", "bcd\nabc", "a[REDACTED]"},
        // "x👍🏽" is two characters but five UTF-16 units; "abx" is three of
        // each. By characters "abx" is the longer rule and goes first.
        {"length in user-perceived characters", "abx\U0001F44D\U0001F3FD",
         "x\U0001F44D\U0001F3FD\nabx", "[REDACTED]\U0001F44D\U0001F3FD"},
        // "ß" folds to "ss": the positions after it shift in the folded copy.
        {"folding that changes length", "Maße, Maße und Sam", "sam", "Maße, Maße und [REDACTED]"},
        {"ß against ss", "STRASSE und Straße", "straße", "[REDACTED] und [REDACTED]"},
        {"half of an expanded character hides all of it", "aß", "as", "[REDACTED]"},
        {"no rules", "Sam", "", "Sam"},
        {"blank rules", "Sam", " \n\t", "Sam"},
        {"zero-width space is no word once folded", "Sam", "\u200B", "Sam"},
        {"decomposed text, composed rule", "E\u0301lodie et \u00e9lodie", "\u00e9lodie",
         "[REDACTED] et [REDACTED]"},
        {"composed text, decomposed rule", "Hi Zo\u00eb!", "zoe\u0308", "Hi [REDACTED]!"},
        {"decomposed Vietnamese", "Nguye\u0302\u0303n Thi\u0323 A\u0301nh", "Nguy\u1ec5n",
         "[REDACTED] Thi\u0323 A\u0301nh"},
        {"untouched text keeps its decomposed form", "Cafe\u0301 with Zoe\u0308", "Zo\u00eb",
         "Cafe\u0301 with [REDACTED]"},
        {"full-width text, plain rule", "\uff21\uff2e\uff2e\uff21 says hi", "anna",
         "[REDACTED] says hi"},
        {"plain text, full-width rule", "Anna says hi", "\uff21\uff2e\uff2e\uff21",
         "[REDACTED] says hi"},
        {"ligature", "\ufb01ona and Fiona", "fiona", "[REDACTED] and [REDACTED]"},
        {"soft hyphen inside the word", "Sa\u00adm", "sam", "[REDACTED]"},
        {"match ending inside a composed character hides all of it", "A\u030Angstr\u00f6m",
         "\u00e5", "[REDACTED]ngstr\u00f6m"},
        // A run of white space is one space: wrapped e-mails and padded cells.
        {"phrase wrapped over two lines", "our friends Harriet\nDunmore and", "Harriet Dunmore",
         "our friends [REDACTED] and"},
        {"phrase with two spaces", "Anna  Smith and Anna", "Anna Smith\nAnna",
         "[REDACTED] and [REDACTED]"},
        {"rule typed with a no-break space", "Sam Lee", "Sam\u00a0Lee", "[REDACTED]"},
        {"spaces elsewhere stay as written", "a  b\n\nc Sam", "sam", "a  b\n\nc [REDACTED]"},
    };
    for (const auto& [name, text, rules, expected] : cases)
        EXPECT_EQ(redact(text, rules), expected) << name;
}

enum class Form { nfc, nfd, nfkc, folded };

std::string inForm(std::string_view text, Form form) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* n = form == Form::nfc   ? icu::Normalizer2::getNFCInstance(status)
                                : form == Form::nfd ? icu::Normalizer2::getNFDInstance(status)
                                : form == Form::nfkc
                                    ? icu::Normalizer2::getNFKCInstance(status)
                                    : icu::Normalizer2::getNFKCCasefoldInstance(status);
    icu::UnicodeString out = n->normalize(toUnicode(text), status);
    EXPECT_TRUE(U_SUCCESS(status));
    return toUtf8(out);
}

std::string utf16BigEndian(std::string_view text) {
    icu::UnicodeString u = toUnicode(text);
    std::string bytes;
    for (int32_t i = 0; i < u.length(); ++i)
        bytes += {static_cast<char>(u[i] >> 8), static_cast<char>(u[i] & 0xff)};
    return bytes;
}

// The PDF's bytes with every stream uncompressed, as qpdf writes them.
std::string uncompressed(const std::string& pdf) {
    testing::TempFolder folder;
    std::string in = folder.write("in.pdf", pdf), out = folder.path() + "/out";
    std::string command =
        "qpdf --qdf --object-streams=disable '" + in + "' '" + out + "' > /dev/null 2>&1";
    EXPECT_NE(std::system(command.c_str()), -1) << command;
    return testing::readFile(out);
}

// Every name appears in every form in every place a user's words are
// printed: the title, the partner, a chat's file name, senders and texts.
// However the hidden words are typed, no form of any name is left anywhere
// in the file: not in its text as a reader copies it, not in its bytes
// uncompressed, not in the outline and not in the document information.
TEST(Redaction, NoFormOfAHiddenNameIsLeftInTheExport) {
    const std::vector<std::vector<std::string>> words = {{"Zo\u00eb", "\u00c9mile"},
                                                         {"Nguy\u1ec5n", "Th\u1ecb", "\u00c1nh"},
                                                         {"\uff21\uff2e\uff2e\uff21"}};
    std::vector<std::string> names;
    for (const auto& w : words)
        names.push_back(join(w, " "));
    const Form forms[] = {Form::nfc, Form::nfd, Form::nfkc};
    for (Form typed : forms) {
        ExportInput input;
        for (const auto& name : names)
            input.settings.hiddenText += inForm(name, typed) + "\n";
        std::vector<std::string> variants;
        for (const auto& name : names)
            for (Form form : forms)
                variants.push_back(inForm(name, form));
        input.settings.title = "Letters to " + join(variants, " and ");
        input.settings.applicant = "Alex Doe";
        input.settings.partner = variants[1];
        input.conversationCount = 1;
        for (size_t i = 0; i < variants.size(); ++i) {
            std::string id(64, static_cast<char>('a' + i));
            input.files[id] = {"chats/Chat with " + variants[i] + ".txt", id, 1000};
            input.items.push_back(testing::message(id, 1, 800000000.0 + 86400.0 * i, variants[i],
                                                   "Hi " + variants[i] + ", see you soon"));
        }
        std::string pdf = PDFExporter::make(input).data;
        std::string typedName = typed == Form::nfc ? "NFC" : typed == Form::nfd ? "NFD" : "NFKC";

        std::string text = testing::readPDF(pdf).allFlat(), outline, information;
        ASSERT_NE(text.find("Hi [REDACTED], see you soon"), std::string::npos) << text;
        ASSERT_NE(text.find("Chat with [REDACTED].txt"), std::string::npos) << text;
        std::string bytes = uncompressed(pdf);
        ASSERT_FALSE(bytes.empty());
        for (const auto& [title, page] : testing::outline(pdf))
            outline += title + "\n";
        ASSERT_FALSE(outline.empty());
        for (const auto& [key, value] : testing::information(pdf))
            information += value + "\n";

        // Words are compared folded, as a reader sees them: what a copy of
        // the text gives may be decomposed or use compatibility letters.
        std::string foldedText = inForm(text, Form::folded);
        for (const auto& nameWords : words)
            for (const auto& word : nameWords) {
                std::string folded = inForm(word, Form::folded);
                EXPECT_EQ(foldedText.find(folded), std::string::npos) << word << ", " << typedName;
                EXPECT_EQ(inForm(outline, Form::folded).find(folded), std::string::npos);
                EXPECT_EQ(inForm(information, Form::folded).find(folded), std::string::npos);
                for (Form form : forms) {
                    std::string variant = inForm(word, form);
                    EXPECT_EQ(bytes.find(variant), std::string::npos) << word << ", " << typedName;
                    EXPECT_EQ(bytes.find(utf16BigEndian(variant)), std::string::npos)
                        << word << ", " << typedName;
                }
            }
    }
}

}  // namespace
}  // namespace kinfolio
