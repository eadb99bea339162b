#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include "layout/layout.h"
#include "media/pictures.h"
#include "model/parallel.h"

namespace kinfolio {

namespace {

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
// picture's size. Its unique id (the request's key) lets a picture drawn
// twice be stored once.
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

std::string Layout::PictureRequest::key() const {
    std::string key = path + "\n" + fileID;
    for (const auto& box : mask)
        for (double v : {box.x, box.y, box.width, box.height})
            key += "," + std::to_string(v);
    return key;
}

std::optional<Layout::PictureRequest> Layout::pictureRequest(const Evidence& item) const {
    const auto& details = item.details();
    if (!details.imageURL) return std::nullopt;
    const double width = contentWidth();
    PictureRequest r{*details.imageURL, item.fileID, {}, width * 0.7, 320};
    switch (item.kind) {
        case ItemKind::message:
            // Under its bubble, on the same side, with a little air between.
            r.fileID = details.attachmentID.value_or("");
            r.maxWidth = width * 0.5;
            r.maxHeight = 220;
            r.right = !s.ownerName.empty() && item.sender == s.ownerName;
            r.above = 4;
            return r;
        case ItemKind::screenshot:
            r.maxWidth = width * 0.4;
            r.mask = hiddenBoxes(item);
            return r;
        case ItemKind::photo:
        case ItemKind::video:
            return r;
        case ItemKind::call:
        case ItemKind::document:
        case ItemKind::email:
            break;
    }
    return std::nullopt;
}

void Layout::preparePictures(const std::vector<Evidence>& items) {
    // What the items will ask for, each picture once.
    std::vector<std::pair<std::string, PictureRequest>> requests;
    std::set<std::string> seen;
    for (const auto& item : items) {
        auto request = pictureRequest(item);
        if (!request) continue;
        std::string key = request->key();
        if (!prepared_.contains(key) && seen.insert(key).second)
            requests.emplace_back(std::move(key), std::move(*request));
    }
    if (requests.empty()) return;

    // Decoding is the slow part of a document of photos: every core takes
    // pictures from one list, and the layout then finds them ready.
    std::vector<std::optional<Scanner::Picture>> results(requests.size());
    Parallel::forEach(requests.size(), [&](size_t i) {
        const PictureRequest& r = requests[i].second;
        results[i] = Scanner::picture(r.path, r.fileID, kMaxPixel, r.mask);
    });
    for (size_t i = 0; i < requests.size(); ++i)
        prepared_[requests[i].first] = prepare(std::move(results[i]));
}

std::optional<Layout::Prepared> Layout::prepare(std::optional<Scanner::Picture> decoded) {
    if (!decoded) return std::nullopt;
    return Prepared{std::make_shared<const std::string>(std::move(decoded->jpeg)), decoded->width,
                    decoded->height};
}

std::optional<Piece> Layout::picture(const PictureRequest& request) const {
    std::string key = request.key();
    // Only looked up: the timeline asks from several threads at once.
    // preparePictures has decoded every picture its items ask for; one it
    // has not is decoded here and not kept.
    std::optional<Prepared> decodedHere;
    auto found = prepared_.find(key);
    if (found == prepared_.end())
        decodedHere =
            prepare(Scanner::picture(request.path, request.fileID, kMaxPixel, request.mask));
    const std::optional<Prepared>& decoded = found == prepared_.end() ? decodedHere : found->second;
    // A picture that cannot be decoded takes no space; its meta line stays.
    if (!decoded || decoded->width < 1 || decoded->height < 1) return std::nullopt;
    auto [width, height] =
        drawnSize(decoded->width, decoded->height, {request.maxWidth, request.maxHeight});
    if (width < 1 || height < 1) return std::nullopt;
    Piece piece;
    piece.height = height + 10;
    double x = request.right ? size.width - margin - width : margin;
    piece.draw = [jpeg = decoded->jpeg, key, pixelWidth = decoded->width,
                  pixelHeight = decoded->height, x, above = request.above, width = width,
                  height = height](cairo_t* cr, double top) {
        drawJpeg(cr, jpeg, key, pixelWidth, pixelHeight, x, top + above, width, height);
    };
    return piece;
}

std::vector<Piece> Layout::pictures(const Evidence& item) {
    std::optional<Piece> piece;
    if (auto request = pictureRequest(item)) piece = picture(*request);
    if (piece) return {std::move(*piece)};
    if (item.kind == ItemKind::video)
        return textBlock("(No preview frame.)", 9, false, Colours::muted, 0, contentWidth());
    return {};
}

}  // namespace kinfolio
