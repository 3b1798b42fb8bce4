#include "tavrolin/ui/layer.h"

#include <algorithm>
#include <utility>

#include "tavrolin/ui/content_fit.h"

namespace tavrolin::ui {

void Layer::changed() {
    static std::uint64_t changes = 0;
    lastChange_ = ++changes;
}

std::uint64_t Layer::lastChange() const {
    std::uint64_t last = lastChange_;
    for (const auto& sublayer : sublayers_)
        last = std::max(last, sublayer->lastChange());
    return last;
}

bool Layer::isPlaying() const {
    return std::ranges::any_of(sublayers_, [](const auto& layer) { return layer->isPlaying(); });
}

void Layer::setFrame(const platform::Rect& frame) {
    if (frame == frame_) return;
    frame_ = frame;
    changed();
}

void Layer::setMasksToBounds(bool masks) {
    if (masks == masksToBounds_) return;
    masksToBounds_ = masks;
    changed();
}

void Layer::addSublayer(std::shared_ptr<Layer> layer) {
    insertSublayer(std::move(layer), sublayers_.size());
}

void Layer::insertSublayer(std::shared_ptr<Layer> layer, std::size_t index) {
    if (layer == nullptr || layer.get() == this) return;
    const auto place = std::min(index, sublayers_.size());
    sublayers_.insert(sublayers_.begin() + static_cast<std::ptrdiff_t>(place), std::move(layer));
    changed();
}

void Layer::removeSublayer(const Layer& layer) {
    std::erase_if(sublayers_, [&](const auto& other) { return other.get() == &layer; });
    changed();
}

platform::Rect Layer::extent() const {
    platform::Rect all = frame_;
    if (masksToBounds_) return all;
    for (const auto& sublayer : sublayers_)
        all = all.united(sublayer->extent().movedBy(frame_.x, frame_.y));
    return all;
}

void Layer::draw(platform::Canvas& canvas) const {
    canvas.save();
    canvas.translate(frame_.x, frame_.y);
    if (masksToBounds_) canvas.clip({0, 0, frame_.width, frame_.height}, 0);
    drawContent(canvas);
    for (const auto& sublayer : sublayers_)
        sublayer->draw(canvas);
    canvas.restore();
}

void Layer::drawContent(platform::Canvas&) const {}

void GradientLayer::setGradient(platform::Gradient gradient) {
    if (gradient == gradient_) return;
    gradient_ = std::move(gradient);
    changed();
}

void GradientLayer::drawContent(platform::Canvas& canvas) const {
    if (gradient_.colors.empty()) return;
    canvas.fill({0, 0, frame().width, frame().height}, 0, gradient_);
}

void PlayerLayer::setVideoGravity(VideoGravity gravity) {
    videoGravity_ = gravity;
    changed();
}

void PlayerLayer::drawContent(platform::Canvas& canvas) const {
    if (player_ == nullptr || frame().isEmpty()) return;
    const platform::Rect bounds{0, 0, frame().width, frame().height};
    const double scale = canvas.scale();
    const auto image = player_->frame({bounds.width * scale, bounds.height * scale});
    if (image == nullptr || image->width == 0 || image->height == 0) return;
    const platform::Size size{static_cast<double>(image->width),
                              static_cast<double>(image->height)};
    const ContentMode mode = videoGravity_ == VideoGravity::resize ? ContentMode::scaleToFill
                             : videoGravity_ == VideoGravity::resizeAspectFill
                                 ? ContentMode::scaleAspectFill
                                 : ContentMode::scaleAspectFit;
    canvas.save();
    canvas.clip(bounds, 0);
    canvas.drawImage(image, placeOf(size, bounds, mode), std::nullopt);
    canvas.restore();
}

}  // namespace tavrolin::ui
