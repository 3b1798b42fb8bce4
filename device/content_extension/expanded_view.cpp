#include "device/content_extension/expanded_view.h"

#include <algorithm>
#include <utility>

#include "adapters/asio/asio_dispatch.h"
#include "device/content_extension/sample_content_extension.h"
#include "device/content_values.h"
#include "device/device_error.h"
#include "device/expand_order.h"
#include "tavrolin/content_ui/layouts/base_layout_view.h"
#include "tavrolin/ui/scroll_view.h"
#include "tavrolin/ui/tree_text.h"

namespace tavrolin::device {

using foundation::Value;
using platform::Point;
using platform::Rect;

namespace {

// In seconds of the device's clock.
constexpr double kShortDelay = 0.1;
constexpr double kLongestSettling = 1;
constexpr double kResponsePatience = 5;

// The part of the view that can be seen, in the root's coordinates.
Rect visiblePart(const ui::View& view, const ui::View& root) {
    Rect part = view.convertRect(view.bounds(), root);
    for (const ui::View* each = &view; each != nullptr; each = each->superview()) {
        if (each->alpha() <= 0) return {};
        const bool clips = each == &root || each->clipsToBounds() ||
                           dynamic_cast<const ui::ScrollView*>(each) != nullptr;
        if (clips) part = part.intersection(each->convertRect(each->bounds(), root));
        if (each == &root) break;
    }
    return part;
}

bool isIn(const ui::View& view, const ui::View& tree) {
    return &view == &tree || std::any_of(tree.subviews().begin(), tree.subviews().end(),
                                         [&](const auto& subview) { return isIn(view, *subview); });
}

// What took a tap may have gone by it.
std::string nameOf(const ui::View& view, const ui::View& root) {
    if (!isIn(view, root)) return "a view that is gone";
    const std::string name(view.className());
    return view.outlet().empty() ? name : name + " \"" + view.outlet() + "\"";
}

Value requestsFrom(const ExtensionRequests& requests, std::size_t first, std::size_t end) {
    Value result = Value::array();
    for (std::size_t i = first; i < end; ++i)
        result.append(requests[i]);
    return result;
}

}  // namespace

// What a step led to.
struct ExpandedView::Chapter {
    enum class Kind { tap, response, other };

    std::string step;
    Kind kind = Kind::other;
    std::size_t firstRequest = 0;
    std::string takenBy;        // by no view: empty
    std::optional<int> option;  // the answer to a response

