#include "media/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "media/module.h"

namespace kinfolio::Scanner {

namespace {

constexpr double kGrowSideways = 4, kGrowUpDown = 3;

}  // namespace

std::optional<PixelRect> maskRect(const TextBox& box, int width, int height) {
    if (width <= 0 || height <= 0) return std::nullopt;
    if (!std::isfinite(box.x) || !std::isfinite(box.y) || !std::isfinite(box.width) ||
        !std::isfinite(box.height))
        return std::nullopt;
    const double w = width, h = height;
    // Outward to whole pixels: a partly covered pixel at the edge could still
    // show part of a letter.
    double left = std::floor(box.x * w - kGrowSideways);
    double right = std::ceil((box.x + box.width) * w + kGrowSideways);
    // Boxes count y upward from the bottom; rows count down from the top.
    double top = std::floor(h - (box.y + box.height) * h - kGrowUpDown);
    double bottom = std::ceil(h - box.y * h + kGrowUpDown);
    left = std::clamp(left, 0.0, w);
    right = std::clamp(right, 0.0, w);
    top = std::clamp(top, 0.0, h);
    bottom = std::clamp(bottom, 0.0, h);
    if (right <= left || bottom <= top) return std::nullopt;
    return PixelRect{static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
                     static_cast<int>(bottom - top)};
}

Bitmap masked(Bitmap image, const std::vector<TextBox>& boxes) {
    const size_t stride = static_cast<size_t>(std::max(image.width, 0)) * 3;
    if (image.rgb.size() != stride * static_cast<size_t>(std::max(image.height, 0))) return image;
    for (const auto& box : boxes) {
        auto rect = maskRect(box, image.width, image.height);
        if (!rect) continue;
        for (int row = rect->top; row < rect->top + rect->height; ++row)
            std::memset(image.rgb.data() + row * stride + static_cast<size_t>(rect->left) * 3, 0,
                        static_cast<size_t>(rect->width) * 3);
    }
    return image;
}

std::optional<Picture> picture(const std::string& path, const std::string& fileID, int maxPixel,
                               const std::vector<TextBox>& mask) {
    return detail::mediaModule().picture(path, fileID, maxPixel, mask);
}

}  // namespace kinfolio::Scanner
