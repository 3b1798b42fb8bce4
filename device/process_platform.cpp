#include "device/process_platform.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>
#include <utility>

#include "adapters/curl/curl_url_session.h"
#include "adapters/images/image_decoder.h"
#include "adapters/json/json_text.h"
#include "adapters/lmdb/lmdb_preferences.h"
#include "adapters/log/stderr_log_sink.h"
#include "adapters/media/attachments.h"
#include "adapters/plist/folder_bundles.h"
#include "adapters/posix/posix_files.h"
#include "adapters/sqlite/sqlite_record_stores.h"
#include "device/device_error.h"
#include "device/installation.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/platform/application.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/pasteboard.h"

namespace tavrolin::device {

namespace fs = std::filesystem;

using foundation::Value;

namespace {

// An extension is told nothing of an app's life.
class ExtensionApplication : public platform::Application {
public:
    void addLifecycleObserver(std::function<void(platform::LifecycleEvent)> /*observer*/) override {
    }
    void registerForRemoteNotifications() override {}
    void openURL(const foundation::URL& /*url*/) override {}
};

class ExtensionPasteboard : public platform::Pasteboard {
public:
    void setString(std::string_view /*string*/) override {}
};

// What lies in the sample app's folder wins over what came with the program.
std::vector<std::string> libraryFolders(const DeviceFolder& device) {
    std::vector<std::string> folders = {device.libraryOverlay()};
    if (std::string resources = libraryResources(); !resources.empty()) {
        folders.push_back(std::move(resources));
    }
    return folders;
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw DeviceError("can't make the folder " + folder + ": " + error.message());
}

}  // namespace

struct ProcessPlatform::Adapters {
    Adapters(const DeviceFolder& device, std::string_view process, adapters::asio::Clock clock,
             std::string_view run)
        : folder(device),
          container(device.container(process)),
          temporary(device.temporaryFolder(process, run)),
          dispatch(clock),
          state(device, recordStores),
          files([this](std::string_view group) { return sharedContainer(group); },
                container + "/Documents"),
          bundles(device.app(), libraryFolders(device)),
          preferences([this](std::string_view suite) { return folder.groupPreferences(suite); },
                      container + "/Library/Preferences"),
          session(dispatch, {temporary, adapters::media::maximumUsefulSize}) {}

    // The system makes a group's container for whoever belongs to it. When it can't, opening the
    // store in it says so.
    std::optional<std::string> sharedContainer(std::string_view group) const {
        auto path = folder.group(group);
        std::error_code ignored;
        if (path) fs::create_directories(*path, ignored);
        return path;
    }

    DeviceFolder folder;
    std::string container;
    std::string temporary;
    adapters::asio::AsioDispatch dispatch;
    adapters::sqlite::SQLiteRecordStores recordStores;
    SystemState state;
    adapters::json::JSONText json;
    adapters::log::StderrLogSink logSink;
    adapters::posix::PosixFiles files;
    adapters::plist::FolderBundles bundles;
    adapters::lmdb::LMDBPreferences preferences;
    adapters::media::Attachments attachments;
    adapters::images::ImageDecoder imageDecoder;
    adapters::curl::CurlURLSession session;
    ExtensionApplication application;
    ExtensionPasteboard pasteboard;
};

ProcessPlatform::ProcessPlatform(const DeviceFolder& folder, std::string_view process,
                                 adapters::asio::Clock clock, std::string_view run)
    : adapters_(std::make_unique<Adapters>(folder, process, clock, run)) {}

ProcessPlatform::~ProcessPlatform() = default;

void ProcessPlatform::makeContainer() {
    makeFolder(adapters_->container + "/Documents");
    makeFolder(adapters_->temporary);
}

SystemNotificationCenter ProcessPlatform::makeNotificationCenter(
    std::function<void(const std::vector<std::string>&)> didRemove) {
    Adapters& own = *adapters_;
    return {own.state,     own.dispatch,        own.json, AttachmentStorage(own.folder),
            own.temporary, std::move(didRemove)};
}

void ProcessPlatform::install(const OwnPorts& ports, int logLevel) {
    Adapters& own = *adapters_;
    platform::install({.application = ports.application ? ports.application : &own.application,
                       .attachments = &own.attachments,
                       .bundles = &own.bundles,
                       .dispatch = &own.dispatch,
                       .files = &own.files,
                       .imageDecoder = &own.imageDecoder,
                       .json = &own.json,
                       .logSink = &own.logSink,
                       .pasteboard = ports.pasteboard ? ports.pasteboard : &own.pasteboard,
                       .preferences = &own.preferences,
                       .recordStores = &own.recordStores,
                       .urlSession = &own.session,
                       .notificationCenter = &ports.center,
                       .drawing = ports.drawing});
    CVNPushLogger::setDebugLevel(logLevel);
}

void ProcessPlatform::endSilentTransfersEvery(double seconds) {
    adapters_->dispatch.deadlineMain(seconds, [this, seconds] {
        // The next deadline counts from the end of these, or the clock would run away meanwhile.
        adapters_->session.endSilentTransfers(
            [this, seconds] { endSilentTransfersEvery(seconds); });
    });
}

adapters::asio::AsioDispatch& ProcessPlatform::dispatch() {
    return adapters_->dispatch;
}

platform::RecordStores& ProcessPlatform::recordStores() {
    return adapters_->recordStores;
}

platform::PreferencesSuites& ProcessPlatform::preferences() {
    return adapters_->preferences;
}

platform::JSONText& ProcessPlatform::json() {
    return adapters_->json;
}

SystemState& ProcessPlatform::systemState() {
    return adapters_->state;
}

Value ProcessPlatform::appGroup() {
    try {
        const Value info = adapters_->bundles.main().infoDictionary();
        const Value& keys = info[kPlistCorvalenSettings];
        const Value group = keys.isDictionary() ? keys[kPlistCorvalenAppGroup] : Value();
        return group.isString() && group.length() > 0 ? group : Value();
    } catch (const foundation::Exception& exception) {
        throw DeviceError("can't read the sample app's Info dictionary: " + exception.reason() +
                          "; mend it there");
    }
}

std::string ProcessPlatform::storeDirectory(std::string_view process) {
    const Value group = appGroup();
    const auto shared = group ? adapters_->folder.group(group.string()) : std::nullopt;
    return shared.value_or(adapters_->folder.container(process) + "/Documents");
}

}  // namespace tavrolin::device
