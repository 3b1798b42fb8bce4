#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/tavrolin/arguments.h"
#include "apps/tavrolin/printing.h"
#include "device/app_launcher.h"
#include "tavrolin/foundation/value.h"

namespace CLI {
class App;
}

namespace tavrolin::apps {

// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kNotDone = 1;
inline constexpr int kWrongUsage = 2;

/// The commands of the command line. Lives as long as the application that they are added to, whose
/// reading of the arguments fills it.
class Commands {
public:
    /// `fileMode`: that of files for people.
    explicit Commands(unsigned fileMode) { arguments_.expansion.fileMode = fileMode; }
    void addTo(CLI::App& app);
    /// Whether one was given.
    bool isGiven() const { return command_ != nullptr; }
    /// Does what was given; the exit status. Throws what stands in its way.
    int run() const { return command_(); }

private:
    using Act = std::function<foundation::Value(device::Device&)>;

    void addOptions(CLI::App& app);
    void addPushes(CLI::App& app);
    void addLooking(CLI::App& app);
    void addUser(CLI::App& app);
    void addExpand(CLI::App& app);
    void addApp(CLI::App& app);
    void addAppLife(CLI::App& app);
    void addAppPushes(CLI::App& app);
    void addAppDecisions(CLI::App& app);
    void addDevice(CLI::App& app);

    CLI::App* add(CLI::App& parent, const char* name, const char* help, std::function<int()> what);
    CLI::App* addAct(CLI::App& parent, const char* name, const char* help, Act what,
                     Printer printer);
    CLI::App* addStep(CLI::App& parent, const char* name, const char* help,
                      std::function<foundation::Value()> step);
    void addIdentifier(CLI::App* command);
    void addFile(CLI::App* command);

    int deliverOne();
    int deliverLines();
    int expand();
    foundation::Value payloadIn(const device::Device& device, const std::string& file) const;

    Arguments arguments_;
    std::function<int()> command_;
};

}  // namespace tavrolin::apps
