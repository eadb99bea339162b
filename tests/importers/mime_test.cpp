#include "importers/mime.h"

#include <gtest/gtest.h>

namespace kinfolio::Importer {
namespace {

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
    for (const auto& [message, text] : cases) {
        auto [headers, body] = splitHeaders(message);
        EXPECT_EQ(plainText(headers, body), text) << message;
    }
}

}  // namespace
}  // namespace kinfolio::Importer
