#pragma once

// For this adapter's own sources only.
#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include "tavrolin/foundation/expected.h"

namespace tavrolin::adapters::player {

/// GStreamer, loaded and set up when the first file is opened: it brings some twenty libraries
/// along, and looks through its plug-ins. Threads: any.
struct GstLibrary {
    /// The one table of the process, or why there is none.
    static foundation::Expected<const GstLibrary*> load();

    decltype(&gst_init_check) initCheck;
    decltype(&gst_segtrap_set_enabled) segtrapSetEnabled;
    decltype(&g_error_free) errorFree;
    decltype(&g_free) free;
    decltype(&g_object_set) objectSet;
    decltype(&g_signal_connect_data) signalConnect;
    decltype(&gst_object_unref) objectUnref;
    decltype(&gst_mini_object_unref) miniObjectUnref;
    decltype(&gst_pipeline_new) pipelineNew;
    decltype(&gst_element_factory_make) elementMake;
    decltype(&gst_element_factory_get_metadata) factoryMetadata;
    decltype(&gst_parse_bin_from_description) parseBin;
    decltype(&gst_bin_add) binAdd;
    decltype(&gst_bin_get_by_name) binGetByName;
    decltype(&gst_element_link) elementLink;
    decltype(&gst_element_set_state) setState;
    decltype(&gst_element_sync_state_with_parent) syncState;
    decltype(&gst_element_get_bus) getBus;
    decltype(&gst_element_get_static_pad) getPad;
    decltype(&gst_element_query_duration) queryDuration;
    decltype(&gst_element_seek_simple) seek;
    decltype(&gst_bus_timed_pop_filtered) popMessage;
    decltype(&gst_message_parse_error) parseError;
    decltype(&gst_pad_link) padLink;
    decltype(&gst_pad_get_current_caps) padCurrentCaps;
    decltype(&gst_caps_from_string) capsFromString;
    decltype(&gst_caps_get_structure) capsStructure;
    decltype(&gst_structure_get_name) structureName;
    decltype(&gst_structure_get_int) structureInt;
    decltype(&gst_structure_get_fraction) structureFraction;
    decltype(&gst_app_sink_try_pull_preroll) pullPreroll;
    decltype(&gst_sample_get_buffer) sampleBuffer;
    decltype(&gst_sample_get_caps) sampleCaps;
    decltype(&gst_buffer_extract) bufferExtract;
    decltype(&gst_buffer_get_size) bufferSize;
};

}  // namespace tavrolin::adapters::player
