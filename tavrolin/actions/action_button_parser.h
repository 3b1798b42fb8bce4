#pragma once

#include "tavrolin/foundation/value.h"
#include "tavrolin/payload/record.h"

namespace tavrolin {

// The buttons that an app declares for its categories. Fields stand in the order in which they are
// archived. Neither record can be archived securely.

/// An element of "actionItems"; the fields are texts.
struct CVNActionItems : CVNRecord<CVNActionItems> {
    static constexpr std::string_view kClassName = "CVNActionItems";

    foundation::Value title;
    foundation::Value placeholder;  // of a button that takes text
    foundation::Value action;
    foundation::Value options;  // bits, in decimal
    foundation::Value type;     // "button" or "text", in any case

    bool supportsSecureCoding() const override { return false; }

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

/// The buttons of a category.
struct CVNActionButtonModel : CVNRecord<CVNActionButtonModel> {
    static constexpr std::string_view kClassName = "CVNActionButtonModel";

    foundation::Value categoryIdentifier;  // neither archived nor in the dictionary form
    foundation::Value pnType;              // template type, kPnType…
    RecordList<CVNActionItems> actionItems;

    bool supportsSecureCoding() const override { return false; }

    template <class Record, class Fields>
    static void describe(Record& self, Fields& fields);
};

extern template struct CVNRecord<CVNActionItems>;
extern template struct CVNRecord<CVNActionButtonModel>;

/// Makes the records from arrays of dictionaries. Never fails as a whole: an element that can't be
/// read is logged and ends the list, which keeps what came before it. Threads: any.
class CVNActionButtonParser {
public:
    /// Leaves `categoryIdentifier` nil.
    static std::vector<foundation::Ref<CVNActionButtonModel>> parseActionButtons(
        const foundation::Value& buttons);
    /// A missing title or placeholder is the empty text, missing options are "4".
    static std::vector<foundation::Ref<CVNActionItems>> parseActionItems(
        const foundation::Value& items);
};

}  // namespace tavrolin
