#pragma once

// For this adapter's own sources only. Without the checking macros, whose places are taken by the
// table below.
#define CURL_DISABLE_TYPECHECK
#include <curl/curl.h>

#include <string>

#include "tavrolin/foundation/expected.h"

namespace tavrolin::adapters::curl {

/// libcurl, loaded when the first transfer starts: it brings some 25 libraries along, and linking
/// them would cost every process several milliseconds at its start, also one that never transfers
/// anything. Threads: any.
struct CurlLibrary {
    /// The one table of the process, or why there is none. Set up on the first call.
    static foundation::Expected<const CurlLibrary*> load();

    decltype(&curl_global_init) globalInit;
    decltype(&curl_easy_init) easyInit;
    decltype(&curl_easy_setopt) easySetopt;
    decltype(&curl_easy_getinfo) easyGetinfo;
    decltype(&curl_easy_cleanup) easyCleanup;
    decltype(&curl_easy_strerror) easyStrerror;
    decltype(&curl_slist_append) slistAppend;
    decltype(&curl_slist_free_all) slistFreeAll;
    decltype(&curl_multi_init) multiInit;
    decltype(&curl_multi_setopt) multiSetopt;
    decltype(&curl_multi_add_handle) multiAddHandle;
    decltype(&curl_multi_remove_handle) multiRemoveHandle;
    decltype(&curl_multi_perform) multiPerform;
    decltype(&curl_multi_poll) multiPoll;
    decltype(&curl_multi_wakeup) multiWakeup;
    decltype(&curl_multi_info_read) multiInfoRead;
    decltype(&curl_multi_cleanup) multiCleanup;
};

}  // namespace tavrolin::adapters::curl
