#include "tavrolin/content_ui/layouts/overlay_layout.h"

#include <memory>

#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

namespace {

constexpr std::string_view kMessage = "Could not load layout22 due to exception  %@";

}  // namespace

void CVNLayout23::connect(ui::Connections& connections) {
    MediaLayoutView::connect(connections);
    connections.view("veil", veil_);
    connections.constraint("headerComponentTopConstraint", headerComponentTopConstraint_);
}

void CVNLayout23::configureNotification() {
    compose("-[CVNLayout23 configureNotification]", kMessage, [this] {
        loadHeaderComponent();
        headerComponentTopConstraint_->setActive(!hasMediaFile());
        veil_->setHidden(!hasMediaFile() || cvnUi().cvnLui);
        if (hasMediaFile()) loadMediaComponent();
        if (hasRating()) loadRatingComponent();
        if (hasActionButtons() || hasReplyButton()) loadActionButtonComponent();
    });
}

void CVNLayout23::layoutSubviews() {
    guard("-[CVNLayout23 layoutSubviews]", kMessage, [this] {
        if (headerComponentContainer_ != nullptr && cvnUi().cvnLui) paintHeader();
    });
}

void CVNLayout23::paintHeader() {
    const foundation::Value& settings = cvnUi().cvnLui;
    if (settings[kPNOverlayColor]) {
        headerComponentContainer_->setBackgroundColor(
            CVNColorUtility::colorFromHexString(settings[kPNOverlayColor]));
    } else if (settings[kPNOverlayGradientColor]) {
        CVNColorUtility::removeBackgroundGradients(*headerComponentContainer_);
        // Later, when this pass has given the header its size.
        platform::current().dispatch->asyncMain([weak = weak_from_this()] {
            if (const auto layout = std::dynamic_pointer_cast<CVNLayout23>(weak.lock()))
                layout->paintHeaderGradient();
        });
    } else {
        headerComponentContainer_->setBackgroundColor(CVNColorUtility::colorFromHexString(
            CVNSharedUtility::getIsDarkMode() ? kPNGradientBlackColorValue
                                              : kPNGradientWhiteColorValue));
    }
}

void CVNLayout23::paintHeaderGradient() {
    guard("-[CVNLayout23 layoutSubviews]", kMessage, [this] {
        // Again: two passes may have come before this.
        CVNColorUtility::removeBackgroundGradients(*headerComponentContainer_);
        CVNColorUtility::addBackgroundGradientColor(*headerComponentContainer_,
                                                    cvnUi().cvnLui[kPNOverlayGradientColor]);
    });
}

}  // namespace tavrolin
