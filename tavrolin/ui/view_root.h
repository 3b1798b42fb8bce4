#pragma once

#include <functional>
#include <memory>

#include "tavrolin/ui/animated_value.h"
#include "tavrolin/ui/drawing.h"
#include "tavrolin/ui/layout_engine.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// What a tree has once.
struct View::Root {
    LayoutEngine engine;
    LayoutEngine::Surroundings surroundings;
    std::function<void()> needsLayoutBlock;  // the window's: tells it that a pass is wanted
    std::function<void()> didLayOutBlock;    // the window's: after every pass
    bool needsLayout = true;
    bool needsCalls = true;  // of `layoutSubviews`, with the next layout
    bool structureChanged = true;
    bool isLayingOut = false;
};

/// What is on its way in a view.
struct View::Animations {
    AnimatedValue alpha{1};

    // The picture of what was there, and how much of it is left.
    Drawing oldContent;
    AnimatedValue oldAlpha{0};
};

}  // namespace tavrolin::ui
