#pragma once

#include <functional>
#include <memory>

#include "tavrolin/ui/animated_value.h"
#include "tavrolin/ui/drawing.h"
#include "tavrolin/ui/layout_engine.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// Where nothing is clipped.
inline constexpr platform::Rect kEverywhere{-1e9, -1e9, 2e9, 2e9};

/// What a tree has once.
struct View::Root {
    LayoutEngine engine;
    LayoutEngine::Surroundings surroundings;
    std::function<void()> needsLayoutBlock;  // the window's: tells it that a pass is wanted
    std::function<void()> didLayOutBlock;    // the window's: after every pass
    bool needsLayout = true;
    bool needsCalls = true;  // of `layoutSubviews`, with the next layout
    bool structureChanged = true;
    bool needsDisplay = true;  // all of it
    bool isLayingOut = false;
};

/// What is on its way in a view.
struct View::Animations {
    AnimatedValue alpha{1};

    // The picture of what was there, and how much of it is left.
    Drawing oldContent;
    platform::Rect oldExtent;
    AnimatedValue oldAlpha{0};
};

}  // namespace tavrolin::ui
