#pragma once

#include <memory>
#include <optional>

#include "tavrolin/content_ui/notification_view.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/platform/color.h"
#include "tavrolin/platform/styled_text.h"
#include "tavrolin/ui/label.h"

namespace tavrolin {

/// A piece of what a layout shows. Reports taps to the controller, through
/// CVNNotificationViewHelper.
///
/// Operation for interface files: tapNotificationEvent:.
class CVNBaseComponentView : public NotificationView {
public:
    using Delegate = std::weak_ptr<CVNCustomPushNotificationInteractionDelegate>;

    void connect(ui::Connections& connections) override;

    /// The picture in the file at the URL's path; null, with the reason logged, when it can't be
    /// read, and null when it is no picture.
    static std::shared_ptr<ui::Image> getImageFromURL(const std::optional<foundation::URL>& url);
    /// The text in that colour; as it was, with the reason logged, where there is none.
    static platform::StyledText setForegroundColor(const std::optional<platform::Color>& color,
                                                   const platform::StyledText& ofHTMLString);
    static void setLabelTrailing(platform::StyledText& text);
    static void setLabel(ui::Label& label, const foundation::Value& withHTMLText,
                         const foundation::Value& andNormalText, bool makeBold);

    /// Asks for the app to be opened.
    void tapNotificationEvent(ui::View& sender);
    void pushNotificatioInteraction(const foundation::Value& eventData);
    /// A clear one, one point wide.
    void setBorder();

    /// For whoever wants to keep one there; reports go to the helper's.
    const Delegate& delegate() const { return delegate_; }
    void setDelegate(Delegate delegate) { delegate_ = std::move(delegate); }

private:
    Delegate delegate_;
};

}  // namespace tavrolin
