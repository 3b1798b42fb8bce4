#include "tavrolin/payload/notification_parser.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Exception;
using foundation::Ref;
using foundation::Value;

namespace {

const Value& firstPresent(const Value& preferred, const Value& fallback) {
    return preferred ? preferred : fallback;
}

const Value& emptyText() {
    static const Value text("");
    return text;
}

// Walks a list as the platform's enumeration does: nil has no elements, a dictionary hands over its
// keys, which then fail at the first look-up.
template <class Body>
void enumerate(const Value& list, Body body) {
    if (list.isDictionary()) {
        for (const auto& entry : list.entries())
            body(entry.key);
        return;
    }
    for (const Value& item : list.items())
        body(item);
}

// An enumerated list has as many records as it has elements, at most.
template <class T>
std::vector<Ref<T>> recordsFor(const Value& list) {
    std::vector<Ref<T>> records;
    if (list.isArray()) records.reserve(list.count());
    return records;
}

const Value& withoutLaunchOptions(const Value& options) {
    if (!options.isDictionary()) return options;
    return firstPresent(options[UIApplicationLaunchOptionsRemoteNotificationKey], options);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace

bool hasCorvalenSource(const Value& payload) {
    const Value& source = payload[kPNApnSource];
    return source.isString() && equalIgnoringCase(source.string(), kPNApnSourceValue);
}

bool isFromCorvalen(const Value& payload, std::string_view operation,
                    const std::source_location& where) {
    bool ours = false;
    guard(
        operation, "Push notification source could not be identified due to exception: %@",
        [&] { ours = hasCorvalenSource(payload); }, LogLevel::fatal, where);
    return ours;
}

// --- Questions ---------------------------------------------------------------------------------

bool CVNNotificationParser::isNotificationFromCorvalen(const Value& payload) {
    return isFromCorvalen(payload, "+[CVNNotificationParser isNotificationFromCorvalen:]");
}

bool CVNNotificationParser::isSilentNotificationFromCorvalen(const Value& options) {
    const auto model = parseNotificationPayloadDictionary(withoutLaunchOptions(options));
    return model != nullptr && model->aps != nullptr && model->aps->contentAvailable == 1;
}

bool CVNNotificationParser::isSilentNotification(const Value& options) {
    try {
        const Value& payload = withoutLaunchOptions(options);
        return payload[kPNAps][kPNContentAvailable].integerValue() == 1;
    } catch (const Exception&) {
        return false;  // without a line in the log: deliberate
    }
}

// --- The whole payload -------------------------------------------------------------------------

Ref<CVNNotificationPayloadModel> CVNNotificationParser::parseNotificationPayloadDictionary(
    const Value& payload) {
    if (!isNotificationFromCorvalen(payload)) return nullptr;
    auto model = std::make_shared<CVNNotificationPayloadModel>();
    guard("+[CVNNotificationParser parseNotificationPayloadDictionary:]",
          "CVNNotificationPayloadModel Parsing failed due to exception = %@", [&] {
              model->source = payload[kPNApnSource];
              model->aps = parseAPSDictionary(payload[kPNAps]);
              model->cvnPayload =
                  parsePayloadDictionary(firstPresent(payload[kPNPayload], payload[kPNOldPayload]));
              model->cvnUi = parseUiDictionary(payload[kPNUi]);
              if (CVNRat* rating = model->cvnUi->cvnRat.get();
                  rating != nullptr && rating->deeplink == emptyText()) {
                  rating->deeplink = model->cvnPayload->deeplink;
              }
              model->cvnCustomPayload =
                  firstPresent(payload[kPNCustomPayload], payload[kPNOldCustomPayload]);
          });
    return model;
}

// --- "aps" -------------------------------------------------------------------------------------

Ref<CVNAps> CVNNotificationParser::parseAPSDictionary(const Value& aps) {
    auto record = std::make_shared<CVNAps>();
    guard("+[CVNNotificationParser parseAPSDictionary:]",
          "CVNAps Parsing failed due to exception = %@", [&] {
              record->alert = parseAlertDictionary(aps[kPNAlert]);
              record->mutableContent = aps[kPNMutableContent].integerValue();
              record->contentAvailable = aps[kPNContentAvailable].integerValue();
              record->category = aps[kPNCategory];
              record->sound = aps[kPNSound];
          });
    return record;
}

Ref<CVNAlert> CVNNotificationParser::parseAlertDictionary(const Value& alert) {
    auto record = std::make_shared<CVNAlert>();
    guard("+[CVNNotificationParser parseAlertDictionary:]",
          "CVNAlert Parsing failed due to exception = %@", [&] {
              record->title = alert[kPNTitle];
              record->subtitle = alert[kPNSubtitle];
              record->body = alert[kPNBody];
          });
    return record;
}

// --- "cvnPayload" ------------------------------------------------------------------------------

namespace {

// The moments at which the push was published and first seen; now where it doesn't say.
void setDates(CVNPayload& record, const Value& payload) {
    Value now;
    const auto orNow = [&](const Value& date) -> const Value& {
        if (date && !date.isNull()) return date;
        if (!now) {
            now = CVNPushDateUtility::dateStringFromDate(platform::current().dispatch->now());
        }
        return now;
    };
    record.publishedDate = orNow(payload[kPNPublishedDate]);
    // A null stays here, unlike above: deliberate.
    const Value& received = payload[kPNReceivedDate];
    record.receivedDate = received ? received : orNow(received);
}

}  // namespace

Ref<CVNPayload> CVNNotificationParser::parsePayloadDictionary(const Value& payload) {
    auto record = std::make_shared<CVNPayload>();
    guard("+[CVNNotificationParser parsePayloadDictionary:]",
          "CVNPayload Parsing failed due to exception = %@", [&] {
              record->type = payload[kPNType];
              record->trid = payload[kPNTrid];
              record->mediaURL = firstPresent(payload[kPNMediaURL], payload[kPNOldMediaURL]);
              record->mediaURLPath = payload[kPNMediaURLPath];
              record->deeplink = payload[kPNDeeplink];
              record->actionButton = parseActionButtonList(payload[kPNActionButton]);
              record->carousel = parseCarouselList(payload[kPNCarousel]);
              record->cvnAttribution = parseAttributionParams(payload[kPNAttrParams]);
              const Value& meta = payload[kPNMeta];
              record->pnMeta = meta ? meta : Value::dictionary();
              setDates(*record, payload);
              // Of ASCII letters; the service's words have no others.
              record->status = payload[kPNStatus].lowercaseString();
              record->category = payload[kPNCategory];
              record->scheduledDate = payload[kPNScheduledDate];
              record->ttl = payload[kPNTtl];
              record->title = payload[kPNTitle];
              record->subtitle = payload[kPNSubtitle];
              record->body = payload[kPNBody];
              record->sound = payload[kPNSound];
              record->collapseKey = payload[kPNCollapseKey];
              record->htTitle = payload[kPNHtTitle];
              record->htSubtitle = payload[kPNHtSubtitle];
              record->htBody = payload[kPNHtBody];
              if (const Value& reply = payload[kPNReplyActionButton]) {
                  record->replyButton = parseReplyActionButtonDictionary(reply);
              }
          });
    return record;
}

Ref<CVNAttributionParameter> CVNNotificationParser::parseAttributionParams(const Value& params) {
    auto record = std::make_shared<CVNAttributionParameter>();
    guard("+[CVNNotificationParser parseAttributionParams:]",
          "CVNAttrParams Parsing failed due to exception = %@", [&] {
              record->attrParams = params.isDictionary() ? params : Value::dictionary();
              const auto pieces = decryptCorvalenAttribution(params[kPNSta].string(),
                                                             kCorvalenAttributionDecryptionKey);
              if (pieces && pieces->size() >= 2) record->attrIdentity = (*pieces)[1];
          });
    return record;
}

std::vector<Ref<CVNActionButton>> CVNNotificationParser::parseActionButtonList(const Value& list) {
    auto records = recordsFor<CVNActionButton>(list);
    guard("+[CVNNotificationParser parseActionButtonList:]",
          "CVNActionButton list Parsing failed due to exception = %@", [&] {
              enumerate(list, [&](const Value& button) {
                  auto record = std::make_shared<CVNActionButton>();
                  record->actionName = button[kPNActionButtonName];
                  record->actionDeeplink =
                      firstPresent(button[kPNActionButtonDeeplink], emptyText());
                  record->actionType = button[kPNActionButtonType];
                  const Value& config = button[kPNActionButtonConfig];
                  if (config.count() > 0) record->actionConfig = config;
                  records.push_back(std::move(record));
              });
          });
    return records;
}

Ref<CVNReplyActionButton> CVNNotificationParser::parseReplyActionButtonDictionary(
    const Value& button) {
    auto record = std::make_shared<CVNReplyActionButton>();
    // The list's message: deliberate.
    guard("+[CVNNotificationParser parseReplyActionButtonDictionary:]",
          "CVNActionButton list Parsing failed due to exception = %@", [&] {
              record->name = button[kPNReplyActionName];
              record->actionType = button[kPNReplyButtonType];
              record->placeholderText = button[kPNReplyPlaceholderText];
              record->feedbackMessage = button[kPNReplyFeedbackMessage];
          });
    return record;
}

Ref<CVNActionButtonConfiguration> CVNNotificationParser::parseActionButtonConfiguration(
    const Value& config) {
    auto record = std::make_shared<CVNActionButtonConfiguration>();
    guard("+[CVNNotificationParser parseActionButtonConfiguration:]",
          "CVNActionButtonConfiguration Parsing failed due to exception = %@", [&] {
              record->promoCode = config[kPNActionButtonConfigCopyText];
              record->snoozeInterval = config[kPNActionButtonConfigSnoozeInterval];
          });
    return record;
}

std::vector<Ref<CVNCarousel>> CVNNotificationParser::parseCarouselList(const Value& list) {
    auto records = recordsFor<CVNCarousel>(list);
    guard("+[CVNNotificationParser parseCarouselList:]",
          "CVNCarousel list Parsing failed due to exception = %@", [&] {
              enumerate(list, [&](const Value& item) {
                  auto record = std::make_shared<CVNCarousel>();
                  record->imgTitle = item[kPNCarouselImageTitle];
                  record->imgMsg = item[kPNCarouselImageMessage];
                  record->htTitle = item[kPNCarouselImageHtTitle];
                  record->htBody = item[kPNCarouselImageHtBody];
                  record->imgDeeplink = item[kPNCarouselImageDeeplink];
                  record->imgUrl = item[kPNCarouselImageURL];
                  record->imgUrlPath = item[kPNCarouselImageURLPath];
                  records.push_back(std::move(record));
              });
          });
    return records;
}

// --- "cvnUi" -----------------------------------------------------------------------------------

Ref<CVNUi> CVNNotificationParser::parseUiDictionary(const Value& ui) {
    auto record = std::make_shared<CVNUi>();
    guard("+[CVNNotificationParser parseUiDictionary:]",
          "CVNUi Parsing failed due to exception = %@", [&] {
              record->layoutId = ui[kPNLayoutId];
              // A fallback counts only beside a layout: deliberate.
              if (record->layoutId) record->fallbackLayoutId = ui[kPNFallbackLayoutId];
              record->backgroundColor = ui[kPNBackgroundColor];
              record->backgroundGradientColor = ui[kPNBackgroundGradientColor];
              if (const Value& timer = ui[kPNTimer]) record->cvnTim = parseTimDictionary(timer);
              if (const Value& rating = ui[kPNRating]) record->cvnRat = parseRatDictionary(rating);
              record->cvnLui = ui[kPNLayoutUi];
              record->cvnCs = ui[kPNE2ECarouselCollapsedState];
          });
    return record;
}

Ref<CVNTim> CVNNotificationParser::parseTimDictionary(const Value& tim) {
    auto record = std::make_shared<CVNTim>();
    guard("+[CVNNotificationParser parseTimDictionary:]",
          "CVNTim Parsing failed due to exception = %@", [&] {
              record->endTimestamp = tim[kPNTimerTimeStamp];
              record->backgroundColor = tim[kPNTimerBackgroundColor];
              record->feedbackText = firstPresent(tim[kPNTimerFeedbackText], emptyText());
              record->timerType = tim[kPNTimerType].integerValue();
              record->textColor = tim[kPNTimerTextColor];
              record->progressBarTimerText =
                  firstPresent(tim[kPNProgressBarTimerText], emptyText());
          });
    return record;
}

Ref<CVNRat> CVNNotificationParser::parseRatDictionary(const Value& rat) {
    static const Value kSubmit("Submit");
    static const Value kNotGiven(kPNRatingNotGiven);
    auto record = std::make_shared<CVNRat>();
    guard("+[CVNNotificationParser parseRatDictionary:]",
          "CVNRat Parsing failed due to exception = %@", [&] {
              record->ratingType = rat[kPNRatingType].integerValue();
              record->ratingScale = rat[kPNRatingScale].integerValue();
              record->confirmButtonText = firstPresent(rat[kPNRatingConfirmButtonText], kSubmit);
              record->deeplink = rat[kPNRatingDeeplink];
              record->selectedIconURL = rat[kPNRatingSelectedIcon];
              record->unselectedIconURL = rat[kPNRatingUnselectedIcon];
              record->selectedTextColor = rat[kPNRatingSelectedTextColor];
              record->unselectedTextColor = rat[kPNRatingUnselectedTextColor];
              if (const Value& buttons = rat[kPNRatingButtons]) {
                  record->ratingButtons = parseRatingButtonList(buttons);
              }
              record->selectedIconURLPath = rat[kPNRatingSelectedIconPath];
              record->unselectedIconURLPath = rat[kPNRatingUnselectedIconPath];
              const Value& index = rat[kPNRatingGivenIndex];
              record->ratingIndex = index ? index.integerValue() : -1;
              record->ratingValue = firstPresent(rat[kPNRatingGivenValue], kNotGiven);
          });
    return record;
}

std::vector<Ref<CVNRatingButton>> CVNNotificationParser::parseRatingButtonList(const Value& list) {
    auto records = recordsFor<CVNRatingButton>(list);
    // The carousel's message: deliberate.
    guard("+[CVNNotificationParser parseRatingButtonList:]",
          "CVNCarousel list Parsing failed due to exception = %@", [&] {
              enumerate(list, [&](const Value& button) {
                  auto record = std::make_shared<CVNRatingButton>();
                  record->ratinButtonText = firstPresent(button[kPNRatingButtonText], emptyText());
                  records.push_back(std::move(record));
              });
          });
    return records;
}

// --- Attribution -------------------------------------------------------------------------------

namespace {

bool isEncodedCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '&';
}

// Positions and codes are numbers of 8 bits with a sign. A character that the alphabet lacks
// ("&" always) counts as position -1 and so decodes to "%": deliberate.
void appendDecoded(std::string& text, char c, std::string_view alphabet) {
    const auto position = static_cast<std::int8_t>(alphabet.find(c));
    const auto code = static_cast<std::uint8_t>(position + 38);
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else {  // only an alphabet of more than 90 characters gets here; the text is UTF-8
        text += static_cast<char>(0xC0U | (code >> 6U));
        text += static_cast<char>(0x80U | (code & 0x3FU));
    }
}

// From the last character to the first.
std::string decodedBackwards(std::string_view text, std::string_view alphabet) {
    std::string decoded;
    decoded.reserve(text.size());
    while (!text.empty()) {
        std::size_t start = text.size() - 1;
        while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0U) == 0x80U)
            --start;
        const std::string_view character = text.substr(start);
        text.remove_suffix(character.size());
        if (character.size() == 1 && isEncodedCharacter(character[0])) {
            appendDecoded(decoded, character[0], alphabet);
        } else {
            decoded += character;
        }
    }
    return decoded;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

}  // namespace

std::optional<std::vector<std::string>> CVNNotificationParser::decryptCorvalenAttribution(
    std::string_view encoded, std::string_view withDecodeKey) {
    if (encoded.empty()) return std::nullopt;
    const std::string text = foundation::removingPercentEncoding(encoded).value_or("");
    return split(decodedBackwards(text, withDecodeKey), '|');
}

}  // namespace tavrolin
