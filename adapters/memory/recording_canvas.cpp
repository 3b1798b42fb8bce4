#include "adapters/memory/recording_canvas.h"

#include <cmath>
#include <cstdio>

#include "adapters/memory/memory_typesetter.h"

namespace tavrolin::adapters::memory {

namespace {

std::string number(double value) {
    const double rounded = std::round(value * 100) / 100;
    char text[40];
    std::snprintf(text, sizeof text, "%.10g", rounded == 0 ? 0 : rounded);
    return text;
}

std::string color(const platform::Color& color) {
    const auto byte = [](double component) {
        return static_cast<unsigned>(std::lround(component * 255));
    };
    char text[16];
    std::snprintf(text, sizeof text, "#%02X%02X%02X%02X", byte(color.red) & 0xFFU,
                  byte(color.green) & 0xFFU, byte(color.blue) & 0xFFU, byte(color.alpha) & 0xFFU);
    return text;
}

}  // namespace

std::string RecordingCanvas::placed(const platform::Rect& rect, double cornerRadius) const {
    const platform::Point& offset = offsets_.back();
    std::string text = number(rect.x + offset.x) + "," + number(rect.y + offset.y) + " " +
                       number(rect.width) + "x" + number(rect.height);
    if (cornerRadius > 0) text += " radius " + number(cornerRadius);
    return text;
}

void RecordingCanvas::save() {
    offsets_.push_back(offsets_.back());
}

void RecordingCanvas::restore() {
    if (offsets_.size() > 1) offsets_.pop_back();
}

void RecordingCanvas::translate(double dx, double dy) {
    offsets_.back().x += dx;
    offsets_.back().y += dy;
}

void RecordingCanvas::clip(const platform::Rect& rect, double cornerRadius) {
    lines_.push_back("clip " + placed(rect, cornerRadius));
}

void RecordingCanvas::beginGroup() {
    groups_.push_back(lines_.size());
    lines_.emplace_back();
}

void RecordingCanvas::endGroup(double alpha) {
    if (groups_.empty()) return;
    lines_[groups_.back()] = "group " + number(alpha) + " {";
    groups_.pop_back();
    lines_.emplace_back("}");
}

void RecordingCanvas::fill(const platform::Rect& rect, double cornerRadius,
                           const platform::Color& with) {
    lines_.push_back("fill " + placed(rect, cornerRadius) + " " + color(with));
}

void RecordingCanvas::fill(const platform::Rect& rect, double cornerRadius,
                           const platform::Gradient& gradient) {
    std::string line = "gradient " + placed(rect, cornerRadius);
    for (const platform::Color& stop : gradient.colors)
        line += " " + color(stop);
    lines_.push_back(std::move(line));
}

void RecordingCanvas::stroke(const platform::Rect& rect, double cornerRadius, double width,
                             const platform::Color& with) {
    lines_.push_back("stroke " + placed(rect, cornerRadius) + " width " + number(width) + " " +
                     color(with));
}

void RecordingCanvas::drawImage(const platform::ImageRef& image, const platform::Rect& rect,
                                const std::optional<platform::Color>& tint) {
    std::string line = "image ";
    line += image == nullptr ? "none"
                             : std::to_string(image->width) + "x" + std::to_string(image->height);
    line += " at " + placed(rect, 0);
    if (tint) line += " tint " + color(*tint);
    lines_.push_back(std::move(line));
}

void RecordingCanvas::drawText(const platform::TextLayout& text, platform::Point origin,
                               const platform::Color& with) {
    const auto& layout = static_cast<const MemoryTextLayout&>(text);
    double y = origin.y + offsets_.back().y;
    const double step = layout.size().height / std::max(1, layout.lineCount());
    for (const auto& line : layout.lines()) {
        lines_.push_back("text \"" + line.text + "\" at " +
                         number(origin.x + offsets_.back().x + line.x) + "," + number(y) + " " +
                         color(with));
        y += step;
    }
}

}  // namespace tavrolin::adapters::memory
