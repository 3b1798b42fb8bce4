#include "tavrolin/content_ui/components/base_component_view.h"

#include <string>
#include <utility>

#include "tavrolin/content_ui/notification_view_helper.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/image_decoder.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

using foundation::Value;

void CVNBaseComponentView::connect(ui::Connections& connections) {
    connections.action("tapNotificationEvent:",
                       [this](ui::View& sender) { tapNotificationEvent(sender); });
}

std::shared_ptr<ui::Image> CVNBaseComponentView::getImageFromURL(
    const std::optional<foundation::URL>& url) {
    static constexpr std::string_view kOperation = "-[CVNBaseComponentView getImageFromURL:]";
    const Value text = url ? Value(url->absoluteString()) : Value();
    std::shared_ptr<ui::Image> image;
    guard(kOperation,
          formatMessage("Could not get the image from the URL: %@ due to an execption: %@", {text}),
          [&] {
              if (!url) {
                  foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                               "there is no URL");
              }
              const std::string path = url->path();
              if (!platform::current().files->isReadableFile(path)) {
                  log(LogLevel::error, kOperation,
                      formatMessage("Could not get the image from URL: %@ due to and error %@",
                                    {text, "the file \"" + path + "\" can't be read"}));
                  return;
              }
              image = ui::Image::withSource(platform::current().imageDecoder->sourceWithFile(path),
                                            url->lastPathComponent());
          });
    return image;
}

platform::StyledText CVNBaseComponentView::setForegroundColor(
    const std::optional<platform::Color>& color, const platform::StyledText& ofHTMLString) {
    platform::StyledText text = ofHTMLString;
    guard("-[CVNBaseComponentView setForegroundColor:ofHTMLString:]",
          "Could not change color of HTML string due to exception : %@", [&] {
              if (!color) {
                  foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                               "there is no colour");
              }
              text.setColor(*color);
          });
    return text;
}

void CVNBaseComponentView::setLabelTrailing(platform::StyledText& text) {
    CVNSharedUtility::sharedInstance().setLabelTrailing(text);
}

void CVNBaseComponentView::setLabel(ui::Label& label, const Value& withHTMLText,
                                    const Value& andNormalText, bool makeBold) {
    CVNSharedUtility::sharedInstance().setLabel(label, withHTMLText, andNormalText, makeBold);
}

void CVNBaseComponentView::tapNotificationEvent(ui::View& /*sender*/) {
    eventData_.set(kCustomPNButtonInteraction, kInteractionTap);
    pushNotificatioInteraction(eventData_);
}

void CVNBaseComponentView::pushNotificatioInteraction(const Value& eventData) {
    if (const auto receiver = CVNNotificationViewHelper::getCustomNotificationDelegate())
        receiver->handleCustomPushNotificationInteraction(eventData);
}

void CVNBaseComponentView::setBorder() {
    View::setBorder(1, platform::Color::clear());
}

}  // namespace tavrolin
