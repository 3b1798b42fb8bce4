#include "tavrolin/store/push_notification_event.h"

#include <utility>

#include "tavrolin/payload/value_transformer.h"

namespace tavrolin {

using platform::AttributeType;

namespace {

std::shared_ptr<platform::ManagedObject> makeEvent(
    std::shared_ptr<platform::ManagedObjectContext> context,
    const platform::EntityDescription& entity, platform::Record record, bool isInserted) {
    return std::make_shared<CorvalenPushNotificationEvent>(std::move(context), entity,
                                                           std::move(record), isInserted);
}

}  // namespace

const platform::EntityDescription& CorvalenPushNotificationEvent::entityDescription() {
    static const auto* entity = new platform::EntityDescription{
        std::string(kEntityName),
        // Indexed is what a query names: here, or below together with what it names beside it. A
        // flag alone would select half of the records.
        {{"trid", AttributeType::string, true, {}},
         {"source", AttributeType::string, false, {}},
         {"campaignType", AttributeType::string, false, {}},
         {"payload", AttributeType::transformable, false,
          std::string(CVNNotificationPayloadModelValueTransformer::kClassName)},
         {"time", AttributeType::date, true, {}},
         {"alreadyDisplayedOnTray", AttributeType::boolean, false, {}},
         {"isDismissed", AttributeType::boolean, false, {}},
         {"isRead", AttributeType::boolean, false, {}},
         {"scheduledDate", AttributeType::date, false, {}},
         {"ttlDate", AttributeType::date, false, {}},
         {"currentStatus", AttributeType::string, false, {}},
         {"publishedDate", AttributeType::date, false, {}},
         {"collapseKey", AttributeType::string, true, {}}},
        makeEvent,
        {{"isRead", "isDismissed"}, {"currentStatus", "scheduledDate"}}};
    return *entity;
}

foundation::Ref<CVNNotificationPayloadModel> CorvalenPushNotificationEvent::payload() const {
    return std::dynamic_pointer_cast<CVNNotificationPayloadModel>(objectForKey("payload"));
}

std::vector<foundation::Value>
CorvalenPushNotificationEvent::groupByCollapseKeyAndOrderByPublishedDate(PredicateRef predicate,
                                                                         const Context& inContext) {
    // These are the constants' names, not their texts, and no attributes of the entity: deliberate.
    // The store refuses the request, and the caller goes on without a list.
    const std::string publishedDate = "kPNPublishedDate";
    const std::string collapseKey = "kPNCollapseKey";
    platform::FetchRequest request = fetchRequest();
    request.predicate = std::move(predicate);
    request.sortDescriptor = foundation::SortDescriptor{publishedDate, true};
    request.propertiesToFetch = {collapseKey};
    request.expressionsToFetch = {{"objectID", "", "", AttributeType::objectID},
                                  {"maxPublishedDate", "max:", publishedDate, AttributeType::date}};
    request.propertiesToGroupBy = {collapseKey};
    return dictionaries(
        "+[CorvalenPushNotificationEvent groupByCollapseKeyAndOrderByPublishedDate:inContext:]",
        request, inContext);
}

}  // namespace tavrolin
