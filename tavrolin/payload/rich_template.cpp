#include "tavrolin/payload/rich_template.h"

#include "tavrolin/payload/record_fields.h"

namespace tavrolin {

using foundation::Declared;

template <class Record, class Fields>
void CVNActionButton::describe(Record& self, Fields& fields) {
    fields.value(kPNActionButtonName, self.actionName);
    fields.value(kPNActionButtonDeeplink, self.actionDeeplink);
    // A number declared as a text: deliberate; the store's reader doesn't look.
    fields.value(kPNActionButtonType, self.actionType, Declared::string);
    fields.value(kPNActionButtonConfig, self.actionConfig, Declared::dictionary);
    fields.value(kPNReplyActionName, self.name);
    fields.value(kPNReplyPlaceholderText, self.placeholderText);
    fields.value(kPNReplyFeedbackMessage, self.feedbackMessage);
}

template <class Record, class Fields>
void CVNActionButtonConfiguration::describe(Record& self, Fields& fields) {
    fields.value(kPNActionButtonConfigCopyText, self.promoCode);
    fields.value(kPNActionButtonConfigSnoozeInterval, self.snoozeInterval);
}

template <class Record, class Fields>
void CVNReplyActionButton::describe(Record& self, Fields& fields) {
    fields.value(kPNReplyActionName, self.name);
    fields.value(kPNReplyButtonType, self.actionType, Declared::string);  // deliberate, as above
    fields.value(kPNReplyPlaceholderText, self.placeholderText);
    fields.value(kPNReplyFeedbackMessage, self.feedbackMessage);
}

template <class Record, class Fields>
void CVNCarousel::describe(Record& self, Fields& fields) {
    fields.value(kPNCarouselImageURL, self.imgUrl);
    fields.value(kPNCarouselImageURLPath, self.imgUrlPath);
    fields.value(kPNCarouselImageTitle, self.imgTitle);
    fields.value(kPNCarouselImageMessage, self.imgMsg);
    fields.value(kPNCarouselImageDeeplink, self.imgDeeplink);
    fields.value(kPNCarouselImageHtTitle, self.htTitle);
    fields.value(kPNCarouselImageHtBody, self.htBody);
}

template <class Record, class Fields>
void CVNTim::describe(Record& self, Fields& fields) {
    fields.value(kPNTimerTimeStamp, self.endTimestamp);
    fields.value(kPNTimerBackgroundColor, self.backgroundColor);
    fields.value(kPNTimerFeedbackText, self.feedbackText);
    fields.integer(kPNTimerType, self.timerType);
    fields.value(kPNTimerTextColor, self.textColor);
    fields.value(kPNProgressBarTimerText, self.progressBarTimerText);
}

template <class Record, class Fields>
void CVNRatingButton::describe(Record& self, Fields& fields) {
    fields.value(kPNRatingButtonText, self.ratinButtonText);
}

template <class Record, class Fields>
void CVNRat::describe(Record& self, Fields& fields) {
    fields.integer(kPNRatingType, self.ratingType);
    fields.integer(kPNRatingScale, self.ratingScale);
    fields.value(kPNRatingConfirmButtonText, self.confirmButtonText);
    fields.value(kPNRatingDeeplink, self.deeplink);
    fields.value(kPNRatingSelectedIcon, self.selectedIconURL);
    fields.value(kPNRatingUnselectedIcon, self.unselectedIconURL);
    fields.value(kPNRatingSelectedTextColor, self.selectedTextColor);
    fields.value(kPNRatingUnselectedTextColor, self.unselectedTextColor);
    fields.records(kPNRatingButtons, self.ratingButtons);
    fields.value(kPNRatingSelectedIconPath, self.selectedIconURLPath);
    fields.value(kPNRatingUnselectedIconPath, self.unselectedIconURLPath);
    fields.integer(kPNRatingGivenIndex, self.ratingIndex);
    fields.value(kPNRatingGivenValue, self.ratingValue);
}

template <class Record, class Fields>
void CVNUi::describe(Record& self, Fields& fields) {
    fields.value(kPNLayoutId, self.layoutId, Declared::number);
    fields.value(kPNFallbackLayoutId, self.fallbackLayoutId, Declared::number);
    fields.value(kPNBackgroundColor, self.backgroundColor);
    fields.value(kPNBackgroundGradientColor, self.backgroundGradientColor, Declared::array);
    fields.record(kPNTimer, self.cvnTim);
    fields.record(kPNRating, self.cvnRat);
    fields.value(kPNLayoutUi, self.cvnLui, Declared::dictionary);
    fields.value(kPNE2ECarouselCollapsedState, self.cvnCs, Declared::dictionary);
}

template struct CVNRecord<CVNActionButton>;
template struct CVNRecord<CVNActionButtonConfiguration>;
template struct CVNRecord<CVNReplyActionButton>;
template struct CVNRecord<CVNCarousel>;
template struct CVNRecord<CVNTim>;
template struct CVNRecord<CVNRatingButton>;
template struct CVNRecord<CVNRat>;
template struct CVNRecord<CVNUi>;

}  // namespace tavrolin
