#include "device/content_extension/pictures.h"

#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>

#include "adapters/pango/canvas.h"
#include "device/device_error.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::device {

using adapters::pango::PixelCanvas;
using adapters::pango::VectorCanvas;

namespace {

void write(const std::string& file, std::string_view bytes) {
    if (bytes.empty()) throw DeviceError("there is no memory to write the picture");
    std::ofstream stream(file, std::ios::binary | std::ios::in | std::ios::trunc);
    stream << bytes;
    stream.close();
    if (!stream) {
        throw DeviceError("can't write the picture: " + std::generic_category().message(errno));
    }
}

template <class Canvas>
std::string drawn(ui::Window& window, double scale, std::string (Canvas::*bytes)()) {
    const platform::Size size = window.size();
    try {
        Canvas canvas(size.width, size.height, scale);
        window.draw(canvas);
        return (canvas.*bytes)();
    } catch (const foundation::Exception& exception) {
        throw DeviceError("can't draw that: " + exception.reason() +
                          "; choose a smaller --width or --scale");
    }
}

}  // namespace

void drawPNG(ui::Window& window, double scale, const std::string& file) {
    write(file, drawn(window, scale, &PixelCanvas::png));
}

void drawSVG(ui::Window& window, double scale, const std::string& file) {
    write(file, drawn(window, scale, &VectorCanvas::svg));
}

}  // namespace tavrolin::device
