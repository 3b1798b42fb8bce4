#pragma once

#include <memory>
#include <string>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/platform/geometry.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::adapters::player {

/// An opened file of sound, or pictures, or both; it stands still. One thread at a time; GStreamer
/// works on threads of its own only inside these calls.
class Film {
public:
    static foundation::Expected<std::unique_ptr<Film>> open(const std::string& path);
    ~Film();
    Film(const Film&) = delete;
    Film& operator=(const Film&) = delete;

    /// In seconds; not a number when nobody knows.
    double duration() const;
    /// The picture at this moment, upright, with square pixels, no larger than `maximum` where the
    /// film is larger; behind the last picture that one. Null when there is none.
    platform::ImageRef frame(double seconds, platform::Size maximum);

private:
    struct Pipeline;
    explicit Film(std::unique_ptr<Pipeline> pipeline);
    double queriedDuration() const;

    std::unique_ptr<Pipeline> pipeline_;
    double duration_ = 0;
    double lastMoment_ = -1;
    platform::Size lastMaximum_;
    platform::ImageRef lastFrame_;
};

}  // namespace tavrolin::adapters::player
