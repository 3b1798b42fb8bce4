#pragma once

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/plist/property_list.h"
#include "tavrolin/content_ui/components/carousel.h"
#include "tavrolin/content_ui/custom_notification_view_controller.h"
#include "tavrolin/content_ui/layouts/base_layout_view.h"
#include "tavrolin/content_ui/notification_view_helper.h"
#include "tavrolin/content_ui/view_classes.h"
#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/platform/html_importer.h"
#include "tavrolin/platform/media_player.h"
#include "tavrolin/platform/typesetter.h"
#include "tavrolin/ui/tree_text.h"
#include "tavrolin/ui/window.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {

/// Every character is 10 points wide and every line 20 high; lines break anywhere.
class SquareTypesetter final : public platform::Typesetter {
public:
    std::unique_ptr<platform::TextLayout> layout(const platform::StyledText& text,
                                                 const platform::TextFrame& frame) override {
        class Layout final : public platform::TextLayout {
        public:
            Layout(double width, int lines, bool truncated)
                : width_(width), lines_(lines), isTruncated_(truncated) {}
            platform::Size size() const override { return {width_, lines_ * 20.0}; }
            int lineCount() const override { return lines_; }
            bool isTruncated() const override { return isTruncated_; }
            double firstBaseline() const override { return 15; }
            double lastBaseline() const override { return lines_ * 20.0 - 5; }

        private:
            double width_;
            int lines_;
            bool isTruncated_;
        };
        const double width = 10.0 * static_cast<double>(text.string.size());
        const double room = std::max(frame.width, 10.0);
        const int needed = std::max(1, static_cast<int>(std::ceil(std::min(width / room, 1e6))));
        const int lines = frame.lineLimit > 0 ? std::min(needed, frame.lineLimit) : needed;
        return std::make_unique<Layout>(std::min(width, room), lines, lines < needed);
    }
    double lineHeight(const platform::Font& /*font*/) override { return 20; }
    std::vector<std::pair<char32_t, char32_t>> charactersOfFont(std::string_view name) override {
        if (name != "AppleColorEmoji") return {};
        return {{'#', '#'}, {'*', '*'}, {'0', '9'}, {0x1F600, 0x1F64F}};
    }
};

/// Takes out the tags; keeps the documents that it was given.
class PlainHTMLImporter final : public platform::HTMLImporter {
public:
    std::vector<std::string> documents;
    foundation::Error error;

    Result importHTML(std::string_view document) override {
        documents.emplace_back(document);
        std::string text;
        bool inTag = false;
        for (const char character : document.substr(document.find("<body>"))) {
            if (character == '<') inTag = true;
            if (!inTag) text += character;
            if (character == '>') inTag = false;
        }
        return {platform::StyledText::plain(text, {.font = {.size = 15}}), error};
    }
};

/// A player that a test plays by hand. Ten seconds long, with pictures of 4 by 3 pixels.
class HandPlayer final : public platform::MediaPlayer {
public:
    struct State {
        std::string path;
        double duration = 10;
        double time = 0;
        double rate = 0;
        std::optional<foundation::Error> error;
        platform::ImageRef picture =
            std::make_shared<platform::Image>(platform::Image{4, 3, std::vector<std::uint8_t>(48)});
        std::function<void(double)> observer;
        std::function<void()> didPlayToEnd;

        void playTo(double seconds) {
            time = std::min(seconds, duration);
            if (observer) observer(time);
            if (time < duration) return;
            rate = 0;
            if (didPlayToEnd) didPlayToEnd();
        }
    };

    explicit HandPlayer(std::shared_ptr<State> state) : state_(std::move(state)) {}
    double duration() override { return state_->duration; }
    double currentTime() override { return state_->time; }
    double rate() override { return state_->rate; }
    std::optional<foundation::Error> error() override { return state_->error; }
    void play() override { state_->rate = 1; }
    void pause() override { state_->rate = 0; }
    void seekToTime(double seconds) override { state_->time = seconds; }
    void setDidPlayToEnd(std::function<void()> block) override {
        state_->didPlayToEnd = std::move(block);
    }
    std::unique_ptr<Observation> addPeriodicTimeObserver(
        double /*interval*/, std::function<void(double)> block) override {
        struct Ending final : Observation {
            explicit Ending(std::shared_ptr<State> of) : state(std::move(of)) {}
            ~Ending() override { state->observer = nullptr; }
            std::shared_ptr<State> state;
        };
        auto ending = std::make_unique<Ending>(state_);
        state_->observer = std::move(block);
        return ending;
    }
    platform::ImageRef frame(platform::Size /*maximumPixels*/) override { return state_->picture; }

private:
    std::shared_ptr<State> state_;
};

