#pragma once

#include <string_view>

namespace tavrolin::device {

// The keys of the messages between the device and one of its processes. Each message is a
// dictionary.

// The one message to the process.
inline constexpr std::string_view kMessageDevice = "device";      // the device's folder
inline constexpr std::string_view kMessageJumping = "jumping";    // boolean: which clock
inline constexpr std::string_view kMessageStart = "start";        // date: the device's time
inline constexpr std::string_view kMessageLogLevel = "logLevel";  // integer
inline constexpr std::string_view kMessageRun = "run";  // names the run's temporary folder

// To the extensions.
inline constexpr std::string_view kMessageIdentifier = "identifier";  // the request's

// To the content extension: how the notification is to be shown; see ExpandOrder.
inline constexpr std::string_view kMessageDelivered = "delivered";  // date
inline constexpr std::string_view kMessageActions = "actions";      // its category's
inline constexpr std::string_view kMessageWidth = "width";
inline constexpr std::string_view kMessageScale = "scale";
inline constexpr std::string_view kMessageDark = "dark";            // boolean
inline constexpr std::string_view kMessageCard = "card";            // boolean
inline constexpr std::string_view kMessageWantsTree = "wantsTree";  // boolean
inline constexpr std::string_view kMessagePNG = "png";  // file to write into; nil for none
inline constexpr std::string_view kMessageSVG = "svg";
inline constexpr std::string_view kMessageCardPNG = "cardPNG";

// To the app and to the content extension.
inline constexpr std::string_view kMessageSteps = "steps";  // what is to happen: see
                                                            // app_process.h, expand_order.h

// To the app.
inline constexpr std::string_view kMessageWakes = "wakes";  // boolean: it runs already
inline constexpr std::string_view kMessageInForeground = "inForeground";  // boolean: at the end

// Both ways: a notification's content.
inline constexpr std::string_view kMessageContent = "content";

// From the app: {name: value} of what it answered.
inline constexpr std::string_view kMessageAnswers = "answers";

// From the service extension.
inline constexpr std::string_view kMessageAt = "at";  // date: when content was handed back
inline constexpr std::string_view kMessageExpired = "expired";  // boolean: its time had run out
inline constexpr std::string_view kMessageRemoved = "removed";  // identifiers taken off the tray

// From the content extension.
inline constexpr std::string_view kMessageExpanded = "expanded";  // see runContentExtension
inline constexpr std::string_view kMessageStory = "story";
inline constexpr std::string_view kMessageFailure = "failure";  // text: what it could not do

// From every process.
inline constexpr std::string_view kMessageActivity = "activity";   // integer: a sign of life
inline constexpr std::string_view kMessageNow = "now";             // date: how far its clock is
inline constexpr std::string_view kMessageEnd = "end";             // date: all its work is done
inline constexpr std::string_view kMessagePeakRSS = "peakRssKiB";  // integer

}  // namespace tavrolin::device
