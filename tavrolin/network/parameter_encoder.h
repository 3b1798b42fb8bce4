#pragma once

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/url_session.h"

namespace tavrolin {

/// Writes a dictionary of parameters into a request.
template <class T>
concept CVNPushParameterEncoder = requires(platform::URLRequest& request,
                                           const foundation::Value& params) {
    T::encode(request, params);
};

/// Parameters as the URL's query, in the dictionary's order, in the place of a query that the URL
/// already has. An empty dictionary leaves the URL as it is. Values are texts; another kind raises.
class CVNPushURLParameterEncoder {
public:
    static void encode(platform::URLRequest& request, const foundation::Value& params);
};

/// Parameters as a JSON body. Without parameters, or with some that JSON has no form for, the
/// request has no body. Sets no header.
class CVNPushJSONParameterEncoder {
public:
    static void encode(platform::URLRequest& request, const foundation::Value& params);
};

static_assert(CVNPushParameterEncoder<CVNPushURLParameterEncoder>);
static_assert(CVNPushParameterEncoder<CVNPushJSONParameterEncoder>);

}  // namespace tavrolin