class HandPlayers final : public platform::MediaPlayers {
public:
    /// The one that the next player plays.
    std::shared_ptr<HandPlayer::State> state = std::make_shared<HandPlayer::State>();

    std::unique_ptr<platform::MediaPlayer> playerWithFile(std::string_view path) override {
        state->path = path;
        return std::make_unique<HandPlayer>(state);
    }
};

/// Writes down what it is asked.
class RecordingExtensionContext final : public platform::ExtensionContext {
public:
    std::vector<std::string> requests;

    void performNotificationDefaultAction() override { requests.emplace_back("open"); }
    void dismissNotificationContentExtension() override { requests.emplace_back("close"); }
    std::vector<platform::NotificationAction> notificationActions() override { return {}; }
    void setNotificationActions(std::vector<platform::NotificationAction> /*actions*/) override {}
};

/// A carousel without an interface file, that writes down what it is told.
class RecordingCarousel final : public CarouselComponent {
public:
    std::vector<std::string> calls;

    std::string_view className() const override { return "RecordingCarousel"; }
    std::shared_ptr<ui::View> initWithNib() override { return shared_from_this(); }
    void didReceiveCarouselButtonResponse(const foundation::Value& identifier) override {
        calls.emplace_back(identifier.string());
    }
    void stopCarouselTimer() override { calls.emplace_back("stop"); }
};

/// A content extension in memory, with the library's own resources.
class ContentUITest : public MemorySDKTest {
protected:
    static constexpr double kWidth = 300;

    ContentUITest() {
        copyResources();
        install(17);
        registerViewClasses();
        container_ = std::make_shared<ui::View>();
    }
    void install(int systemVersion) {
        platform::Platform ports = memory_.platform();
        ports.systemVersion = systemVersion;
        ports.drawing.htmlImporter = &html_;
        ports.drawing.typesetter = &typesetter_;
        ports.drawing.mediaPlayers = &players_;
        platform::install(ports);
    }

    /// A push with these sections, on screen from now on.
    Payload show(foundation::Value section, const foundation::Value& ui = {}) {
        foundation::Value all = push("t1", std::move(section));
        all.setIfPresent("cvnUi", ui);
        const Payload model = parsed(all);
        CVNNotificationViewHelper::setNotificationPayloadModel(model);
        return model;
    }
    /// A view of that class, filled with what is on screen, in `container_`.
    template <class T = NotificationView>
    std::shared_ptr<T> load(std::string_view className) {
        auto view = makeNotificationView<T>(className);
        EXPECT_NE(view, nullptr) << className;
        view->loadWithSuperView(*container_);
        view->configureNotification();
        return view;
    }
    template <class T>
    static void registerClass(std::string_view name) {
        foundation::ClassRegistry<ui::View>::registerClass(name,
                                                           [] { return std::make_shared<T>(); });
    }
    /// The view with that outlet, hidden or not; null when there is none.
    static ui::View* outlet(ui::View& root, std::string_view name) {
        if (root.outlet() == name) return &root;
        for (const auto& each : root.subviews()) {
            if (ui::View* const found = outlet(*each, name)) return found;
        }
        return nullptr;
    }
    template <class T>
    static T& outletOf(ui::View& root, std::string_view name) {
        auto* const found = dynamic_cast<T*>(outlet(root, name));
        if (found == nullptr) throw std::runtime_error("no " + std::string(name));
        return *found;
    }

    PlainHTMLImporter html_;
    SquareTypesetter typesetter_;
    HandPlayers players_;
    std::shared_ptr<ui::View> container_;

private:
    void copyResources() {
        const std::filesystem::path folder =
            std::filesystem::path(TAVROLIN_SOURCE_DIR) / "tavrolin" / "resources";
        adapters::memory::MemoryBundle& bundle = memory_.bundles.libraryBundle;
        for (const auto& each : std::filesystem::directory_iterator(folder)) {
            std::ostringstream contents;
            contents << std::ifstream(each.path(), std::ios::binary).rdbuf();
            const std::string name = each.path().stem();
            const std::string type = each.path().extension().string().substr(1);
            const auto list =
                adapters::plist::readPropertyList(type == "plist" ? contents.str() : std::string());
            bundle.setResource(name, type, list ? *list : foundation::Value());
            memory_.files.write(*bundle.pathForResource(name, type), contents.str());
        }
    }
};

}  // namespace tavrolin::tests
