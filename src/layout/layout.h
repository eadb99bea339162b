#pragma once

#include <climits>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "layout/pdf_exporter.h"
#include "layout/pieces.h"
#include "layout/redaction.h"
#include "layout/typesetter.h"
#include "media/pictures.h"

namespace kinfolio {

// The document of one export: turns the input into pieces, paginates them
// and draws the pages. Pieces capture the layout, so it stays in place (no
// copies, no moves) for as long as they are used.
class Layout {
public:
    explicit Layout(ExportInput input);
    Layout(const Layout&) = delete;
    Layout& operator=(const Layout&) = delete;

    const ExportInput input;
    const Settings& s;
    const PageSize size;
    const double margin = kMargin;

    double contentWidth() const { return size.width - 2 * margin; }

    // Text, typeset by the typesetter of the calling thread (see typesetInParallel).
    std::vector<Line> lines(std::string_view text, double size, double width,
                            Paint colour = Colours::ink, bool bold = false, bool italic = false);
    void drawLine(cairo_t* cr, const Line& line, double x, double baseline);
    // One piece per line, left-aligned at the margin over `width`; the last
    // line carries `spaceAfter`.
    std::vector<Piece> textBlock(std::string_view text, double size, bool bold, Paint colour,
                                 double spaceAfter, double width);
    // The text with the user's hidden words replaced.
    std::string redact(std::string_view text) const { return redactor_(text); }
    size_t hiddenRuleCount() const { return redactor_.ruleCount(); }
    // The recognised lines of a screenshot that hold a hidden word.
    std::vector<TextBox> hiddenBoxes(const Evidence& item) const;

    // Pagination over the cover (with the given contents page numbers), the
    // timeline and the appendix.
    Pagination paginate(const std::map<std::string, int>& contentsPages);
    // The PDF as cairo writes it: page frame, pieces, outline and links.
    // With a range, only the pages [begin, end) of the pagination, numbered
    // as in the whole document ("Page 38 of 120", and 38 in a viewer's page
    // box), with their own font subsets; links and outline entries that lead
    // to pages outside the range are left out.
    std::string render(const std::vector<Page>& pages, const PDFExporter::Progress& progress = {},
                       size_t begin = 0, size_t end = SIZE_MAX);

    struct Section {
        std::string key;
        std::string title;
        std::vector<Evidence> items;
        double spacing = 8;  // below the heading
    };
    std::vector<Section> sections() const;
    std::vector<Piece> timeline();
    std::vector<Piece> cover(const std::map<std::string, int>& contentsPages);
    std::vector<Piece> appendix();

    // Per item: the headings its date opens in its section (a day, and in an
    // arrangement by type a month), then the item.
    std::vector<Piece> entry(const Section& section, size_t index);
    std::vector<Piece> render(const Evidence& item);
    Piece daySeparator(const std::string& text);
    std::string sourceLabel(const Evidence& item) const;
    Piece meta(const std::string& text, bool right);
    std::vector<Piece> bubble(const std::string& text, bool mine);
    std::vector<Piece> card(const std::string& heading, const std::string& body);
    // The picture of a photo, screenshot or video frame, or the picture
    // attached to a message; a screenshot's lines with hidden words are
    // blacked out in it. None when the image cannot be decoded: the item
    // keeps its meta line and the picture takes no space.
    std::vector<Piece> pictures(const Evidence& item);
    // The first page of the PDF at `path` at the size of a document item,
    // drawn as vectors (its text stays text); a note instead when the page
    // holds hidden text. Nothing when the file is gone or cannot be opened:
    // the item keeps its meta line.
    std::vector<Piece> documentPiece(const std::string& path);

    // Named destination of a marker, for links and the outline.
    static std::string destination(const std::string& marker);

private:
    // File id -> source reference number (1-based), in order of first use;
    // numbered once, when the layout is made.
    std::map<std::string, int> sourceNumbers;
    std::vector<std::string> sourceOrder;
    std::unique_ptr<Typesetter> type_;
    // One more for each further thread that typesets; kept, since the lines
    // they made are drawn later.
    std::vector<std::unique_ptr<Typesetter>> helperTypes_;
    // Runs make(i) for every i in [0, count) on every core, a contiguous
    // range per thread, each thread typesetting with its own typesetter.
    void typesetInParallel(size_t count, const std::function<void(size_t)>& make);
    Importer::Redactor redactor_;
    // Timeline and appendix do not change between the two passes.
    std::optional<std::vector<Piece>> body_;
    // The 1-based pages being drawn, first and last: a contents row links to
    // a page only when it is among them.
    std::pair<int, int> drawnPages_{1, INT32_MAX};

    // Every picture is decoded with its longer side at most this many
    // pixels: sharp in print at the sizes drawn, small in the file.
    static constexpr int kMaxPixel = 1600;
    // What an item's picture is made from and where it goes.
    struct PictureRequest {
        std::string path, fileID;
        std::vector<TextBox> mask;  // a screenshot's lines with hidden words
        double maxWidth = 0, maxHeight = 0;
        bool right = false;  // at the right margin, as the owner's bubbles
        double above = 0;    // points between the piece's top and the picture
        // Names the decoded picture: the same file, id and mask give the same one.
        std::string key() const;
    };
    std::optional<PictureRequest> pictureRequest(const Evidence& item) const;
    std::optional<Piece> picture(const PictureRequest& request) const;
    struct Prepared {
        std::shared_ptr<const std::string> jpeg;
        int width = 0, height = 0;
    };
    static std::optional<Prepared> prepare(std::optional<Scanner::Picture> decoded);
    // Decoded pictures by request key; none for one that cannot be decoded.
    std::map<std::string, std::optional<Prepared>> prepared_;
    // Decodes the pictures of these items on every core before the layout
    // asks for them one by one.
    void preparePictures(const std::vector<Evidence>& items);
};

// "2.4 MB": decimal units, as file browsers show sizes.
std::string fileSize(int64_t bytes);

}  // namespace kinfolio
