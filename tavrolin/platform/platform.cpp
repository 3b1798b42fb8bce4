#include "tavrolin/platform/platform.h"

#include <cstdio>
#include <cstdlib>

namespace tavrolin::platform {

namespace {

Platform installed;
bool isInstalled = false;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "tavrolin: %s\n", what);
    std::abort();
}

void require(const void* port, const char* complaint) {
    if (port == nullptr) fail(complaint);
}

}  // namespace

void install(const Platform& platform) {
    require(platform.application, "platform::install: no application port");
    require(platform.attachments, "platform::install: no attachments port");
    require(platform.bundles, "platform::install: no bundles port");
    require(platform.dispatch, "platform::install: no dispatch port");
    require(platform.files, "platform::install: no files port");
    require(platform.imageDecoder, "platform::install: no image-decoder port");
    require(platform.json, "platform::install: no JSON port");
    require(platform.logSink, "platform::install: no log-sink port");
    require(platform.pasteboard, "platform::install: no pasteboard port");
    require(platform.preferences, "platform::install: no preferences port");
    require(platform.recordStores, "platform::install: no record-stores port");
    require(platform.urlSession, "platform::install: no URL-session port");
    require(platform.notificationCenter, "platform::install: no notification-center port");
    installed = platform;
    isInstalled = true;
}

const Platform& current() {
    if (!isInstalled) fail("platform::current: platform::install was not called");
    return installed;
}

const DrawingPorts& drawing() {
    const DrawingPorts& ports = current().drawing;
    require(ports.htmlImporter, "platform::drawing: no HTML-importer port");
    require(ports.languageRecognizer, "platform::drawing: no language-recognizer port");
    require(ports.mediaPlayers, "platform::drawing: no media-players port");
    require(ports.typesetter, "platform::drawing: no typesetter port");
    return ports;
}

}  // namespace tavrolin::platform