    Value optionValue() const { return option ? Value(*option) : Value::null(); }
};

ExpandedView::ExpandedView(adapters::asio::AsioDispatch& dispatch,
                           platform::DeliveredNotification notification,
                           std::vector<platform::NotificationAction> actions,
                           ExtensionRequests& requests)
    : dispatch_(dispatch),
      notification_(std::move(notification)),
      requests_(requests),
      context_(std::make_shared<SystemExtensionContext>(requests, std::move(actions))),
      controller_(std::make_shared<SampleContentExtension>()) {
    controller_->setExtensionContext(context_);
}

ExpandedView::~ExpandedView() = default;

void ExpandedView::perform(const std::function<void()>& work) {
    dispatch_.asyncMain(work);
    dispatch_.runMainUntilQuiet();
}

void ExpandedView::show(const Surroundings& surroundings) {
    dispatch_.asyncMain([&] {
        window_.emplace(*controller_, surroundings.width, surroundings.traits);
        controller_->didReceiveNotification(notification_);
        window_->layoutIfNeeded();
    });
    dispatch_.runMainUntilQuiet(kShortDelay, kLongestSettling);
}

// --- Steps -------------------------------------------------------------------------------------

void ExpandedView::take(const Value& step) {
    auto chapter = std::make_shared<Chapter>();
    chapter->step = step[kStepText].string();
    chapter->firstRequest = requests_.size();
    chapters_.push_back(std::move(chapter));
    const std::string_view does = step[kStepDoes].string();
    if (does == kStepWait) return wait(step["seconds"].doubleValue());
    std::optional<DeviceError> failure;
    perform([&] {
        try {
            if (does == kStepTap) tap({step["x"].doubleValue(), step["y"].doubleValue()});
            if (does == kStepTapOn) tapOn(std::string(step["name"].string()));
            if (does == kStepPress || does == kStepReply) respond(step);
            if (does == kStepDisappear) window_->disappear();
        } catch (const DeviceError& error) {
            failure = error;
        }
    });
    if (failure) throw *failure;
}

void ExpandedView::tap(Point point) {
    chapters_.back()->kind = Chapter::Kind::tap;
    const ui::View* view = window_->tap(point);
    if (view != nullptr) chapters_.back()->takenBy = nameOf(*view, controller_->view());
}

void ExpandedView::tapOn(const std::string& name) {
    window_->layoutIfNeeded();
    ui::View& root = controller_->view();
    const ui::View* view = ui::findView(root, name);
    const Rect part = view ? visiblePart(*view, root) : Rect();
    if (part.isEmpty()) {
        throw DeviceError("nothing that can be seen is called or shows \"" + name +
                          "\" (`expand --tree` shows what is there)");
    }
    tap({part.x + part.width / 2, part.y + part.height / 2});
}

void ExpandedView::respond(const Value& step) {
    const std::shared_ptr<Chapter> chapter = chapters_.back();
    chapter->kind = Chapter::Kind::response;
    platform::NotificationResponse response{std::string(step["identifier"].string()),
                                            notification_};
    if (const Value& text = step["userText"]) response.userText = text.string();
    controller_->didReceiveNotificationResponse(
        response, [this, chapter](platform::ContentExtensionResponseOption option) {
            chapter->option = static_cast<int>(option);
            if (isAwaiting_ && !hasOpenResponse()) dispatch_.stop();
        });
}

// Everything that falls due on the way, and at its end.
void ExpandedView::wait(double seconds) {
    dispatch_.afterMain(seconds, [this] { dispatch_.stop(); });
    dispatch_.runMain();
    dispatch_.runMainUntilQuiet();
}

bool ExpandedView::hasOpenResponse() const {
    return std::any_of(chapters_.begin(), chapters_.end(), [](const auto& chapter) {
        return chapter->kind == Chapter::Kind::response && !chapter->option;
    });
}

void ExpandedView::awaitResponses() {
    if (!hasOpenResponse()) return;
    isAwaiting_ = true;
    dispatch_.deadlineMain(kResponsePatience, [this] { dispatch_.stop(); });
    dispatch_.runMainUntilIdle();
    isAwaiting_ = false;
}

// --- What came of it ---------------------------------------------------------------------------

Value ExpandedView::description(bool wantsTree) {
    const platform::Size size = window_->size();
    const auto& layout = controller_->baseNotificationView();
    Value result = Value::dictionary(
        {{"layout", layout ? Value(layout->className()) : Value::null()},
         {"size", Value::dictionary({{"width", ui::numberValue(size.width)},
                                     {"height", ui::numberValue(size.height)}})}});
    if (wantsTree) result.set("tree", ui::describeTree(*controller_->customView()));
    return result;
}

Value ExpandedView::completed(const Value& description) {
    Value responses = Value::array();
    for (const auto& chapter : chapters_) {
        if (chapter->kind != Chapter::Kind::response) continue;
        responses.append(
            Value::dictionary({{"step", chapter->step}, {"option", chapter->optionValue()}}));
    }
    Value result = Value::dictionary({{"layout", description["layout"]},
                                      {"size", description["size"]},
                                      {"nativeActions", valueOf(actions())},
                                      {"responses", responses},
                                      {"requests", requestsFrom(requests_, 0, requests_.size())}});
    result.setIfPresent("tree", description["tree"]);
    return result;
}

Value ExpandedView::story() const {
    Value story = Value::array();
    for (std::size_t i = 0; i < chapters_.size(); ++i) {
        const Chapter& chapter = *chapters_[i];
        const std::size_t end =
            i + 1 < chapters_.size() ? chapters_[i + 1]->firstRequest : requests_.size();
        Value told =
            Value::dictionary({{"step", chapter.step},
                               {"requests", requestsFrom(requests_, chapter.firstRequest, end)}});
        if (chapter.kind == Chapter::Kind::tap) {
            told.set("takenBy", chapter.takenBy.empty() ? Value::null() : Value(chapter.takenBy));
        }
        if (chapter.kind == Chapter::Kind::response) told.set("option", chapter.optionValue());
        story.append(told);
    }
    return story;
}

}  // namespace tavrolin::device
