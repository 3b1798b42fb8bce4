#include "tavrolin/actions/action_button_parser.h"

#include <utility>

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/payload/record_fields.h"

namespace tavrolin {

using foundation::Ref;
using foundation::Value;

namespace {

Value valueOr(const Value& value, std::string_view fallback) {
    return value.isNil() ? Value(fallback) : value;
}

}  // namespace

template <class Record, class Fields>
void CVNActionItems::describe(Record& self, Fields& fields) {
    fields.value(kActionButtonTitle, self.title);
    fields.value(kActionButtonPlaceholder, self.placeholder);
    fields.value(kActionButtonAction, self.action);
    fields.value(kActionButtonOptions, self.options);
    fields.value(kActionButtonType, self.type);
}

template <class Record, class Fields>
void CVNActionButtonModel::describe(Record& self, Fields& fields) {
    fields.value(kActionButtonPNType, self.pnType);
    fields.records(kActionButtonItems, self.actionItems);
}

template struct CVNRecord<CVNActionItems>;
template struct CVNRecord<CVNActionButtonModel>;

std::vector<Ref<CVNActionButtonModel>> CVNActionButtonParser::parseActionButtons(
    const Value& buttons) {
    std::vector<Ref<CVNActionButtonModel>> models;
    guard("+[CVNActionButtonParser parseActionButtons:]",
          "CVNActionButtonModel list Parsing failed due to exception = %@", [&] {
              for (const Value& button : buttons.items()) {
                  auto model = std::make_shared<CVNActionButtonModel>();
                  model->pnType = button[kActionButtonPNType];
                  model->actionItems = parseActionItems(button[kActionButtonItems]);
                  models.push_back(std::move(model));
              }
          });
    return models;
}

std::vector<Ref<CVNActionItems>> CVNActionButtonParser::parseActionItems(const Value& items) {
    std::vector<Ref<CVNActionItems>> parsed;
    guard("+[CVNActionButtonParser parseActionItems:]",
          "CVNActionItems Parsing failed due to exception = %@", [&] {
              for (const Value& dictionary : items.items()) {
                  auto item = std::make_shared<CVNActionItems>();
                  item->title = valueOr(dictionary[kActionButtonTitle], "");
                  item->placeholder = valueOr(dictionary[kActionButtonPlaceholder], "");
                  item->action = dictionary[kActionButtonAction];
                  item->options = valueOr(dictionary[kActionButtonOptions], "4");
                  item->type = dictionary[kActionButtonType];
                  parsed.push_back(std::move(item));
              }
          });
    return parsed;
}

}  // namespace tavrolin
