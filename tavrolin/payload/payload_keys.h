#pragma once

#include <string_view>

namespace tavrolin {

// The keys of a push payload: one vocabulary for host code and all three processes. Each group is
// headed by the dictionary in which its keys stand.

// Top level
inline constexpr std::string_view kPNAps = "aps";
inline constexpr std::string_view kPNApnSource = "cvnSrc";
inline constexpr std::string_view kPNApnSourceValue =
    "Corvalen";  // marks this system's pushes; any case
inline constexpr std::string_view kPNPayload = "cvnPayload";
inline constexpr std::string_view kPNOldPayload = "payload";  // old format
inline constexpr std::string_view kPNCustomPayload = "cvnCustomPayload";
inline constexpr std::string_view kPNOldCustomPayload = "customPayload";  // old format
inline constexpr std::string_view kPNUi = "cvnUi";

// "aps"
inline constexpr std::string_view kPNAlert = "alert";
inline constexpr std::string_view kPNMutableContent =
    "mutable-content";  // 1: the service extension may rewrite it
inline constexpr std::string_view kPNContentAvailable = "content-available";  // 1: silent

// "alert" and "cvnPayload", or "aps" and "cvnPayload"
inline constexpr std::string_view kPNTitle = "title";
inline constexpr std::string_view kPNSubtitle = "subtitle";
inline constexpr std::string_view kPNBody = "body";
inline constexpr std::string_view kPNCategory = "category";
inline constexpr std::string_view kPNSound = "sound";

// "cvnPayload"
inline constexpr std::string_view kPNTrid =
    "trid";  // the identity of one delivery of one campaign to one device
inline constexpr std::string_view kPNType = "type";
inline constexpr std::string_view kPNDeeplink = "deeplink";
inline constexpr std::string_view kPNMediaURL = "mediaUrl";
inline constexpr std::string_view kPNOldMediaURL = "mediaurl";       // old format: a lower-case u
inline constexpr std::string_view kPNMediaURLPath = "mediaURLPath";  // written by the library
inline constexpr std::string_view kPNStatus = "status";
inline constexpr std::string_view kPNPublishedDate = "publishedDate";
inline constexpr std::string_view kPNScheduledDate =
    "schDt";  // when a local notification is to show
inline constexpr std::string_view kPNCollapseKey = "collapseKey";
inline constexpr std::string_view kPNTtl = "ttl";
inline constexpr std::string_view kPNModifiedDate =
    "modifiedDate";  // archive and dictionary form only
inline constexpr std::string_view kPNReceivedDate = "receivedDate";  // written by the library
inline constexpr std::string_view kPNHtTitle = "htT";
inline constexpr std::string_view kPNHtSubtitle = "htS";
inline constexpr std::string_view kPNHtBody = "htB";
inline constexpr std::string_view kPNActionButton = "actionButton";
inline constexpr std::string_view kPNReplyActionButton = "rbtn";
inline constexpr std::string_view kPNCarousel = "carousel";
inline constexpr std::string_view kPNAttrParams = "attrParams";
inline constexpr std::string_view kPNSta =
    "__sta";  // in "attrParams": the encoded attribution list
inline constexpr std::string_view kPNAttrIdentity =
    "attrIdentity";  // dictionary form and archive only
inline constexpr std::string_view kPNMeta = "pnMeta";

// An element of "actionButton"
inline constexpr std::string_view kPNActionButtonName = "actionName";
inline constexpr std::string_view kPNActionButtonDeeplink = "actionDeeplink";
inline constexpr std::string_view kPNActionButtonType = "aTyp";
inline constexpr std::string_view kPNActionButtonConfig = "config";

// An action button's "config"
inline constexpr std::string_view kPNActionButtonConfigCopyText = "ctxt";
inline constexpr std::string_view kPNActionButtonConfigSnoozeInterval = "intl";
inline constexpr std::string_view kPNDefaultSnoozeInterval =
    "1";  // a value: when "intl" is missing
inline constexpr std::string_view kPNOpenAppAction = "oapp";

// "rbtn"
inline constexpr std::string_view kPNReplyActionName = "name";
inline constexpr std::string_view kPNReplyButtonType = "aTyp";
inline constexpr std::string_view kPNReplyPlaceholderText = "pht";
inline constexpr std::string_view kPNReplyFeedbackMessage = "ft";

// An element of "carousel"
inline constexpr std::string_view kPNCarouselImageURL = "imgUrl";
inline constexpr std::string_view kPNCarouselImageURLPath = "imgUrlPath";  // written by the library
inline constexpr std::string_view kPNCarouselImageTitle = "imgTitle";
inline constexpr std::string_view kPNCarouselImageMessage = "imgMsg";
inline constexpr std::string_view kPNCarouselImageDeeplink = "imgDeeplink";
inline constexpr std::string_view kPNCarouselImageHtTitle = "htT";
inline constexpr std::string_view kPNCarouselImageHtBody = "htB";

// "cvnUi"
inline constexpr std::string_view kPNLayoutId = "lid";
inline constexpr std::string_view kPNFallbackLayoutId = "flid";  // read beside "lid" only
inline constexpr std::string_view kPNBackgroundColor = "bgc";
inline constexpr std::string_view kPNBackgroundGradientColor = "bggc";
inline constexpr std::string_view kPNLayoutUi = "lui";
inline constexpr std::string_view kPNE2ECarouselCollapsedState = "cs";
inline constexpr std::string_view kPNTimer = "tim";
inline constexpr std::string_view kPNRating = "rat";

// "cvnUi" -> "lui"
inline constexpr std::string_view kPNOverlayColor = "olc";
inline constexpr std::string_view kPNOverlayGradientColor = "olgc";
inline constexpr std::string_view kPNGradientWhiteColorValue = "FFFFFF50";  // a value, RRGGBBAA
inline constexpr std::string_view kPNGradientBlackColorValue = "00000050";  // a value, RRGGBBAA
inline constexpr std::string_view kPNE2ECarouselSpeed = "spd";
inline constexpr std::string_view kPNE2ECarouselTransitionEffect = "te";
inline constexpr std::string_view kPNE2ECarouselCarouselOverlayColor = "colc";
inline constexpr std::string_view kPNE2ECarouselCarouselSlideIndex =
    "i";  // prefix of the keys of one slide
inline constexpr std::string_view kPNE2ECarouselCarouselSlideIndexSeparator = "-";
inline constexpr std::string_view kPNMultiImageLayoutType = "lt";
inline constexpr std::string_view kPNMultiImagePosition = "pos";
inline constexpr std::string_view kPNSmallImageButton = "btn";
inline constexpr std::string_view kPNSmallImageButtonIndexKey =
    "i";  // prefix of the keys of one button
inline constexpr std::string_view kPNSmallImageButtonSeperator = "-";  // spelt so

// An element of "lui" -> "btn"
inline constexpr std::string_view kPNABBackgroundColor = "bgc";
inline constexpr std::string_view kPNABTextColor = "tc";
inline constexpr std::string_view kPNABRadius = "br";

// "cvnUi" -> "tim"
inline constexpr std::string_view kPNTimerType = "ty";
inline constexpr std::string_view kPNTimerTimeStamp = "et";  // end of the countdown
inline constexpr std::string_view kPNTimerBackgroundColor = "bgc";
inline constexpr std::string_view kPNTimerTextColor = "tc";
inline constexpr std::string_view kPNTimerFeedbackText = "ft";
inline constexpr std::string_view kPNProgressBarTimerText = "tt";  // beside the progress bar

// "cvnUi" -> "rat"
inline constexpr std::string_view kPNRatingType = "ty";
inline constexpr std::string_view kPNRatingScale = "sc";
inline constexpr std::string_view kPNRatingConfirmButtonText = "cbt";
inline constexpr std::string_view kPNRatingDeeplink = "dl";
inline constexpr std::string_view kPNRatingSelectedIcon = "si";
inline constexpr std::string_view kPNRatingUnselectedIcon = "ui";
inline constexpr std::string_view kPNRatingSelectedTextColor = "stc";
inline constexpr std::string_view kPNRatingUnselectedTextColor = "utc";
inline constexpr std::string_view kPNRatingButtons = "btn";
inline constexpr std::string_view kPNRatingSelectedIconPath =
    "selectedIconPath";  // written by the library
inline constexpr std::string_view kPNRatingUnselectedIconPath =
    "unselectedIconPath";  // written by the library
inline constexpr std::string_view kPNRatingGivenIndex = "ratingIndex";
inline constexpr std::string_view kPNRatingGivenValue = "rating";
inline constexpr std::string_view kPNRatingNotGiven =
    "Not Given";  // the value of "rating" before the user chose

// An element of "rat" -> "btn"
inline constexpr std::string_view kPNRatingButtonText = "t";

// For host code; nothing in the library reads them
inline constexpr std::string_view kPNExtra = "cvnSdkExtra";
inline constexpr std::string_view kPNRatingSelectedIndex = "selectedIndex";
inline constexpr std::string_view kPNRatingData = "cvnRatingData";
inline constexpr std::string_view kPNShouldShowActionButton = "shouldShowActionButton";

}  // namespace tavrolin
