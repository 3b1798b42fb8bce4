#pragma once

#include <functional>

#include "tavrolin/ui/animated_value.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// Fades a view from what it shows to what `change` makes of it: the old content goes from full to
/// nothing while the new one comes. `completion` is called at the end, on the main queue, also when
/// the view is gone by then.
void crossFade(View& view, double seconds, const std::function<void()>& change,
               std::function<void()> completion = nullptr);

/// Brings a view's alpha to a value.
void animateAlpha(View& view, double alpha, double seconds,
                  std::function<void()> completion = nullptr);

}  // namespace tavrolin::ui
