#pragma once

#include <string_view>

namespace tavrolin::device {

/// The word on the command line that makes the program the sample app; not for people.
inline constexpr const char* kAppProcess = "--app-process";

// What happens to the app, in the order of the list that it is started with. A step is a dictionary
// with its name and its arguments.
inline constexpr std::string_view kStepName = "step";

inline constexpr std::string_view kStepLaunch = "launch";  // "options": launch options
// The app's life.
inline constexpr std::string_view kStepWillEnterForeground = "willEnterForeground";
inline constexpr std::string_view kStepDidEnterBackground = "didEnterBackground";
inline constexpr std::string_view kStepDidBecomeActive = "didBecomeActive";
inline constexpr std::string_view kStepWillTerminate = "willTerminate";
// Everything that the user did and the app has not taken yet.
inline constexpr std::string_view kStepTakeResponses = "takeResponses";
inline constexpr std::string_view kStepToken = "token";            // "token": data
inline constexpr std::string_view kStepTokenError = "tokenError";  // "message"
inline constexpr std::string_view kStepSilent = "silent";          // "payload"; answers fetchResult
inline constexpr std::string_view kStepPresent = "present";  // "identifier", "content", "date"
inline constexpr std::string_view kStepFetch = "fetch";      // "normal", "scheduled": payloads
inline constexpr std::string_view kStepRequestPermission = "requestPermission";
inline constexpr std::string_view kStepOptIn = "optIn";  // "value": boolean
inline constexpr std::string_view kStepBadge = "badge";  // answers badge
inline constexpr std::string_view kStepRegisterCategories = "registerCategories";
inline constexpr std::string_view kStepDoubleOptIn = "doubleOptIn";  // "instant": boolean
inline constexpr std::string_view kStepResetDoubleOptIn = "resetDoubleOptIn";

// What it answers.
inline constexpr std::string_view kAnswerFetchResult = "fetchResult";
inline constexpr std::string_view kAnswerFetchedAt = "fetchedAt";  // date
inline constexpr std::string_view kAnswerBadge = "badge";

/// The life of the sample app from one rest to the next: it starts, or goes on where it rested; it
/// takes one step after the other, each when what the last one set going is done but for delays;
/// and it ends when nothing is left to do. In the background it gets 30 seconds of the device's
/// clock for that. Returns the process's exit status.
int runAppProcess(int channelDescriptor);

}  // namespace tavrolin::device
