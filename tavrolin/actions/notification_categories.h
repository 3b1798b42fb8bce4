#pragma once

#include <cstdint>
#include <string_view>

#include "tavrolin/core/plist_keys.h"  // names the file that the lists stand in
#include "tavrolin/foundation/value.h"

namespace tavrolin {

// Category identifiers: what "aps" -> "category" names.
inline constexpr std::string_view kNotificationCategorySimpleNotification =
    "CorvalenSimpleNotification";
inline constexpr std::string_view kNotificationCategoryImageNotification =
    "CorvalenImageNotification";
inline constexpr std::string_view kNotificationCategoryGifNotification = "CorvalenGifNotification";
inline constexpr std::string_view kNotificationCategoryAudioNotification =
    "CorvalenAudioNotification";
inline constexpr std::string_view kNotificationCategoryVideoNotification =
    "CorvalenVideoNotification";
inline constexpr std::string_view kNotificationCategoryCarouselPortrait =
    "CorvalenCarouselPortraitNotification";
inline constexpr std::string_view kNotificationCategoryCarouselLandscape =
    "CorvalenCarouselLandscapeNotification";
inline constexpr std::string_view kNotificationCategoryCorvalenPN = "CorvalenPN";

// Template types: the payload's "type".
inline constexpr std::string_view kPnTypeSimple = "Simple";
inline constexpr std::string_view kPnTypeImage = "Image";
inline constexpr std::string_view kPnTypeGif = "Gif";
inline constexpr std::string_view kPnTypeAudio = "Audio";
inline constexpr std::string_view kPnTypeVideo = "Video";
inline constexpr std::string_view kPnTypeCarouselPortrait = "CarouselPortrait";
inline constexpr std::string_view kPnTypeCarouselLandscape = "CarouselLandscape";
inline constexpr std::string_view kCarouselPortraitType = "CarouselPortrait";
inline constexpr std::string_view kCarouselLandscapeType = "CarouselLandscape";

inline bool isCarouselType(const foundation::Value& type) {
    return type == foundation::Value(kPnTypeCarouselLandscape) ||
           type == foundation::Value(kPnTypeCarouselPortrait);
}

// The carousels. The identifiers of their two buttons are the buttons' positions.
inline constexpr std::string_view kCarouselNextActionButtonTitle = "Next";
inline constexpr std::string_view kCarouselNextActionButtonIdentifier = "0";
inline constexpr std::string_view kCarouselPreviousActionButtonTitle = "Previous";
inline constexpr std::string_view kCarouselPreviousActionButtonIdentifier = "1";
inline constexpr std::int64_t kCarouselPortraitNotificationMinimumCount = 2;
inline constexpr std::int64_t kCarouselLandscapeNotificationMinimumCount = 1;
inline constexpr double kCarouselNotificationCellSpace = 16;  // points
inline constexpr std::string_view kCarouselNotificationCellIdentifier = "CarouselCell";
inline constexpr std::string_view kCarouselNotificationCellNibName =
    "CVNCarouselCollectionViewCell";

// The app's configuration file and its two lists of categories: core/plist_keys.h.

// The old list: a category's button titles.
inline constexpr std::string_view kNotificationActionButton = "actionButtonTitle";

// The new list: a category's items and their keys.
inline constexpr std::string_view kActionButtonItems = "actionItems";
inline constexpr std::string_view kActionButtonTitle = "title";
inline constexpr std::string_view kActionButtonPlaceholder = "placeholder";
inline constexpr std::string_view kActionButtonAction = "cvnAction";
inline constexpr std::string_view kActionButtonOptions = "option";
inline constexpr std::string_view kActionButtonType = "type";
inline constexpr std::string_view kActionButtonTypeButton = "button";
inline constexpr std::string_view kActionButtonTypeTextField = "text";
inline constexpr std::string_view kActionButtonPNType = "cvnType";
inline constexpr std::string_view kActionButtonDefaultPlaceholder = "Reply here...";  // for hosts

}  // namespace tavrolin
