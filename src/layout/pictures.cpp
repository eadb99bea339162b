#include <cairo.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <set>
#include <thread>

#include "layout/layout.h"
#include "media/pictures.h"

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

std::string Layout::pictureKey(const std::string& path, const std::string& fileID,
                               const std::vector<TextBox>& mask) {
    std::string key = path + "\n" + fileID;
    for (const auto& box : mask)
        for (double v : {box.x, box.y, box.width, box.height})
            key += "," + std::to_string(v);
    return key;
}

void Layout::preparePictures(const std::vector<Evidence>& items) {
    // What the items will ask for, each picture once.
    struct Request {
        std::string key, path, fileID;
        std::vector<TextBox> mask;
    };
    std::vector<Request> requests;
    std::set<std::string> seen;
    for (const auto& item : items) {
        const auto& details = item.details();
        if (!details.imageURL) continue;
        Request r{"", *details.imageURL, item.fileID, {}};
        if (item.kind == ItemKind::message)
            r.fileID = details.attachmentID.value_or("");
        else if (item.kind == ItemKind::screenshot)
            r.mask = hiddenBoxes(item);
        else if (item.kind != ItemKind::photo && item.kind != ItemKind::video)
            continue;
        r.key = pictureKey(r.path, r.fileID, r.mask);
        if (prepared_.contains(r.key) || !seen.insert(r.key).second) continue;
        requests.push_back(std::move(r));
    }
    if (requests.empty()) return;

    // Decoding is the slow part of a document of photos: every core takes
    // pictures from one list, and the layout then finds them ready.
    std::vector<std::optional<Scanner::Picture>> results(requests.size());
    std::atomic<size_t> next{0};
    auto work = [&] {
        for (size_t i = next++; i < requests.size(); i = next++)
            results[i] =
                Scanner::picture(requests[i].path, requests[i].fileID, kMaxPixel, requests[i].mask);
    };
    size_t threads =
        std::min<size_t>(std::max(1u, std::thread::hardware_concurrency()), requests.size());
    std::vector<std::thread> workers;
    for (size_t t = 1; t < threads; ++t)
        workers.emplace_back(work);
    work();
    for (auto& worker : workers)
        worker.join();
    for (size_t i = 0; i < requests.size(); ++i) {
        std::optional<Prepared> ready;
        if (results[i])
            ready = Prepared{std::make_shared<const std::string>(std::move(results[i]->jpeg)),
                             results[i]->width, results[i]->height};
        prepared_[requests[i].key] = std::move(ready);
    }
}

std::optional<Piece> Layout::picture(const std::string& path, const std::string& fileID,
                                     double maxWidth, double maxHeight, bool right,
                                     const std::vector<TextBox>& mask, double above) {
    std::string key = pictureKey(path, fileID, mask);
    if (!prepared_.contains(key)) {
        auto decoded = Scanner::picture(path, fileID, kMaxPixel, mask);
        std::optional<Prepared> ready;
        if (decoded)
            ready = Prepared{std::make_shared<const std::string>(std::move(decoded->jpeg)),
                             decoded->width, decoded->height};
        prepared_[key] = std::move(ready);
    }
    const std::optional<Prepared>& decoded = prepared_[key];
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
    piece.draw = [jpeg = decoded->jpeg, id, pixelWidth = decoded->width,
                  pixelHeight = decoded->height, x, above, width = width,
                  height = height](cairo_t* cr, double top) {
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
