#pragma once

#include <string_view>
#include <vector>

#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/store/managed_object.h"

namespace tavrolin {

/// The one record per received notification. `trid` is its identity. Texts are strings and moments
/// dates, or nil where the payload had none; a setter raises `foundation::Exception` for another
/// kind.
class CorvalenPushNotificationEvent : public CVNPushManagedObjectOf<CorvalenPushNotificationEvent> {
public:
    static constexpr std::string_view kEntityName = "CorvalenPushNotificationEvent";
    static const platform::EntityDescription& entityDescription();

    using CVNPushManagedObjectOf::CVNPushManagedObjectOf;

    foundation::Value trid() const { return valueForKey("trid"); }
    void setTrid(foundation::Value trid) { setValueForKey("trid", std::move(trid)); }
    /// The gateway source in words.
    foundation::Value source() const { return valueForKey("source"); }
    void setSource(foundation::Value source) { setValueForKey("source", std::move(source)); }
    /// The campaign type in words.
    foundation::Value campaignType() const { return valueForKey("campaignType"); }
    void setCampaignType(foundation::Value type) {
        setValueForKey("campaignType", std::move(type));
    }
    /// The whole push as it was parsed; null when there is none or what is stored can't be read.
    foundation::Ref<CVNNotificationPayloadModel> payload() const;
    void setPayload(foundation::Ref<CVNNotificationPayloadModel> payload) {
        setObjectForKey("payload", std::move(payload));
    }
    /// When the record was inserted.
    foundation::Value time() const { return valueForKey("time"); }
    void setTime(foundation::Value time) { setValueForKey("time", std::move(time)); }
    bool alreadyDisplayedOnTray() const { return flag("alreadyDisplayedOnTray"); }
    void setAlreadyDisplayedOnTray(bool shown) { setValueForKey("alreadyDisplayedOnTray", shown); }
    bool isDismissed() const { return flag("isDismissed"); }
    void setIsDismissed(bool dismissed) { setValueForKey("isDismissed", dismissed); }
    bool isRead() const { return flag("isRead"); }
    void setIsRead(bool read) { setValueForKey("isRead", read); }
    foundation::Value scheduledDate() const { return valueForKey("scheduledDate"); }
    void setScheduledDate(foundation::Value date) {
        setValueForKey("scheduledDate", std::move(date));
    }
    foundation::Value ttlDate() const { return valueForKey("ttlDate"); }
    void setTtlDate(foundation::Value date) { setValueForKey("ttlDate", std::move(date)); }
    /// One of the status words.
    foundation::Value currentStatus() const { return valueForKey("currentStatus"); }
    void setCurrentStatus(foundation::Value status) {
        setValueForKey("currentStatus", std::move(status));
    }
    foundation::Value publishedDate() const { return valueForKey("publishedDate"); }
    void setPublishedDate(foundation::Value date) {
        setValueForKey("publishedDate", std::move(date));
    }
    /// Records with one key replace each other on the tray.
    foundation::Value collapseKey() const { return valueForKey("collapseKey"); }
    void setCollapseKey(foundation::Value key) { setValueForKey("collapseKey", std::move(key)); }

    /// One dictionary a group. Always raises `foundation::Exception` with this entity: it groups by
    /// properties that the entity doesn't have.
    static std::vector<foundation::Value> groupByCollapseKeyAndOrderByPublishedDate(
        PredicateRef predicate, const Context& inContext);

private:
    bool flag(std::string_view key) const { return valueForKey(key).boolValue(); }
};

}  // namespace tavrolin
