#include "adapters/curl/curl_library.h"

#include <dlfcn.h>

namespace tavrolin::adapters::curl {

namespace {

foundation::Error failure() {
    const char* reason = dlerror();
    return {"CurlURLSession", 0, reason != nullptr ? reason : "libcurl could not be set up"};
}

template <class Function>
bool find(void* handle, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(handle, name));
    return function != nullptr;
}

foundation::Expected<const CurlLibrary*> loadOnce() {
    void* handle = dlopen("libcurl.so.4", RTLD_LAZY | RTLD_LOCAL);  // stays loaded
    if (handle == nullptr) return failure();
    static CurlLibrary library;
    const bool isComplete = find(handle, "curl_global_init", library.globalInit) &&
                            find(handle, "curl_easy_init", library.easyInit) &&
                            find(handle, "curl_easy_setopt", library.easySetopt) &&
                            find(handle, "curl_easy_getinfo", library.easyGetinfo) &&
                            find(handle, "curl_easy_cleanup", library.easyCleanup) &&
                            find(handle, "curl_easy_strerror", library.easyStrerror) &&
                            find(handle, "curl_slist_append", library.slistAppend) &&
                            find(handle, "curl_slist_free_all", library.slistFreeAll) &&
                            find(handle, "curl_multi_init", library.multiInit) &&
                            find(handle, "curl_multi_setopt", library.multiSetopt) &&
                            find(handle, "curl_multi_add_handle", library.multiAddHandle) &&
                            find(handle, "curl_multi_remove_handle", library.multiRemoveHandle) &&
                            find(handle, "curl_multi_perform", library.multiPerform) &&
                            find(handle, "curl_multi_poll", library.multiPoll) &&
                            find(handle, "curl_multi_wakeup", library.multiWakeup) &&
                            find(handle, "curl_multi_info_read", library.multiInfoRead) &&
                            find(handle, "curl_multi_cleanup", library.multiCleanup);
    if (!isComplete || library.globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return failure();
    return &library;
}

}  // namespace

foundation::Expected<const CurlLibrary*> CurlLibrary::load() {
    static const auto result = loadOnce();
    return result;
}

}  // namespace tavrolin::adapters::curl
