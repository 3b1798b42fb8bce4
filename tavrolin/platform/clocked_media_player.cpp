#include "tavrolin/platform/clocked_media_player.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tavrolin::platform {

namespace {

constexpr double kShortestInterval = 0.01;
constexpr double kLatest = 1e9;  // in a file without an end

struct Observer {
    double interval = 0;
    std::function<void(double)> block;
};

}  // namespace

struct ClockedMediaPlayer::State : std::enable_shared_from_this<State> {
    explicit State(Dispatch& port) : dispatch(port) {}

    // A date is good to a quarter of a microsecond only; a whole second is to be a whole second.
    double elapsed() const {
        const double seconds = std::max(0.0, secondsBetween(since, dispatch.now()));
        return std::round(seconds * 1e6) / 1e6;
    }
    double position() const {
        if (!isPlaying) return start;
        const double now = start + elapsed();
        return now > duration ? duration : now;  // also where there is no duration
    }

    void moveTo(double position, bool plays) {
        start = position;
        since = dispatch.now();
        isPlaying = plays;
        ++stretch;
        if (isPlaying) scheduleEnd();
        for (const auto& each : observers) {
            if (const auto observer = each.lock()) {
                tell(each);
                if (isPlaying) scheduleTick(observer, 1);
            }
        }
    }

    // At once where nothing is left to play.
    void scheduleEnd() {
        if (std::isnan(duration)) return;
        dispatch.afterMain(std::max(0.0, duration - start),
                           [weak = weak_from_this(), current = stretch] {
                               const auto self = weak.lock();
                               if (self && self->stretch == current) self->reachEnd();
                           });
    }

    void reachEnd() {
        start = duration;
        isPlaying = false;
        ++stretch;
        const std::weak_ptr<State> weak = weak_from_this();
        const auto told = observers;  // a block may end an observation, or the player
        for (const auto& each : told) {
            if (const auto observer = each.lock()) call(*observer, duration);
            if (hasEnded) return;
        }
        if (const auto block = didPlayToEnd) block();
    }

    // Calls it soon, as when playing starts or stops.
    void tell(const std::weak_ptr<Observer>& told) {
        dispatch.asyncMain([weak = weak_from_this(), told] {
            const auto self = weak.lock();
            const auto observer = told.lock();
            if (self && observer) call(*observer, self->position());
        });
    }

    // The moments are counted from where this stretch began, so lateness doesn't add up.
    void scheduleTick(const std::shared_ptr<Observer>& observer, double number) {
        const double moment = observer->interval * number;
        dispatch.afterMain(moment - elapsed(), [weak = weak_from_this(), current = stretch, number,
                                                told = std::weak_ptr(observer)] {
            const auto self = weak.lock();
            const auto again = told.lock();
            if (!self || !again || self->stretch != current) return;
            const double passed = std::floor(self->elapsed() / again->interval);
            self->scheduleTick(again, std::max(number, passed) + 1);
            call(*again, self->position());
        });
    }

    static void call(const Observer& observer, double seconds) {
        const auto block = observer.block;  // it may end its own observation
        block(seconds);
    }

    Dispatch& dispatch;
    double start = 0;  // the position at `since`
    foundation::Date since;
    bool isPlaying = false;
    double duration = std::nan("");  // known when it plays
    unsigned stretch = 0;            // of playing or standing; timers of an earlier one are void
    bool hasEnded = false;
    std::function<void()> didPlayToEnd;
    std::vector<std::weak_ptr<Observer>> observers;
};

class ClockedMediaPlayer::Registration final : public MediaPlayer::Observation {
public:
    explicit Registration(std::shared_ptr<Observer> observer) : observer_(std::move(observer)) {}

private:
    std::shared_ptr<Observer> observer_;  // the only one that keeps it
};

ClockedMediaPlayer::ClockedMediaPlayer(Dispatch& dispatch)
    : state_(std::make_shared<State>(dispatch)) {}

ClockedMediaPlayer::~ClockedMediaPlayer() {
    state_->hasEnded = true;
    ++state_->stretch;
    state_->observers.clear();
    state_->didPlayToEnd = nullptr;
}

double ClockedMediaPlayer::currentTime() {
    return state_->position();
}

double ClockedMediaPlayer::rate() {
    return state_->isPlaying ? 1 : 0;
}

void ClockedMediaPlayer::play() {
    if (state_->isPlaying || error()) return;
    state_->duration = duration();
    if (state_->start >= state_->duration) {
        state_->scheduleEnd();
    } else {
        state_->moveTo(state_->start, true);
    }
}

void ClockedMediaPlayer::pause() {
    if (state_->isPlaying) state_->moveTo(state_->position(), false);
}

void ClockedMediaPlayer::seekToTime(double seconds) {
    double target = 0;  // for which nothing need be known of the file
    if (seconds > 0) {
        state_->duration = duration();
        target = std::min(seconds, std::isnan(state_->duration) ? kLatest : state_->duration);
    }
    state_->moveTo(target, state_->isPlaying && !(target >= state_->duration));
}

void ClockedMediaPlayer::setDidPlayToEnd(std::function<void()> block) {
    state_->didPlayToEnd = std::move(block);
}

std::unique_ptr<MediaPlayer::Observation> ClockedMediaPlayer::addPeriodicTimeObserver(
    double interval, std::function<void(double)> block) {
    const auto observer = std::make_shared<Observer>();
    observer->interval = interval > kShortestInterval ? interval : kShortestInterval;
    observer->block = std::move(block);
    auto& observers = state_->observers;
    std::erase_if(observers, [](const auto& each) { return each.expired(); });
    observers.push_back(observer);
    if (state_->isPlaying) {
        const double passed = std::floor(state_->elapsed() / observer->interval);
        state_->scheduleTick(observer, passed + 1);
    }
    return std::make_unique<Registration>(observer);
}

}  // namespace tavrolin::platform
