#pragma once

namespace tavrolin::platform {

class Application;
class Attachments;
class Bundles;
class Dispatch;
class Files;
class HTMLImporter;
class ImageDecoder;
class JSONText;
class LanguageRecognizer;
class LogSink;
class MediaPlayers;
class Pasteboard;
class PreferencesSuites;
class RecordStores;
class Typesetter;
class URLSession;
class UserNotificationCenter;

/// The ports of a process that draws: the content extension.
struct DrawingPorts {
    HTMLImporter* htmlImporter = nullptr;
    LanguageRecognizer* languageRecognizer = nullptr;
    MediaPlayers* mediaPlayers = nullptr;
    Typesetter* typesetter = nullptr;
};

/// The ports of this process. They belong to the embedding process and must outlive every use of
/// the library; in practice they live as long as the process.
struct Platform {
    Application* application = nullptr;
    Attachments* attachments = nullptr;
    Bundles* bundles = nullptr;
    Dispatch* dispatch = nullptr;
    Files* files = nullptr;
    ImageDecoder* imageDecoder = nullptr;
    JSONText* json = nullptr;
    LogSink* logSink = nullptr;
    Pasteboard* pasteboard = nullptr;
    PreferencesSuites* preferences = nullptr;
    RecordStores* recordStores = nullptr;
    URLSession* urlSession = nullptr;
    UserNotificationCenter* notificationCenter = nullptr;

    /// Empty in a process that draws nothing.
    DrawingPorts drawing = {};
    /// The major version of the system's interface: older ones lack operations, or the dark
    /// appearance.
    int systemVersion = 17;
};

/// Installs the ports; once, at start, before anything else of the library is used. Every port must
/// be there: a missing one ends the process with a line that names it.
void install(const Platform& platform);

/// The installed ports. Ends the process when none were installed.
const Platform& current();

/// The installed ports of a process that draws. Ends the process when one of them is missing.
const DrawingPorts& drawing();

}  // namespace tavrolin::platform
