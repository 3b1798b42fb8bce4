#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string_view>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/platform/styled_text.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::ui {
class Label;
}

namespace tavrolin {

// The languages that are written from right to left.
inline constexpr std::string_view kArabic = "ar";
inline constexpr std::string_view kDivehi = "dv";
inline constexpr std::string_view kPersian = "fa";
inline constexpr std::string_view kHausa = "ha";
inline constexpr std::string_view kHebrew = "he";
inline constexpr std::string_view kKashmiri = "ks";
inline constexpr std::string_view kKurdish = "ku";
inline constexpr std::string_view kPashto = "ps";
inline constexpr std::string_view kUrdu = "ur";
inline constexpr std::string_view kYiddish = "yi";

/// The app's configuration, and what the library's rooms share. Whichever of this and the facade is
/// made first in a process points the preferences at the app group. Threads: any, but for what is
/// drawn, which the main one does in a process that has the drawing ports.
class CVNSharedUtility {
public:
    static CVNSharedUtility& sharedInstance();

    /// The app's Info dictionary, read once.
    foundation::Value plistAppInfoDictionary();
    /// Points the preferences at the app group that the dictionary names; without one they stay
    /// where they are.
    void configureSettingsWithInfoPlist(const foundation::Value& infoPlist);
    /// Opens the store of received notifications in the app group's container unless it is open.
    /// How that ended is logged.
    void loadCorvalenPushStore();
    /// Gives the system's present status, on the main queue; does nothing without a completion.
    void getNotificationAuthStatusWithCompleted(
        std::function<void(platform::AuthorizationStatus)> completed);

    /// True for what is no text, and for the empty text; a text of blanks is not empty.
    static bool isEmptyString(const foundation::Value& object);
    /// Whether nothing but white space and line ends is in it; false for what is no text.
    static bool isBlank(const foundation::Value& string);
    /// Without white space and line ends at both ends; what is no text comes back as it is.
    static foundation::Value stringWithoutBlanks(const foundation::Value& string);

    // What the user did in the expanded view, as the content extension left it in the preferences.
    bool isRatingGiven() const;
    bool isActionButtonTapped() const;
    bool isCarouselTapped() const;
    /// The link to open after that. Raises `foundation::Exception` for an index that is negative or
    /// equal to the count of its list, deliberately; beyond that the payload's own link is taken.
    foundation::Value getNotificationDeeplink(const CVNNotificationPayloadModel& model) const;
    /// Moves a stored rating into the model, which is changed and given back.
    foundation::Ref<CVNNotificationPayloadModel> getRatingNotificationPayload(
        const foundation::Ref<CVNNotificationPayloadModel>& model) const;

    // --- What is drawn

    /// Whether texts are shown on a dark background; false at first.
    bool isDarkMode() const { return isDarkMode_; }
    static void setIsDarkMode(bool isDarkMode);
    static bool getIsDarkMode();
    static constexpr std::array<std::string_view, 10> supportedRTLLanguages() {
        return {kArabic,   kDivehi,  kPersian, kHausa, kHebrew,
                kKashmiri, kKurdish, kPashto,  kUrdu,  kYiddish};
    }

    /// A text of HTML in the colour of the present appearance. The size is a number or a text: 15
    /// when it is below 1, 17 when there is none. Nothing, with the reason logged, when that
    /// raises.
    std::optional<platform::StyledText> getNSAttributedStringFromHTMLString(
        const foundation::Value& htmlString, bool makeBold,
        const foundation::Value& customFontSize) const;
    /// Lets the text end in an ellipsis where it does not fit. Gives it back.
    platform::StyledText& setLabelTrailing(platform::StyledText& text) const;
    /// Shows the HTML, or else the plain text, at its language's side; hides the label when both
    /// are blank. Raises `foundation::Exception` for what is no text.
    void setLabel(ui::Label& label, const foundation::Value& withHTMLText,
                  const foundation::Value& andNormalText, bool makeBold) const;
    /// The text, with a line end after it when it is a plain one of two or more lines at the width,
    /// which keeps its last line clear of what follows.
    foundation::Value processedText(const foundation::Value& text, bool isHTML, double width,
                                    bool isBold) const;
    /// At size 15. 0 for blank texts, and, with the reason logged, when that raises.
    std::int64_t numberOfLinesForTextWithHTMLText(const foundation::Value& htmlText,
                                                  const foundation::Value& andNormalText,
                                                  bool isBold, double width) const;
    /// Whether the text's language is one of `supportedRTLLanguages`.
    bool isSupportedRTLText(const foundation::Value& text) const;
    /// False where the payload's layout of small pictures has no room for icon and texts.
    bool isMultiImageLayoutSupportingIconAndText(
        const foundation::Ref<CVNNotificationPayloadModel>& model) const;

private:
    CVNSharedUtility();

    std::mutex mutex_;
    foundation::Value info_;
    bool isDarkMode_ = false;
};

}  // namespace tavrolin
