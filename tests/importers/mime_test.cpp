#include "importers/mime.h"

#include <gtest/gtest.h>

namespace kinfolio::Importer {
namespace {

std::string textOf(std::string_view message) {
    auto [headers, body] = splitHeaders(message);
    return plainText(headers, body);
}

TEST(Base64, DecodesOnlyStrictlyPaddedStandardAlphabet) {
    const std::pair<const char*, const char*> cases[] = {
        {"SGVsbG8=", "Hello"},      {"SGk=", "Hi"}, {"SGVs", "Hel"},
        {"+/8=", "\xFB\xFF"},       {"", ""},       {"SGVsbG8", "(refused)"},  // padding missing
        {"SGVs bG8=", "(refused)"},                                            // white space
        {"SG=sbG8=", "(refused)"},                                             // padding inside
        {"SGk=SGk=", "(refused)"},                                             // data after padding
        {"S===", "(refused)"},                                                 // too much padding
        {"SGVsbG8_", "(refused)"},  // the URL-safe alphabet is not base64
    };
    for (const auto& [text, decoded] : cases)
        EXPECT_EQ(base64(text).value_or("(refused)"), decoded) << text;
}

TEST(QuotedPrintable, DecodesEscapesAndSoftBreaks) {
    const std::pair<const char*, const char*> cases[] = {
        {"caf=E9", "caf\xE9"},
        {"caf=c3=a9 au lait", "caf\u00e9 au lait"},
        {"one long=\nline", "one longline"},
        {"=3D=ZZ and 5=\n0=25", "==ZZ and 50%"},
        {"ends with =4", "ends with =4"},
        {"ends with =", "ends with ="},
    };
    for (const auto& [text, decoded] : cases)
        EXPECT_EQ(quotedPrintable(text), decoded) << text;
}

TEST(PlainText, ChoosesAndDecodesTheReadablePart) {
    const std::pair<const char*, const char*> cases[] = {
        {"Content-Type: multipart/alternative; boundary=\"XyZ\"\n\npreamble\n"
         "--XyZ\nContent-Type: text/html\n\n<p>Rich</p>\n"
         "--XyZ\nContent-Type: text/plain; charset=utf-8\n\nPlain words\n--XyZ--\nepilogue\n",
         "Plain words"},
        // The boundary is case-sensitive.
        {"Content-Type: Multipart/Mixed; BOUNDARY=abc\n\n"
         "--ABC\nContent-Type: text/plain\n\nwrong\n"
         "--abc\nContent-Type: text/plain\n\nright\n--abc--\n",
         "right"},
        {"Content-Type: multipart/alternative; boundary=b\n\n"
         "--b\nContent-Type: text/html; charset=utf-8\n\n"
         "<html><body><p>Hello&nbsp;there</p><div>Tom &amp; Ann</div>"
         "line<BR/>break<br>x &lt;y&gt;</body></html>\n--b--\n",
         "Hello there\nTom & Ann\nline\nbreak\nx &lt;y&gt;"},
        {"Content-Type: multipart/mixed; boundary=b\n\n"
         "--b\nContent-Type: image/jpeg\n\nxx\n--b--\n",
         ""},
        // Without a boundary the body is read as one part.
        {"Content-Type: multipart/mixed\n\n whole body \n", "whole body"},
        {"Content-Transfer-Encoding: BASE64\n\nSGVs\r\nbG8g\n d29y bGQ=\n", "Hello world"},
        // Not valid base64: the body is kept as it stands.
        {"Content-Transfer-Encoding: base64\n\nnot base64!\n", "not base64!"},
        {"Content-Type: text/plain; charset=\"ISO-8859-1\"\n"
         "Content-Transfer-Encoding: quoted-printable\n\ncaf=E9 cr=E8me",
         "caf\u00e9 cr\u00e8me"},
        {"Content-Type: text/plain; charset=latin1\n"
         "Content-Transfer-Encoding: base64\n\nY2Fm6Q==",
         "caf\u00e9"},
        {"Content-Type: text/plain; charset=utf-8\n"
         "Content-Transfer-Encoding: quoted-printable\n\ncaf=E9 ok =C3=A9",
         "caf\uFFFD ok \u00e9"},
        {"Content-Transfer-Encoding: 8bit\n\nbad \xC3 byte", "bad \uFFFD byte"},
        {"Subject: x\n\n\u00a0\u3000 Hi there \u2003\n\n", "Hi there"},
        {"Subject: x\n\n\u00e9\n", "\u00e9"},
        {"Subject: x\n\n \n\t", ""},
    };
    for (const auto& [message, text] : cases)
        EXPECT_EQ(textOf(message), text) << message;
}

TEST(PlainText, HtmlTagsRunFromAngleToAngle) {
    auto html = [](std::string body) { return plainText({{"content-type", "text/html"}}, body); };
    EXPECT_EQ(html("x<>y<z>w"), "x<>yw");
    EXPECT_EQ(html("<<b>>"), ">");
    EXPECT_EQ(html("a < b and c > d"), "a  d");
    EXPECT_EQ(html("1 < 2, <i>3</i> < 4"), "1 3 < 4");
    EXPECT_EQ(html("a<bright idea>b</P>c</Div >d<br"), "a\nb\ncd<br");
    EXPECT_EQ(html("a</div>b"), "a\nb");
    // Stray angles in bulk are read in one pass.
    EXPECT_EQ(html(std::string(200000, '<') + "x"), std::string(200000, '<') + "x");
    EXPECT_EQ(html(std::string(200000, '<') + ">x"), "x");
}

TEST(PlainText, FollowsNestedMultipartsPastAttachments) {
    std::string message =
        "Content-Type: multipart/mixed; boundary=outer\n\n"
        "--outer\nContent-Type: application/pdf\nContent-Transfer-Encoding: base64\n\nJVBERg==\n"
        "--outer\nContent-Type: multipart/related; boundary=\"mid\"\n\n"
        "--mid\nContent-Type: multipart/alternative; boundary=inner\n\n"
        "--inner\nContent-Type: text/html\n\n<b>html</b>\n"
        "--inner\nContent-Type: text/plain\nContent-Transfer-Encoding: quoted-printable\n\n"
        "Deep =E2=9C=93 text\n--inner--\n"
        "--mid--\n--outer--\n";
    EXPECT_EQ(textOf(message), "Deep \u2713 text");
    std::string crlf;
    for (char c : message)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_EQ(textOf(crlf), "Deep \u2713 text");
}

// Mail programs nest a few levels; a crafted message of thousands is read
// to no text in time proportional to its size, not its size times its depth.
TEST(PlainText, NestingIsFollowedSixtyFourLevelsDeep) {
    auto nested = [](int levels) {
        std::string head = "Content-Type: multipart/mixed; boundary=b1z\n\n", tail;
        for (int i = 1; i <= levels; ++i) {
            std::string b = "b" + std::to_string(i) + "z";
            std::string inner = i < levels
                                    ? "multipart/mixed; boundary=b" + std::to_string(i + 1) + "z"
                                    : "text/plain";
            head += "--" + b + "\nContent-Type: " + inner + "\n\n";
        }
        for (int i = levels; i >= 1; --i)
            tail += "\n--b" + std::to_string(i) + "z--\n";
        return head + "inside" + tail;
    };
    EXPECT_EQ(textOf(nested(64)), "inside");
    EXPECT_EQ(textOf(nested(65)), "");
    EXPECT_EQ(textOf(nested(20000)), "");
}

}  // namespace
}  // namespace kinfolio::Importer
