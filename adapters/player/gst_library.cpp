#include "adapters/player/gst_library.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tavrolin::adapters::player {

namespace {

foundation::Error failure() {
    const char* reason = dlerror();
    return {"MediaPlayer", 0, reason != nullptr ? reason : "GStreamer could not be set up"};
}

template <class Function>
bool find(void* handle, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(handle, name));
    return function != nullptr;
}

bool findAll(void* handle, GstLibrary& library) {
    return find(handle, "gst_init_check", library.initCheck) &&
           find(handle, "gst_segtrap_set_enabled", library.segtrapSetEnabled) &&
           find(handle, "g_error_free", library.errorFree) &&
           find(handle, "g_free", library.free) &&
           find(handle, "g_object_set", library.objectSet) &&
           find(handle, "g_signal_connect_data", library.signalConnect) &&
           find(handle, "gst_object_unref", library.objectUnref) &&
           find(handle, "gst_mini_object_unref", library.miniObjectUnref) &&
           find(handle, "gst_pipeline_new", library.pipelineNew) &&
           find(handle, "gst_element_factory_make", library.elementMake) &&
           find(handle, "gst_element_factory_get_metadata", library.factoryMetadata) &&
           find(handle, "gst_parse_bin_from_description", library.parseBin) &&
           find(handle, "gst_bin_add", library.binAdd) &&
           find(handle, "gst_bin_get_by_name", library.binGetByName) &&
           find(handle, "gst_element_link", library.elementLink) &&
           find(handle, "gst_element_set_state", library.setState) &&
           find(handle, "gst_element_sync_state_with_parent", library.syncState) &&
           find(handle, "gst_element_get_bus", library.getBus) &&
           find(handle, "gst_element_get_static_pad", library.getPad) &&
           find(handle, "gst_element_query_duration", library.queryDuration) &&
           find(handle, "gst_element_seek_simple", library.seek) &&
           find(handle, "gst_bus_timed_pop_filtered", library.popMessage) &&
           find(handle, "gst_message_parse_error", library.parseError) &&
           find(handle, "gst_pad_link", library.padLink) &&
           find(handle, "gst_pad_get_current_caps", library.padCurrentCaps) &&
           find(handle, "gst_caps_from_string", library.capsFromString) &&
           find(handle, "gst_caps_get_structure", library.capsStructure) &&
           find(handle, "gst_structure_get_name", library.structureName) &&
           find(handle, "gst_structure_get_int", library.structureInt) &&
           find(handle, "gst_structure_get_fraction", library.structureFraction) &&
           find(handle, "gst_app_sink_try_pull_preroll", library.pullPreroll) &&
           find(handle, "gst_sample_get_buffer", library.sampleBuffer) &&
           find(handle, "gst_sample_get_caps", library.sampleCaps) &&
           find(handle, "gst_buffer_extract", library.bufferExtract) &&
           find(handle, "gst_buffer_get_size", library.bufferSize);
}

bool canBeWrittenTo(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return !error && ::access(folder.c_str(), W_OK | X_OK) == 0;
}

// Where GStreamer would keep its list.
bool cacheCanBeWrittenTo() {
    if (const char* cache = std::getenv("XDG_CACHE_HOME"); cache != nullptr && *cache != 0)
        return canBeWrittenTo(std::filesystem::path(cache) / "gstreamer-1.0");
    const char* home = std::getenv("HOME");
    return home != nullptr &&
           canBeWrittenTo(std::filesystem::path(home) / ".cache" / "gstreamer-1.0");
}

// Without a list that lasts, every process would look through all the plug-ins. The list says what
// is loaded, so nobody else may write it.
void keepListSomewhere() {
    if (std::getenv("GST_REGISTRY") != nullptr || cacheCanBeWrittenTo()) return;
    const std::string folder = std::filesystem::temp_directory_path().string() +
                               "/tavrolin-player-" + std::to_string(::getuid());
    ::mkdir(folder.c_str(), S_IRWXU);
    struct stat status = {};
    if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != ::getuid() || (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        return;
    }
    ::setenv("GST_REGISTRY", (folder + "/registry.bin").c_str(), 0);
}

foundation::Expected<const GstLibrary*> loadOnce() {
    // Stays loaded. The other libraries come with it.
    void* handle = dlopen("libgstapp-1.0.so.0", RTLD_LAZY | RTLD_LOCAL);
    static GstLibrary library;
    if (handle == nullptr || !findAll(handle, library)) return failure();
    keepListSomewhere();
    library.segtrapSetEnabled(FALSE);  // the process's signals are its own
    GError* error = nullptr;
    if (library.initCheck(nullptr, nullptr, &error) == 0) {
        foundation::Error result = failure();
        if (error != nullptr) {
            result.localizedDescription = error->message;
            library.errorFree(error);
        }
        return result;
    }
    return &library;
}

}  // namespace

foundation::Expected<const GstLibrary*> GstLibrary::load() {
    static const auto result = loadOnce();
    return result;
}

}  // namespace tavrolin::adapters::player
