#include "tavrolin/content_ui/components/video_component.h"

#include <cmath>
#include <vector>

#include "tavrolin/content_ui/components/fitting_height.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/interface_file.h"
#include "tavrolin/ui/layer.h"

namespace tavrolin {

namespace {

bool isPlayerLayer(const ui::Layer& layer) {
    return dynamic_cast<const ui::PlayerLayer*>(&layer) != nullptr;
}

}  // namespace

CVNVideoComponent::~CVNVideoComponent() {
    if (player_) player_->setDidPlayToEnd(nullptr);
}

void CVNVideoComponent::connect(ui::Connections& connections) {
    CVNBaseComponentView::connect(connections);
    connections.view("videoContentView", videoContentView_);
    connections.view("playButton", playButton_);
    connections.constraint("videoHeightConstraint", videoHeightConstraint_);
    connections.action("playVideoNotificationEvent:",
                       [this](ui::View& sender) { playVideoNotificationEvent(sender); });
}

void CVNVideoComponent::configureNotification() {
    CVNBaseComponentView::configureNotification();
    guard("-[CVNVideoComponent configureNotification]", "Could not set video due to exception  %@",
          [this] {
              const foundation::Value& path = cvnPayload().mediaURLPath;
              if (path) showPlayer(foundation::URL::fileURLWithPath(path.string()).path());
          });
}

void CVNVideoComponent::showPlayer(const std::string& path) {
    ui::Layer& content = videoContentView_->layer();
    const std::vector<std::shared_ptr<ui::Layer>> before = content.sublayers();
    for (const auto& layer : before) {
        if (isPlayerLayer(*layer)) content.removeSublayer(*layer);
    }
    playButton_->setImage(ui::Image::named("cvn-pn-video-play",
                                           platform::current().bundles->library(),
                                           traitCollection().displayScale));
    player_ = platform::drawing().mediaPlayers->playerWithFile(path);  // at its start
    ratio_.reset();
    player_->setDidPlayToEnd([weak = weak_from_this()] {
        if (const auto component = std::dynamic_pointer_cast<CVNVideoComponent>(weak.lock()))
            component->itemDidFinishPlaying();
    });
    auto layer = std::make_shared<ui::PlayerLayer>(player_);
    layer->setVideoGravity(ui::VideoGravity::resizeAspect);
    layer->setFrame(videoContentView_->bounds());
    content.addSublayer(std::move(layer));
}

void CVNVideoComponent::layoutSubviews() {
    if (videoContentView_ == nullptr || !player_) return;
    const platform::Rect bounds = videoContentView_->bounds();
    if (bounds.width > 0) setFittingHeight(*videoHeightConstraint_, bounds.width, ratio());
    for (const auto& layer : videoContentView_->layer().sublayers()) {
        if (isPlayerLayer(*layer)) layer->setFrame(bounds);
    }
}

double CVNVideoComponent::ratio() {
    static constexpr double kUsual = 16.0 / 9;
    if (ratio_) return *ratio_;
    const double side =
        std::ceil(videoContentView_->bounds().width * traitCollection().displayScale);
    const platform::ImageRef frame = player_->frame({side, side});
    ratio_ =
        frame && frame->height > 0 ? static_cast<double>(frame->width) / frame->height : kUsual;
    return *ratio_;
}

void CVNVideoComponent::playVideoNotificationEvent(ui::View& /*sender*/) {
    if (!player_ || player_->rate() != 0) return;
    playButton_->setHidden(true);
    player_->play();
}

void CVNVideoComponent::itemDidFinishPlaying() {
    player_->seekToTime(0);
    playButton_->setHidden(false);
}

}  // namespace tavrolin
