#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrolin::device {

/// Where things lie in a device's folder:
///
///     app/                  the sample app's Info.plist, CorvalenConfig.plist and icon, to be
///     edited app/library/          resources of the library that stand in for those that came with
///     it groups/GROUP/         an app group's container: the store, the media folder, the
///     preferences containers/PROCESS/   what belongs to one process alone: documents, preferences,
///     tmp system/               the system's own: the tray, the clock, moved attachments, the core
///     SDK
///
/// Only its owner can read any of it. Threads: any; the object is immutable.
class DeviceFolder {
public:
    /// `root` is made absolute. Nothing is made yet.
    explicit DeviceFolder(std::string_view root);

    /// Makes what is missing, with the sample app in it. Throws DeviceError when that fails.
    void make() const;
    /// Removes everything in it, the sample app's files included, and makes it anew. A folder that
    /// holds anything else than a device is left alone. Throws DeviceError.
    void reset() const;

    const std::string& root() const { return root_; }
    std::string app() const { return root_ + "/app"; }
    std::string libraryOverlay() const { return app() + "/library"; }
    /// Nothing for a name that can't be a folder's.
    std::optional<std::string> group(std::string_view name) const;
    std::optional<std::string> groupPreferences(std::string_view name) const;
    std::string container(std::string_view process) const;
    /// Where one run of a process keeps what it downloads.
    std::string temporaryFolder(std::string_view process, std::string_view run) const;
    std::string system() const { return root_ + "/system"; }
    std::string attachments() const { return system() + "/attachments"; }
    std::string stateFile() const { return system() + "/State.sqlite"; }
    std::string clockFile() const { return system() + "/clock"; }

private:
    /// The file that says that nothing of the device is missing.
    std::string mark() const { return system() + "/tavrolin-device"; }
    void fill() const;
    void refuseOtherFolders() const;

    std::string root_;
};

/// `$TAVROLIN_DEVICE`, else `$XDG_STATE_HOME/tavrolin/device`, else the same under ~/.local/state.
std::string defaultDeviceFolder();

/// A name for a new file or notification: 32 random hexadecimal digits in the form of a UUID.
std::string randomIdentifier();

}  // namespace tavrolin::device
