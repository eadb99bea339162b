#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "layout/layout.h"
#include "media/pictures.h"

namespace kinfolio {

namespace {

// Every picture is decoded with its longer side at most this many pixels:
// sharp in print at the sizes drawn, small in the file.
constexpr int kMaxPixel = 1600;

struct Frame {
    double maxWidth, maxHeight;
};

// The drawn size of a picture: as large as the frame allows, never enlarged
// beyond 1.5 times its pixel size.
std::pair<double, double> drawnSize(int width, int height, Frame frame) {
    double scale = 1.5;
    if (width >= 2) scale = std::min(scale, frame.maxWidth / width);
    if (height >= 2) scale = std::min(scale, frame.maxHeight / height);
    return {std::floor(width * scale), std::floor(height * scale)};
}

void releaseJpeg(void* bytes) {
    delete static_cast<std::shared_ptr<const std::string>*>(bytes);
}

// Draws the JPEG as it is: cairo embeds the bytes themselves (no second
// compression, no pixels decoded here), so the image surface only needs the
// picture's size. Its unique id lets a picture drawn twice be stored once.
void drawJpeg(cairo_t* cr, const std::shared_ptr<const std::string>& jpeg, const std::string& id,
              int width, int height, double x, double top, double drawnWidth, double drawnHeight) {
    cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_surface_set_mime_data(image, CAIRO_MIME_TYPE_JPEG,
                                reinterpret_cast<const unsigned char*>(jpeg->data()), jpeg->size(),
                                releaseJpeg, new std::shared_ptr<const std::string>(jpeg));
    auto* unique = new std::shared_ptr<const std::string>(std::make_shared<std::string>(id));
    cairo_surface_set_mime_data(image, CAIRO_MIME_TYPE_UNIQUE_ID,
                                reinterpret_cast<const unsigned char*>((*unique)->data()),
                                (*unique)->size(), releaseJpeg, unique);
    cairo_save(cr);
    cairo_translate(cr, x, top);
    cairo_scale(cr, drawnWidth / width, drawnHeight / height);
    cairo_set_source_surface(cr, image, 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
    cairo_surface_destroy(image);
}

}  // namespace

std::optional<Piece> Layout::picture(const std::string& path, const std::string& fileID,
                                     double maxWidth, double maxHeight, bool right,
                                     const std::vector<TextBox>& mask, double above) {
    auto decoded = Scanner::picture(path, fileID, kMaxPixel, mask);
    // A picture that cannot be decoded takes no space; its meta line stays.
    if (!decoded || decoded->width < 1 || decoded->height < 1) return std::nullopt;
    auto [width, height] = drawnSize(decoded->width, decoded->height, {maxWidth, maxHeight});
    if (width < 1 || height < 1) return std::nullopt;
    std::string id = (fileID.empty() ? path : fileID) + "-" + std::to_string(kMaxPixel);
    for (const auto& box : mask)
        id += ":" + std::to_string(box.x) + "," + std::to_string(box.y);
    Piece piece;
    piece.height = height + 10;
    double x = right ? size.width - margin - width : margin;
    piece.draw = [jpeg = std::make_shared<const std::string>(std::move(decoded->jpeg)), id,
                  pixelWidth = decoded->width, pixelHeight = decoded->height, x, above,
                  width = width, height = height](cairo_t* cr, double top) {
        drawJpeg(cr, jpeg, id, pixelWidth, pixelHeight, x, top + above, width, height);
    };
    return piece;
}

std::vector<Piece> Layout::pictures(const Evidence& item) {
    const auto& details = item.details();
    const double width = contentWidth();
    std::optional<Piece> piece;
    switch (item.kind) {
        case ItemKind::message:
            if (details.imageURL)
                // Under its bubble, on the same side, with a little air between.
                piece = picture(*details.imageURL, details.attachmentID.value_or(""), width * 0.5,
                                220, !s.ownerName.empty() && item.sender == s.ownerName, {}, 4);
            break;
        case ItemKind::photo:
            if (details.imageURL) piece = picture(*details.imageURL, item.fileID, width * 0.7, 320);
            break;
        case ItemKind::screenshot:
            if (details.imageURL)
                piece = picture(*details.imageURL, item.fileID, width * 0.4, 320, false,
                                hiddenBoxes(item));
            break;
        case ItemKind::video:
            if (details.imageURL) piece = picture(*details.imageURL, item.fileID, width * 0.7, 320);
            if (!piece) return textBlock("(No preview frame.)", 9, false, Colours::muted, 0, width);
            break;
        case ItemKind::call:
        case ItemKind::document:
        case ItemKind::email:
            break;
    }
    if (!piece) return {};
    return {std::move(*piece)};
}

}  // namespace kinfolio
