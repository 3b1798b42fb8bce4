#pragma once

#include "adapters/memory/memory_application.h"
#include "adapters/memory/memory_attachments.h"
#include "adapters/memory/memory_bundles.h"
#include "adapters/memory/memory_dispatch.h"
#include "adapters/memory/memory_files.h"
#include "adapters/memory/memory_html_importer.h"
#include "adapters/memory/memory_image_decoder.h"
#include "adapters/memory/memory_json_text.h"
#include "adapters/memory/memory_language_recognizer.h"
#include "adapters/memory/memory_log_sink.h"
#include "adapters/memory/memory_media_players.h"
#include "adapters/memory/memory_notification_center.h"
#include "adapters/memory/memory_pasteboard.h"
#include "adapters/memory/memory_preferences.h"
#include "adapters/memory/memory_record_stores.h"
#include "adapters/memory/memory_typesetter.h"
#include "adapters/memory/memory_url_session.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin::adapters::memory {

/// A whole platform in memory, for a host's own tests and for programs without a system around
/// them. Nothing sleeps and nothing is left behind:
///
///     auto& memory = *new MemoryPlatform;  // lives as long as the process, as the ports must
///     memory.files.addAppGroup("group.com.example");
///     memory.bundles.mainBundle.setInfoDictionary(info);
///     memory.urlSession.setAnswer("https://example.com/a.png", {.body = png});
///     tavrolin::platform::install(memory.platform());
///     … call the library …
///     memory.dispatch.runUntilIdle();      // everything has happened, delays included
///     … look at memory.notificationCenter, memory.files, memory.logSink …
///
/// To replace one port, change its pointer in the result of `platform()` before installing it.
struct MemoryPlatform {
    MemoryPlatform();
    MemoryPlatform(const MemoryPlatform&) = delete;
    MemoryPlatform& operator=(const MemoryPlatform&) = delete;

    /// All the ports. This object must outlive their use.
    platform::Platform platform();

    MemoryDispatch dispatch;
    MemoryLogSink logSink;
    MemoryFiles files;
    MemoryBundles bundles;
    MemoryJSONText json;
    MemoryPasteboard pasteboard;
    MemoryPreferences preferences;
    MemoryRecordStores recordStores;
    MemoryURLSession urlSession;
    MemoryImageDecoder imageDecoder;
    MemoryAttachments attachments;
    MemoryNotificationCenter notificationCenter;
    MemoryApplication application;
    MemoryHTMLImporter htmlImporter;
    MemoryLanguageRecognizer languageRecognizer;
    MemoryMediaPlayers mediaPlayers;
    MemoryTypesetter typesetter;
};

}  // namespace tavrolin::adapters::memory
