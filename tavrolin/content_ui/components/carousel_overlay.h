#pragma once

#include <cstdint>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/view.h"

namespace tavrolin {

// The colours of a carousel's pages, as the payload's entries say them: {"i": the pages, "olc": a
// colour or "olgc": a gradient behind the texts, "tc": the texts' colour}.

/// Makes `properties` an entry for each of so many pages: {"i": its index}, or the last one of the
/// list that names the page. "0-2" names two pages, 0 and 2. Raises `foundation::Exception` for a
/// list that is no list, an entry that is no dictionary, and pages that are no text; `properties`
/// stays as far as it got.
void readOverlayProperties(const foundation::Value& entries, std::int64_t pages,
                           std::vector<foundation::Value>& properties);

/// Colours a label's text, or any other view's background. Where the property says nothing, a
/// background becomes a dark veil; a text black or white, whichever reads better on it. Colours
/// that an HTML text gives itself stay. Raises `foundation::Exception` for a gradient that is none.
void applyColorFromCarouselProperty(const foundation::Value& property, ui::View& toView);

/// What lies behind the texts of a page.
class CarouselOverlay : public ui::View {
public:
    std::string_view className() const override { return "CarouselOverlay"; }

    void setColors(const foundation::Value& property);
    void layoutSubviews() override;  // a gradient is as large as the view

private:
    foundation::Value property_;
    platform::Size painted_;  // the gradient's
    bool isPainted_ = false;
};

}  // namespace tavrolin
