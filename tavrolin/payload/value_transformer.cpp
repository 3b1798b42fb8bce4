#include "tavrolin/payload/value_transformer.h"

#include <string>

#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/value_transformer.h"

namespace tavrolin {

using foundation::Archivable;
using foundation::Exception;
using foundation::KeyedArchiver;
using foundation::KeyedUnarchiver;
using foundation::Ref;
using foundation::Value;

std::set<std::string_view> CVNNotificationPayloadModelValueTransformer::allowedTopLevelClasses() {
    return {CVNNotificationPayloadModel::kClassName};
}

std::string_view CVNNotificationPayloadModelValueTransformer::transformedValueClass() {
    return CVNNotificationPayloadModel::kClassName;
}

void CVNNotificationPayloadModelValueTransformer::registerTransformer() {
    foundation::ValueTransformer::setForName(kClassName,
                                             {transformedValue, reverseTransformedValue});
}

Value CVNNotificationPayloadModelValueTransformer::transformedValue(const Archivable& model) {
    Value data;
    guard("+[CVNNotificationPayloadModelValueTransformer transformedValue:]",
          "Unable to archive CVNNotificationPayloadModel due to execption: %@", [&] {
              if (!allowedTopLevelClasses().contains(model.className())) {
                  Exception::raise(Exception::kInvalidArgument,
                                   "a " + std::string(model.className()) + " is not allowed here");
              }
              data = Value::data(KeyedArchiver::archivedData(model, true));
          });
    return data;
}

Ref<CVNNotificationPayloadModel>
CVNNotificationPayloadModelValueTransformer::reverseTransformedValue(const Value& data) {
    Ref<CVNNotificationPayloadModel> model;
    if (data.isNil()) return model;
    guard("+[CVNNotificationPayloadModelValueTransformer reverseTransformedValue:]",
          "Unable to unarchive CVNNotificationPayloadModel due to exception: %@", [&] {
              // Not strict: the custom payload is declared as a text while it is a dictionary.
              model = KeyedUnarchiver::unarchive<CVNNotificationPayloadModel>(
                  data.bytes(), KeyedUnarchiver::Mode::lenient);
              if (model == nullptr) {
                  Exception::raise(Exception::kInvalidArchive, "another class is archived");
              }
          });
    return model;
}

}  // namespace tavrolin
