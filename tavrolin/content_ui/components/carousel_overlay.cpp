#include "tavrolin/content_ui/components/carousel_overlay.h"

#include <charconv>
#include <optional>
#include <string>

#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/contrast.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/ui/label.h"

namespace tavrolin {

using foundation::Value;
using platform::Color;

namespace {

constexpr std::string_view kTextColor = "tc";

// Darker towards the bottom: white texts read on it over any picture.
Value veil() {
    return Value::array({"1", "00000080", "000000C0", "180"});
}

Color textColor(const Value& property) {
    if (const auto color = CVNColorUtility::colorFromHexString(property[kTextColor])) return *color;
    Value behind = property[kPNOverlayColor];
    if (const Value& gradient = property[kPNOverlayGradientColor]; !behind && gradient)
        behind = gradient.at(2);  // texts lie at its end
    const auto color = CVNColorUtility::colorFromHexString(behind);
    return color ? readableOn(*color) : Color::white();
}

// What an HTML text has without a colour of its own.
Color plainHTMLColor() {
    return CVNSharedUtility::getIsDarkMode() ? Color::white() : Color::black();
}

void colorText(ui::Label& label, const Color& color) {
    label.setTextColor(color);
    if (!label.attributedText()) return;
    platform::StyledText text = *label.attributedText();
    for (platform::TextRun& run : text.runs) {
        if (run.attributes.color == plainHTMLColor()) run.attributes.color = color;
    }
    label.setAttributedText(std::move(text));
}

void colorBackground(ui::View& view, const Value& property) {
    CVNColorUtility::removeBackgroundGradients(view);
    if (property[kPNOverlayColor]) {
        view.setBackgroundColor(CVNColorUtility::colorFromHexString(property[kPNOverlayColor]));
    } else if (property[kPNOverlayGradientColor]) {
        CVNColorUtility::addBackgroundGradientColor(view, property[kPNOverlayGradientColor]);
    } else {
        CVNColorUtility::addBackgroundGradientColor(view, veil());
    }
}

// The page whose number the text is, as it is written in full: "0", but not "00".
std::optional<std::size_t> pageNamed(std::string_view text, std::size_t pages) {
    std::size_t page = 0;
    const auto error = std::from_chars(text.data(), text.data() + text.size(), page).ec;
    if (error != std::errc() || page >= pages || std::to_string(page) != text) return std::nullopt;
    return page;
}

// The parts of a text between separators; of one without any, the whole.
std::vector<std::string> partsOf(std::string_view text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (true) {
        const std::size_t end = text.find(kPNE2ECarouselCarouselSlideIndexSeparator, begin);
        parts.emplace_back(text.substr(begin, end - begin));
        if (end == std::string_view::npos) return parts;
        begin = end + kPNE2ECarouselCarouselSlideIndexSeparator.size();
    }
}

}  // namespace

void readOverlayProperties(const Value& entries, std::int64_t pages,
                           std::vector<Value>& properties) {
    constexpr std::string_view kIndex = kPNE2ECarouselCarouselSlideIndex;
    properties.clear();
    for (std::int64_t page = 0; page < pages; ++page)
        properties.push_back(Value::dictionary({{kIndex, std::to_string(page)}}));
    for (const Value& entry : entries.items()) {
        if (entry[kIndex].isNil()) continue;
        for (const std::string& name : partsOf(entry[kIndex].string())) {
            const auto page = pageNamed(name, properties.size());
            if (!page) continue;
            properties[*page] = entry;
            properties[*page].set(kIndex, name);
        }
    }
}

void applyColorFromCarouselProperty(const Value& property, ui::View& toView) {
    if (auto* const label = dynamic_cast<ui::Label*>(&toView)) {
        colorText(*label, textColor(property));
    } else {
        colorBackground(toView, property);
    }
}

void CarouselOverlay::setColors(const Value& property) {
    property_ = property;
    isPainted_ = false;
    setNeedsLayout();
}

void CarouselOverlay::layoutSubviews() {
    const platform::Size size{bounds().width, bounds().height};
    if (isPainted_ && size == painted_) return;
    painted_ = size;
    isPainted_ = true;
    guard("-[CarouselOverlay layoutSubviews]", "Invalid argument while fetching carousel index  %@",
          [this] { applyColorFromCarouselProperty(property_, *this); });
}

}  // namespace tavrolin
