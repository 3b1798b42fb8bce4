#pragma once

#include <cstdint>
#include <optional>

#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin {

/// The base URLs of the backend services, absent until whoever configures the backend sets them.
/// Threads: set before use; nothing is synchronised.
class CVNPushBackendConfiguration {
public:
    using OptionalURL = std::optional<foundation::URL>;

    static CVNPushBackendConfiguration& sharedInstance();

    const OptionalURL& baseAppInitURL() const { return baseAppInitURL_; }
    void setBaseAppInitURL(OptionalURL url) { baseAppInitURL_ = std::move(url); }
    const OptionalURL& baseTrackAppActUrl() const { return baseTrackAppActUrl_; }
    void setBaseTrackAppActUrl(OptionalURL url) { baseTrackAppActUrl_ = std::move(url); }
    const OptionalURL& basePushVexUrl() const { return basePushVexUrl_; }
    void setBasePushVexUrl(OptionalURL url) { basePushVexUrl_ = std::move(url); }
    const OptionalURL& baseInAppUrl() const { return baseInAppUrl_; }
    void setBaseInAppUrl(OptionalURL url) { baseInAppUrl_ = std::move(url); }
    const OptionalURL& baseInboxUrl() const { return baseInboxUrl_; }
    void setBaseInboxUrl(OptionalURL url) { baseInboxUrl_ = std::move(url); }
    const OptionalURL& listSegmentUrl() const { return listSegmentUrl_; }
    void setListSegmentUrl(OptionalURL url) { listSegmentUrl_ = std::move(url); }

    /// The text as a URL. Absent, and logged with the type's number, when it is nil or only white
    /// space; absent as well when it makes no URL. The numbers are the caller's own.
    OptionalURL validateURL(const foundation::Value& url, std::uint64_t forURLType) const;

private:
    CVNPushBackendConfiguration() = default;

    OptionalURL baseAppInitURL_;
    OptionalURL baseTrackAppActUrl_;
    OptionalURL basePushVexUrl_;
    OptionalURL baseInAppUrl_;
    OptionalURL baseInboxUrl_;
    OptionalURL listSegmentUrl_;
};

}  // namespace tavrolin
