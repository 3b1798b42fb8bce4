#include "tavrolin/content_ui/components/item_carousel_component.h"

#include <cmath>
#include <utility>

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/service_extension/push_operation.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/interface_file.h"

namespace tavrolin {

using foundation::Value;

namespace {

// It speaks of a rating: deliberate.
constexpr std::string_view kMessage = "Could not set rating due to exception  %@";

std::shared_ptr<ui::Image> readPicture(const std::string& path) {
    return CVNBaseComponentView::getImageFromURL(foundation::URL::fileURLWithPath(path));
}

/// Reads a picture, and hands it over on the main queue.
class PictureOperation final : public CVNPushOperation {
public:
    using Receiver = std::function<void(std::shared_ptr<ui::Image>)>;

    PictureOperation(std::string path, Receiver receiver)
        : path_(std::move(path)), receiver_(std::move(receiver)) {}

    void start() override {
        CVNPushOperation::start();
        platform::current().dispatch->asyncMain(
            [receiver = receiver_, image = readPicture(path_)] { receiver(image); });
        finish();
    }

private:
    std::string path_;
    Receiver receiver_;
};

}  // namespace

void ItemCarouselComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("superVw", superVw_);
    connections.view("scrollView", scrollView_);
    connections.view("previousImageView", previousImageView_);
    connections.view("nextImageView", nextImageView_);
    connections.view("pageControl", pageControl_);
    connections.constraint("heightStackView", heightStackView_);
    connections.constraint("constraintScrollLeading", constraintScrollLeading_);
    connections.constraint("constraintScrollTrailing", constraintScrollTrailing_);
    connections.constraint("constraintStackBottom", constraintStackBottom_);
}

void ItemCarouselComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    guarded([this] { didReceiveCarouselPayload(notificationPayload(), nullptr, std::nullopt); });
}

std::weak_ptr<ItemCarouselComponent> ItemCarouselComponent::weakly() {
    return std::static_pointer_cast<ItemCarouselComponent>(shared_from_this());
}

void ItemCarouselComponent::guarded(const std::function<void()>& body) {
    guard(startOperation(), kMessage, body);
}

void ItemCarouselComponent::after(double seconds, std::function<void()> block) {
    platform::current().dispatch->afterMain(seconds, [weak = weakly(), block = std::move(block)] {
        if (const auto carousel = weak.lock()) carousel->guarded(block);
    });
}

// --- A payload

void ItemCarouselComponent::didReceiveCarouselPayload(
    const Payload& payload, std::shared_ptr<foundation::OperationQueue> downloadQueue,
    const std::optional<std::string>& andPlaceholderImageName) {
    mediaDownloadQueue_ = std::move(downloadQueue);
    placeholderImageName_ = andPlaceholderImageName;
    if (payload)
        carouselImages_ = payload->cvnPayload ? payload->cvnPayload->carousel : std::nullopt;
    index_ = 0;
    pageControl_->setHidden(true);
    didTakePayload();
    readPictures();
}

void ItemCarouselComponent::readPictures() {
    const auto items = static_cast<std::size_t>(count());
    pictures_ = std::make_shared<Pictures>();
    pictures_->images.resize(items);
    pictures_->awaited = items;
    placeholder_ = placeholderImageName_ ? ui::Image::named(*placeholderImageName_,
                                                            platform::current().bundles->library(),
                                                            traitCollection().displayScale)
                                         : nullptr;
    const auto pictures = pictures_;
    for (std::size_t i = 0; i < items; ++i) {
        const auto& item = (*carouselImages_)[i];
        const Value path = item ? item->imgUrlPath : Value();
        if (!path.isString()) {
            receive(pictures, i, nullptr);
        } else if (!mediaDownloadQueue_) {
            receive(pictures, i, readPicture(std::string(path.string())));
        } else {
            mediaDownloadQueue_->addOperation(std::make_shared<PictureOperation>(
                std::string(path.string()), [weak = weakly(), pictures, i](auto image) {
                    if (const auto carousel = weak.lock()) carousel->receive(pictures, i, image);
                }));
        }
    }
    if (items == 0) didReadPictures();
}

void ItemCarouselComponent::receive(const std::shared_ptr<Pictures>& pictures, std::size_t item,
                                    std::shared_ptr<ui::Image> image) {
    if (pictures != pictures_) return;  // another payload's
    pictures->images[item] = std::move(image);
    if (pictures->haveItems) {
        pageStackViews_[item]->setPicture(pictureOf(static_cast<std::int64_t>(item)));
    }
    if (--pictures->awaited == 0) didReadPictures();
}

std::shared_ptr<ui::Image> ItemCarouselComponent::pictureOf(std::int64_t item) const {
    const auto& image = pictures_->images[static_cast<std::size_t>(item)];
    return image ? image : placeholder_;
}

// --- Its items

void ItemCarouselComponent::makeItems(const CarouselItemView::Style& style) {
    const auto before = scrollView_->subviews();
    for (const auto& view : before)
        view->removeFromSuperview();
    pageStackViews_.clear();
    placedWidth_ = -1;
    pictures_->haveItems = true;
    for (std::int64_t i = 0; i < count(); ++i)
        pageStackViews_.push_back(makeItem(i, style));
}

std::shared_ptr<CarouselItemView> ItemCarouselComponent::makeItem(
    std::int64_t item, const CarouselItemView::Style& style) {
    static const auto* nothing = new CVNCarousel;
    const auto record = recordAtIndex(carouselImages_, item);
    auto view = CarouselItemView::make(record ? *record : *nothing, style);
    view->setTag(item);
    view->addTo(*scrollView_);
    view->setPicture(pictureOf(item));
    view->addGestureRecognizer(
        std::make_shared<ui::TapGestureRecognizer>([weak = weakly()](ui::View& tapped) {
            if (const auto carousel = weak.lock()) carousel->handleCarouselViewTap(tapped);
        }));
    return view;
}

void ItemCarouselComponent::layoutSubviews() {
    if (pageStackViews_.empty()) return;
    if (placedWidth_ != scrollWidth()) {
        placedWidth_ = scrollWidth();
        placeItems();
    }
    setHeight(shownHeight());
}

double ItemCarouselComponent::scrollWidth() const {
    return scrollView_->bounds().width;
}

double ItemCarouselComponent::heightOf(std::int64_t item) const {
    const auto index = static_cast<std::size_t>(item);
    return index < pageStackViews_.size() ? pageStackViews_[index]->bounds().height : 0;
}

void ItemCarouselComponent::setHeight(double height) {
    static constexpr double kSame = 1e-6;  // points; so that layout passes settle
    if (std::abs(heightStackView_->constant() - height) > kSame)
        heightStackView_->setConstant(height);
}

void ItemCarouselComponent::scrollTo(double x, bool animated) {
    scrollView_->setContentOffset({x, 0}, animated);
    for (const auto& item : pageStackViews_) {
        if (item->picture() && !isNear(item->tag())) item->picture()->forgetPixels();
    }
}

// --- What is done to it

void ItemCarouselComponent::didReceiveCarouselButtonResponse(const Value& actionIdentifier) {
    if (actionIdentifier == Value(kCarouselNextActionButtonIdentifier)) nextItem();
    if (actionIdentifier == Value(kCarouselPreviousActionButtonIdentifier)) previousItem();
}

void ItemCarouselComponent::handleCarouselViewTap(ui::View& tapped) {
    CVNPushPreferencesManager::setCarouselIndex(tapped.tag());
    tapNotificationEvent(tapped);
}

}  // namespace tavrolin
