#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/geometry.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::ui {

/// A picture to show, a still one or frames one after the other. What is shown is decoded when it
/// is drawn, at its size, and kept until something else is. One thread at a time.
class Image {
public:
    /// Null when there is no source or the file is no picture. `name` is what the tree prints.
    static std::shared_ptr<Image> withSource(std::unique_ptr<platform::ImageSource> source,
                                             std::string_view name, double scale = 1);
    /// The picture of an asset's name, from "star.png", "star@2x.png", "star@3x.png" for "star": as
    /// large as the first that is enough for `displayScale`, else the largest; drawn from the first
    /// that is enough for what is shown. Null when there is none.
    static std::shared_ptr<Image> named(std::string_view name, const platform::Bundle& bundle,
                                        double displayScale);
    /// Of the source's frames those with these indices, in this order, each for the same share of
    /// `duration` seconds, again and again; the first for ever where the duration is not above 0.
    /// Null without a source or frames.
    static std::shared_ptr<Image> animated(std::shared_ptr<platform::ImageSource> source,
                                           std::vector<std::uint32_t> frames, double duration,
                                           std::string_view name);
    virtual ~Image() = default;

    const std::string& name() const { return name_; }
    virtual platform::Size size() const = 0;  // in points; never 0
    virtual bool isAnimated() const { return false; }
    /// The pixels to draw on so many, `elapsed` seconds after it came on screen; null when they
    /// can't be decoded.
    virtual platform::ImageRef pixels(platform::Size shownPixels, double elapsed) = 0;
    /// Lets go of what was decoded, so that a picture that is out of sight takes next to nothing.
    /// It is decoded anew when it is drawn again.
    virtual void forgetPixels() = 0;

protected:
    explicit Image(std::string_view name) : name_(name) {}

private:
    std::string name_;
};

}  // namespace tavrolin::ui
