#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "tavrolin/platform/canvas.h"
#include "tavrolin/platform/geometry.h"
#include "tavrolin/platform/media_player.h"

namespace tavrolin::ui {

/// Something drawn below a view's own content. Its frame is in its superlayer.
class Layer {
public:
    virtual ~Layer() = default;
    virtual std::string_view className() const { return "Layer"; }

    const platform::Rect& frame() const { return frame_; }
    void setFrame(const platform::Rect& frame);
    bool masksToBounds() const { return masksToBounds_; }
    void setMasksToBounds(bool masks);

    /// In the order of drawing. Changing it is up to the layer that holds it.
    const std::vector<std::shared_ptr<Layer>>& sublayers() const { return sublayers_; }
    void addSublayer(std::shared_ptr<Layer> layer);
    /// Beyond the end: at the end.
    void insertSublayer(std::shared_ptr<Layer> layer, std::size_t index);
    void removeSublayer(const Layer& layer);

    /// Itself and its sublayers, in its superlayer's coordinates.
    void draw(platform::Canvas& canvas) const;
    /// What it draws on, in its superlayer's coordinates.
    platform::Rect extent() const;
    /// Grows whenever it or a sublayer comes to look different.
    std::uint64_t lastChange() const;
    /// It, or a sublayer, looks different from moment to moment by itself.
    virtual bool isPlaying() const;

protected:
    void changed();
    virtual void drawContent(platform::Canvas& canvas) const;  // nothing, in its own coordinates

private:
    platform::Rect frame_;
    bool masksToBounds_ = false;
    std::uint64_t lastChange_ = 0;
    std::vector<std::shared_ptr<Layer>> sublayers_;
};

class GradientLayer : public Layer {
public:
    std::string_view className() const override { return "GradientLayer"; }
    const platform::Gradient& gradient() const { return gradient_; }
    void setGradient(platform::Gradient gradient);

protected:
    void drawContent(platform::Canvas& canvas) const override;

private:
    platform::Gradient gradient_;
};

enum class VideoGravity : std::int8_t { resizeAspect, resizeAspectFill, resize };

/// Shows what a player plays. The player is shared with who started it.
class PlayerLayer : public Layer {
public:
    explicit PlayerLayer(std::shared_ptr<platform::MediaPlayer> player)
        : player_(std::move(player)) {}
    std::string_view className() const override { return "PlayerLayer"; }
    VideoGravity videoGravity() const { return videoGravity_; }
    void setVideoGravity(VideoGravity gravity);
    bool isPlaying() const override { return true; }  // a seek moves a paused one, too

protected:
    void drawContent(platform::Canvas& canvas) const override;

private:
    std::shared_ptr<platform::MediaPlayer> player_;
    VideoGravity videoGravity_ = VideoGravity::resizeAspect;
};

}  // namespace tavrolin::ui
