#pragma once

#include <string>

#include "tavrolin/ui/window.h"

namespace tavrolin::device {

// What a window shows, into a file that is there, with so many pixels for a point. Throws
// DeviceError when it is too large to be drawn or can't be written. Main thread.

void drawPNG(ui::Window& window, double scale, const std::string& file);
void drawSVG(ui::Window& window, double scale, const std::string& file);

}  // namespace tavrolin::device
