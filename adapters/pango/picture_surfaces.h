#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "adapters/pango/handles.h"
#include "tavrolin/platform/image_decoder.h"

namespace tavrolin::adapters::pango {

/// Images as Cairo wants them, of which the last ones are kept for as long as the images live, so
/// that drawing one again needs no conversion. One for the process; main thread.
class PictureSurfaces {
public:
    static PictureSurfaces& shared();

    /// Valid until the next call. Null when the image has no pixels, or not as many as it says.
    cairo_surface_t* surfaceOf(const platform::ImageRef& image);

private:
    struct Kept {
        const platform::Image* image = nullptr;  // never followed: only compared
        std::weak_ptr<const platform::Image> alive;
        SurfaceHandle surface;
        std::size_t bytes = 0;
        std::uint64_t lastUse = 0;
    };

    void makeRoom(std::size_t bytes);

    std::vector<Kept> kept_;
    std::size_t bytes_ = 0;
    std::uint64_t uses_ = 0;
};

}  // namespace tavrolin::adapters::pango
