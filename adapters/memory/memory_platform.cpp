#include "adapters/memory/memory_platform.h"

#include <filesystem>

namespace tavrolin::adapters::memory {

MemoryPlatform::MemoryPlatform()
    : urlSession(dispatch, std::filesystem::temp_directory_path().string()),
      imageDecoder(files),
      attachments(files),
      notificationCenter(dispatch),
      application(dispatch),
      mediaPlayers(dispatch) {
    // Downloads get their lasting names where they lie.
    std::filesystem::path folder;
    for (const auto& name : std::filesystem::temp_directory_path()) {
        folder /= name;
        if (!files.fileExists(folder.string())) files.createDirectory(folder.string());
    }
}

platform::Platform MemoryPlatform::platform() {
    return {.application = &application,
            .attachments = &attachments,
            .bundles = &bundles,
            .dispatch = &dispatch,
            .files = &files,
            .imageDecoder = &imageDecoder,
            .json = &json,
            .logSink = &logSink,
            .pasteboard = &pasteboard,
            .preferences = &preferences,
            .recordStores = &recordStores,
            .urlSession = &urlSession,
            .notificationCenter = &notificationCenter,
            .drawing = {.htmlImporter = &htmlImporter,
                        .languageRecognizer = &languageRecognizer,
                        .mediaPlayers = &mediaPlayers,
                        .typesetter = &typesetter}};
}

}  // namespace tavrolin::adapters::memory
