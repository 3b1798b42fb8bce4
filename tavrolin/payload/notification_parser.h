#pragma once

#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/notification_payload.h"

namespace tavrolin {

/// The alphabet of encoded attribution lists.
inline constexpr std::string_view kCorvalenAttributionDecryptionKey =
    "QMZTAHKWRBYEPDLUFGJCNXVOISpqwertyuiolkjhgfdsazxcvbnm7305928146";

/// Under which an app's launch options hold the remote notification that launched it.
inline constexpr std::string_view UIApplicationLaunchOptionsRemoteNotificationKey =
    "UIApplicationLaunchOptionsRemoteNotificationKey";

/// Whether the payload's source marker is this system's, in any case. Raises for what is no
/// payload.
bool hasCorvalenSource(const foundation::Value& payload);
/// The same for the operation of this name: when that raises, logs it and gives false.
bool isFromCorvalen(const foundation::Value& payload, std::string_view operation,
                    const std::source_location& where = std::source_location::current());

/// Turns a push's user info into records.
///
/// Fields are copied as they stand, of whatever kind. A step that asks a value for something that
/// it can't do stops there, logs one line at level 6 and returns what it had built; the step around
/// it goes on. Nothing raises. Threads: any; the parser has no state.
class CVNNotificationParser {
public:
    /// Whether "cvnSrc" is this system's marker, in any case.
    static bool isNotificationFromCorvalen(const foundation::Value& payload);
    /// Whether it is this system's and silent. Takes launch options or a payload.
    static bool isSilentNotificationFromCorvalen(const foundation::Value& options);
    /// Whether it is silent, whoever sent it; logs nothing. Takes launch options or a payload.
    static bool isSilentNotification(const foundation::Value& options);

    /// Null only for a payload that is not this system's. Reads the old format key by key where the
    /// new key is absent.
    static foundation::Ref<CVNNotificationPayloadModel> parseNotificationPayloadDictionary(
        const foundation::Value& payload);

    // The steps; none returns null.
    static foundation::Ref<CVNAps> parseAPSDictionary(const foundation::Value& aps);
    static foundation::Ref<CVNAlert> parseAlertDictionary(const foundation::Value& alert);
    static foundation::Ref<CVNPayload> parsePayloadDictionary(const foundation::Value& payload);
    static foundation::Ref<CVNAttributionParameter> parseAttributionParams(
        const foundation::Value& params);
    static std::vector<foundation::Ref<CVNActionButton>> parseActionButtonList(
        const foundation::Value& list);
    static foundation::Ref<CVNReplyActionButton> parseReplyActionButtonDictionary(
        const foundation::Value& button);
    /// The typed form of an action button's `actionConfig`.
    static foundation::Ref<CVNActionButtonConfiguration> parseActionButtonConfiguration(
        const foundation::Value& config);
    static std::vector<foundation::Ref<CVNCarousel>> parseCarouselList(
        const foundation::Value& list);
    static foundation::Ref<CVNUi> parseUiDictionary(const foundation::Value& ui);
    static foundation::Ref<CVNTim> parseTimDictionary(const foundation::Value& tim);
    static foundation::Ref<CVNRat> parseRatDictionary(const foundation::Value& rat);
    static std::vector<foundation::Ref<CVNRatingButton>> parseRatingButtonList(
        const foundation::Value& list);

    /// The pieces of an encoded list, at least one; nothing for an empty text. A text whose
    /// percent-encoding is broken decodes to one empty piece. Logs nothing.
    static std::optional<std::vector<std::string>> decryptCorvalenAttribution(
        std::string_view encoded, std::string_view withDecodeKey);
};

}  // namespace tavrolin
