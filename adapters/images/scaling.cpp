#include "adapters/images/scaling.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tavrolin::adapters::images {

using platform::Image;

namespace {

// Sums of colours that were multiplied with their alpha, as pixels.
void write(const std::vector<float>& sums, std::uint8_t* to) {
    const auto rounded = [](float value) {
        return static_cast<std::uint8_t>(std::min(value + 0.5F, 255.0F));
    };
    for (std::size_t i = 0; i < sums.size(); i += 4, to += 4) {
        const float alpha = sums[i + 3];
        to[3] = rounded(alpha);
        if (to[3] == 0) continue;
        for (std::size_t channel = 0; channel < 3; ++channel)
            to[channel] = rounded(sums[i + channel] / alpha);
    }
}

// How one pixel of a picture spreads over at most two of a smaller one, in one direction.
struct Spread {
    Spread(std::uint32_t position, std::uint32_t from, std::uint32_t to) {
        const std::uint64_t begin = std::uint64_t{position} * to;
        const std::uint64_t end = begin + to;
        first = static_cast<std::uint32_t>(begin / from);
        const std::uint64_t border = (first + std::uint64_t{1}) * from;
        shares[0] = static_cast<float>(std::min(end, border) - begin) / static_cast<float>(from);
        if (end > border) shares[1] = static_cast<float>(end - border) / static_cast<float>(from);
    }
    std::uint32_t first = 0;
    float shares[2] = {0, 0};
};

}  // namespace

PixelSize fittedSize(PixelSize picture, PixelSize bounds) {
    const PixelSize most = {std::clamp(bounds.width, 1U, picture.width),
                            std::clamp(bounds.height, 1U, picture.height)};
    const double scale = std::min(static_cast<double>(most.width) / picture.width,
                                  static_cast<double>(most.height) / picture.height);
    const auto scaled = [scale](std::uint32_t length, std::uint32_t limit) {
        return std::clamp(static_cast<std::uint32_t>(std::lround(length * scale)), 1U, limit);
    };
    return {scaled(picture.width, most.width), scaled(picture.height, most.height)};
}

Reduction::Reduction(PixelSize from, PixelSize to)
    : from_(from), to_(to), image_(std::make_shared<Image>()) {
    image_->width = to.width;
    image_->height = to.height;
    image_->pixels.resize(std::size_t{to.width} * to.height * 4);
    if (from == to) return;
    across_.resize(std::size_t{to.width} * 4);
    sums_.resize(across_.size());
}

void Reduction::addRow(const std::uint8_t* row) {
    if (nextRow_ >= from_.height) return;
    const std::uint64_t y = nextRow_++;
    if (from_ == to_) {
        const std::size_t rowBytes = std::size_t{to_.width} * 4;
        std::memcpy(image_->pixels.data() + finishedRows_++ * rowBytes, row, rowBytes);
        return;
    }
    sumAcross(row);
    // In units of which a row of the picture has as many as the result has rows, and the other way
    // round. It touches two rows of the result at most, as that is no higher than the picture.
    const std::uint64_t begin = y * to_.height;
    const std::uint64_t end = begin + to_.height;
    const std::uint64_t border = (finishedRows_ + std::uint64_t{1}) * from_.height;
    addToRow(static_cast<float>(std::min(end, border) - begin) / static_cast<float>(from_.height));
    if (end < border) return;
    finishRow();
    if (end > border) addToRow(static_cast<float>(end - border) / static_cast<float>(from_.height));
}

// Sums are of colours that are multiplied with their alpha, each by the share of the result's pixel
// that it covers.
void Reduction::sumAcross(const std::uint8_t* row) {
    const auto whole = static_cast<float>(from_.width);
    std::ranges::fill(across_, 0.0F);
    float* to = across_.data();
    std::uint64_t border = from_.width;
    std::uint64_t begin = 0;
    for (std::uint32_t x = 0; x < from_.width; ++x, row += 4) {
        const float alpha = row[3];
        const float pixel[4] = {row[0] * alpha, row[1] * alpha, row[2] * alpha, alpha};
        const std::uint64_t end = begin + to_.width;
        const auto add = [&](std::uint64_t units) {
            const float share = static_cast<float>(units) / whole;
            for (int i = 0; i < 4; ++i)
                to[i] += pixel[i] * share;
        };
        add(std::min(end, border) - begin);
        if (end >= border) {
            to += 4;
            if (end > border) add(end - border);
            border += from_.width;
        }
        begin = end;
    }
}

void Reduction::addToRow(float share) {
    for (std::size_t i = 0; i < sums_.size(); ++i)
        sums_[i] += across_[i] * share;
}

void Reduction::finishRow() {
    if (finishedRows_ >= to_.height) return;
    write(sums_, image_->pixels.data() + std::size_t{finishedRows_++} * to_.width * 4);
    std::ranges::fill(sums_, 0.0F);
}

std::shared_ptr<Image> Reduction::take() {
    if (!sums_.empty()) finishRow();
    return std::move(image_);
}

ScatteredReduction::ScatteredReduction(PixelSize from, PixelSize to)
    : from_(from), to_(to), sums_(std::size_t{to.width} * to.height * 4) {}

void ScatteredReduction::addPixels(const std::uint8_t* pixels, std::uint32_t count, std::uint32_t y,
                                   std::uint32_t first, std::uint32_t step) {
    const Spread down(y, from_.height, to_.height);
    for (std::uint32_t i = 0; i < count; ++i, pixels += 4) {
        const Spread across(first + i * step, from_.width, to_.width);
        const float alpha = pixels[3];
        const float pixel[4] = {pixels[0] * alpha, pixels[1] * alpha, pixels[2] * alpha, alpha};
        for (std::uint32_t row = 0; row < 2 && down.shares[row] > 0; ++row) {
            for (std::uint32_t column = 0; column < 2 && across.shares[column] > 0; ++column) {
                const float share = down.shares[row] * across.shares[column];
                float* to = sums_.data() +
                            (std::size_t{down.first + row} * to_.width + across.first + column) * 4;
                for (int channel = 0; channel < 4; ++channel)
                    to[channel] += pixel[channel] * share;
            }
        }
    }
}

std::shared_ptr<Image> ScatteredReduction::take() {
    auto image = std::make_shared<Image>();
    image->width = to_.width;
    image->height = to_.height;
    image->pixels.resize(sums_.size());
    write(sums_, image->pixels.data());
    return image;
}

std::shared_ptr<Image> reduced(const Image& image, PixelSize to) {
    if (to == PixelSize{image.width, image.height}) return std::make_shared<Image>(image);
    Reduction reduction({image.width, image.height}, to);
    for (std::uint32_t y = 0; y < image.height; ++y)
        reduction.addRow(image.pixels.data() + std::size_t{y} * image.width * 4);
    return reduction.take();
}

}  // namespace tavrolin::adapters::images
