#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/plist/property_list.h"
#include "tavrolin/content_ui/components/carousel.h"
#include "tavrolin/content_ui/custom_notification_view_controller.h"
#include "tavrolin/content_ui/layouts/base_layout_view.h"
#include "tavrolin/content_ui/notification_view_helper.h"
#include "tavrolin/content_ui/view_classes.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/ui/tree_text.h"
#include "tavrolin/ui/window.h"
#include "tests/support/memory_sdk.h"
#include "tests/support/outlets.h"

namespace tavrolin::tests {

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
        forgetTheTestBefore();
        container_ = std::make_shared<ui::View>();
    }
    ~ContentUITest() override {
        for (const std::string& name : registered_)
            foundation::ClassRegistry<ui::View>::unregisterClass(name);
    }
    void install(int systemVersion) {
        platform::Platform ports = memory_.platform();
        ports.systemVersion = systemVersion;
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
    /// For this test only.
    template <class T>
    void registerClass(std::string_view name) {
        foundation::ClassRegistry<ui::View>::registerClass(name,
                                                           [] { return std::make_shared<T>(); });
        registered_.emplace_back(name);
    }
    template <class T>
    static T& outletOf(ui::View& root, std::string_view name) {
        auto* const found = dynamic_cast<T*>(outlet(root, name));
        if (found == nullptr) throw std::runtime_error("no " + std::string(name));
        return *found;
    }

    std::shared_ptr<ui::View> container_;

private:
    /// What outlives a test, where several run in one process.
    void forgetTheTestBefore() {
        CVNNotificationViewHelper::setNotificationPayloadModel(nullptr);
        CVNNotificationViewHelper::setNotificationImageIcon(nullptr);
        CVNNotificationViewHelper::setNotificationExtenstionContent(nullptr);
        CVNNotificationViewHelper::setCustomNotificationDelegate(nullptr);
        CVNSharedUtility::setIsDarkMode(false);
        CVNPushPreferencesManager::removeCarouselIndex();
        CVNPushPreferencesManager::removeActionButtonIndex();
        CVNPushPreferencesManager::removeRatingInfo();
        const auto fresh = CVNPushCoreDataController::initWithName("CorvalenPushDB");
        store().setPersistentContainer(fresh->persistentContainer());
        store().setStoreURL({});
        store().setStoreLoaded(false);
        memory_.logSink.clear();
    }
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

    std::vector<std::string> registered_;
};

}  // namespace tavrolin::tests
