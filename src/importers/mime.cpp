#include "importers/mime.h"

#include <array>
#include <deque>

#include "model/text.h"

namespace kinfolio::Importer {

namespace {

constexpr size_t npos = std::string_view::npos;

std::string contentTypeOf(const EmailHeaders& headers) {
    auto it = headers.find("content-type");
    return it == headers.end() ? std::string("text/plain") : asciiLower(it->second);
}

std::optional<std::string> firstGroup(const Regex& regex, std::string_view text) {
    icu::UnicodeString u = toUnicode(text);
    auto m = regex.matcher(u);
    if (!m->find()) return std::nullopt;
    return groupText(*m, 1);
}

// Boundaries are case-sensitive, so they are read from the header as written.
std::optional<std::string> boundaryOf(const EmailHeaders& headers) {
    static const Regex boundary("boundary\\s*=\\s*\"?([^\";]+)\"?", UREGEX_CASE_INSENSITIVE);
    return firstGroup(boundary, headerValue(headers, "content-type"));
}

// Text read with line feeds only; a part with CRLF line ends gets a
// normalised copy kept in `storage` (a deque, so earlier copies stay put).
std::string_view lineFeeds(std::string_view text, std::deque<std::string>& storage) {
    if (text.find("\r\n") == std::string_view::npos) return text;
    storage.push_back(replaceAll(text, "\r\n", "\n"));
    return storage.back();
}

struct Part {
    EmailHeaders headers;
    std::string_view body;
};

// The readable part of a multipart body: the first plain-text part, else the
// first nested multipart or HTML part.
std::optional<Part> choosePart(std::string_view body, const std::string& boundary,
                               std::deque<std::string>& storage) {
    std::string delimiter = "--" + boundary;
    std::optional<Part> fallback;
    size_t pos = body.find(delimiter);
    while (pos != std::string_view::npos) {
        size_t start = pos + delimiter.size();
        pos = body.find(delimiter, start);
        std::string_view piece =
            body.substr(start, pos == std::string_view::npos ? pos : pos - start);
        if (startsWith(piece, "--")) continue;
        auto [headers, partBody] = splitHeaderBlock(lineFeeds(piece, storage));
        std::string type = contentTypeOf(headers);
        if (startsWith(type, "text/plain")) return Part{std::move(headers), partBody};
        if (!fallback && (startsWith(type, "multipart") || startsWith(type, "text/html")))
            fallback = Part{std::move(headers), partBody};
    }
    return fallback;
}

bool startsWithNoCase(std::string_view text, size_t at, std::string_view lowerPrefix) {
    return asciiLower(text.substr(at, lowerPrefix.size())) == lowerPrefix;
}

// Line breaks for <br…>, </p> and </div>, then every other tag removed. A
// regular expression would do the same, but it rescans to the end of the
// text from every "<" that has no ">" after it: a body full of stray "<"
// would take hours. Here the text is walked once; the delimiters are ASCII,
// so working on UTF-8 bytes is safe.
std::string htmlToText(std::string_view html) {
    // The first pass marks breaks with "\n", the second drops tags; each
    // tag runs from "<" to the next ">".
    auto pass = [](std::string_view text, bool breaks) {
        std::string out;
        out.reserve(text.size());
        size_t i = 0, close = 0;
        while (i < text.size()) {
            size_t open = text.find('<', i);
            if (open == npos) break;
            // The ">" found for an earlier "<" still serves while it lies
            // ahead, so a run of "<" is not rescanned.
            if (close <= open) close = text.find('>', open + 1);
            // No ">" after this "<" means none after any later "<" either.
            if (close == npos) break;
            out.append(text.substr(i, open - i));
            bool tag = breaks ? startsWithNoCase(text, open, "<br") ||
                                    startsWithNoCase(text, open, "</p>") ||
                                    startsWithNoCase(text, open, "</div>")
                              : close > open + 1;
            if (tag) {
                if (breaks) out += '\n';
                i = close + 1;
            } else {
                out += '<';
                i = open + 1;
            }
        }
        if (i < text.size()) out.append(text.substr(i));
        return out;
    };
    std::string text = pass(pass(html, true), false);
    return replaceAll(replaceAll(text, "&nbsp;", " "), "&amp;", "&");
}

std::string singlePart(const EmailHeaders& headers, std::string_view body) {
    std::string type = contentTypeOf(headers);
    std::string encoding = asciiLower(headerValue(headers, "content-transfer-encoding"));
    std::string decoded;
    std::string_view bytes = body;
    bool undecodable = false;
    if (encoding == "base64") {
        std::string compact;
        compact.reserve(body.size());
        for (char c : body)
            if (c != ' ' && c != '\t' && c != '\n' && c != '\r' && c != '\f' && c != '\v')
                compact += c;
        if (auto d = base64(compact))
            decoded = std::move(*d);
        else
            undecodable = true;
        bytes = decoded;
    } else if (encoding == "quoted-printable") {
        decoded = quotedPrintable(body);
        bytes = decoded;
    }

    static const Regex charsetPattern("charset\\s*=\\s*\"?([^\";]+)\"?");
    std::string charset = asciiLower(firstGroup(charsetPattern, type).value_or(""));
    bool latin1 = charset.find("iso-8859") != std::string::npos ||
                  charset.find("latin1") != std::string::npos;

    bool html = startsWith(type, "text/html");
    // The common case, plain UTF-8 text, is copied once.
    if (!undecodable && !latin1 && !html && isValidUtf8(bytes)) return trimWhitespace(bytes);
    std::string text;
    if (undecodable)
        text = repairUtf8(body);
    else if (latin1)
        text = latin1ToUtf8(bytes);
    else
        text = repairUtf8(bytes);
    if (html) text = htmlToText(text);
    return trimWhitespace(text);
}

constexpr std::array<int8_t, 256> kBase64Values = [] {
    std::array<int8_t, 256> values{};
    values.fill(-1);
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (size_t i = 0; i < alphabet.size(); ++i)
        values[static_cast<unsigned char>(alphabet[i])] = static_cast<int8_t>(i);
    return values;
}();

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::string latin1ToUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (char ch : bytes) {
        auto c = static_cast<unsigned char>(ch);
        if (c < 0x80) {
            out += ch;
        } else {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::optional<std::string> base64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::string out;
    out.reserve(text.size() / 4 * 3);
    for (size_t i = 0; i < text.size(); i += 4) {
        bool last = i + 4 == text.size();
        int v[4];
        int padding = 0;
        for (int k = 0; k < 4; ++k) {
            char c = text[i + static_cast<size_t>(k)];
            if (c == '=' && last && k >= 2) {
                v[k] = 0;
                ++padding;
                continue;
            }
            // Padding may only close the last group, and nothing may follow it.
            if (padding > 0) return std::nullopt;
            v[k] = kBase64Values[static_cast<unsigned char>(c)];
            if (v[k] < 0) return std::nullopt;
        }
        uint32_t bits = static_cast<uint32_t>(v[0] << 18 | v[1] << 12 | v[2] << 6 | v[3]);
        out += static_cast<char>(bits >> 16);
        if (padding < 2) out += static_cast<char>(bits >> 8 & 0xFF);
        if (padding < 1) out += static_cast<char>(bits & 0xFF);
    }
    return out;
}

std::string quotedPrintable(std::string_view text) {
    std::string joined = removeAll(text, "=\n");
    std::string out;
    out.reserve(joined.size());
    for (size_t i = 0; i < joined.size(); ++i) {
        if (joined[i] == '=' && i + 2 < joined.size()) {
            int high = hexValue(joined[i + 1]), low = hexValue(joined[i + 2]);
            if (high >= 0 && low >= 0) {
                out += static_cast<char>(high << 4 | low);
                i += 2;
                continue;
            }
        }
        out += joined[i];
    }
    return out;
}

std::string plainText(const EmailHeaders& headers, std::string_view body) {
    // Nested multiparts are followed in a loop rather than by recursion, so a
    // hostile nesting depth cannot exhaust the stack, and only so deep: each
    // level reads the body again, so a crafted e-mail of a million levels
    // would cost its size times its depth. Mail programs nest a few levels.
    constexpr int kMaxDepth = 64;
    std::deque<std::string> storage;
    std::optional<Part> current;
    const EmailHeaders* partHeaders = &headers;
    for (int depth = 0; startsWith(contentTypeOf(*partHeaders), "multipart"); ++depth) {
        if (depth == kMaxDepth) return "";
        auto boundary = boundaryOf(*partHeaders);
        if (!boundary) break;
        auto chosen = choosePart(body, *boundary, storage);
        if (!chosen) return "";
        current = std::move(chosen);
        partHeaders = &current->headers;
        body = current->body;
    }
    return singlePart(*partHeaders, body);
}

}  // namespace kinfolio::Importer
