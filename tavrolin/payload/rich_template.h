#pragma once

#include <cstdint>

#include "tavrolin/payload/record.h"

namespace tavrolin {

// The rich parts of a notification. Fields stand in the order in which they are archived.

/// An element of "actionButton". The last three are for a record that carries a reply button's
/// texts too; the parser leaves them nil.
struct CVNActionButton : CVNRecord<CVNActionButton> {
    static constexpr std::string_view kClassName = "CVNActionButton";

    foundation::Value actionName;
    foundation::Value actionDeeplink;
    foundation::Value actionType;    // number
    foundation::Value actionConfig;  // dictionary, see CVNActionButtonConfiguration
    foundation::Value name;
    foundation::Value placeholderText;
    foundation::Value feedbackMessage;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// An action button's "config", for those who want it typed.
struct CVNActionButtonConfiguration : CVNRecord<CVNActionButtonConfiguration> {
    static constexpr std::string_view kClassName = "CVNActionButtonConfiguration";

    foundation::Value promoCode;
    foundation::Value snoozeInterval;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// "rbtn": the button that takes a typed reply.
struct CVNReplyActionButton : CVNRecord<CVNReplyActionButton> {
    static constexpr std::string_view kClassName = "CVNReplyActionButton";

    foundation::Value name;
    foundation::Value actionType;  // number
    foundation::Value placeholderText;
    foundation::Value feedbackMessage;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// An element of "carousel".
struct CVNCarousel : CVNRecord<CVNCarousel> {
    static constexpr std::string_view kClassName = "CVNCarousel";

    foundation::Value imgUrl;
    foundation::Value imgUrlPath;  // the downloaded image
    foundation::Value imgTitle;
    foundation::Value imgMsg;
    foundation::Value imgDeeplink;
    foundation::Value htTitle;
    foundation::Value htBody;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// "cvnUi" -> "tim": the countdown.
struct CVNTim : CVNRecord<CVNTim> {
    static constexpr std::string_view kClassName = "CVNTim";

    foundation::Value endTimestamp;
    foundation::Value backgroundColor;
    foundation::Value feedbackText;
    std::int64_t timerType = 0;
    foundation::Value textColor;
    foundation::Value progressBarTimerText;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// An element of "rat" -> "btn".
struct CVNRatingButton : CVNRecord<CVNRatingButton> {
    static constexpr std::string_view kClassName = "CVNRatingButton";

    foundation::Value ratinButtonText;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// "cvnUi" -> "rat": the rating, with what the user chose.
struct CVNRat : CVNRecord<CVNRat> {
    static constexpr std::string_view kClassName = "CVNRat";

    std::int64_t ratingType = 0;
    std::int64_t ratingScale = 0;
    foundation::Value confirmButtonText;
    foundation::Value deeplink;
    foundation::Value selectedIconURL;
    foundation::Value unselectedIconURL;
    foundation::Value selectedTextColor;
    foundation::Value unselectedTextColor;
    RecordList<CVNRatingButton> ratingButtons;
    foundation::Value selectedIconURLPath;    // the downloaded icon
    foundation::Value unselectedIconURLPath;  // the downloaded icon
    std::int64_t ratingIndex = 0;             // -1 once parsed without a choice
    foundation::Value ratingValue;

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// "cvnUi": which layout, and what it is told.
struct CVNUi : CVNRecord<CVNUi> {
    static constexpr std::string_view kClassName = "CVNUi";

    foundation::Value layoutId;                 // number
    foundation::Value fallbackLayoutId;         // number
    foundation::Value backgroundColor;          // RRGGBB or RRGGBBAA
    foundation::Value backgroundGradientColor;  // array of such
    foundation::Ref<CVNTim> cvnTim;
    foundation::Ref<CVNRat> cvnRat;
    foundation::Value cvnLui;  // dictionary: settings of the layout
    foundation::Value cvnCs;   // dictionary: settings of its collapsed state

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

extern template struct CVNRecord<CVNActionButton>;
extern template struct CVNRecord<CVNActionButtonConfiguration>;
extern template struct CVNRecord<CVNReplyActionButton>;
extern template struct CVNRecord<CVNCarousel>;
extern template struct CVNRecord<CVNTim>;
extern template struct CVNRecord<CVNRatingButton>;
extern template struct CVNRecord<CVNRat>;
extern template struct CVNRecord<CVNUi>;

}  // namespace tavrolin
