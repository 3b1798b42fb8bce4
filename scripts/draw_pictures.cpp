// Draws the pictures that the views name, and the sample app's icon, each at one, two and three
// pixels a point.

#include <cairo.h>

#include <cmath>
#include <functional>
#include <iostream>
#include <memory>
#include <numbers>
#include <string>

namespace {

constexpr double kPi = std::numbers::pi;

class Pen {
public:
    explicit Pen(cairo_t* cairo) : cairo_(cairo) {}

    void colour(unsigned rgb, double alpha = 1) {
        cairo_set_source_rgba(cairo_, (rgb >> 16U & 255U) / 255.0, (rgb >> 8U & 255U) / 255.0,
                              (rgb & 255U) / 255.0, alpha);
    }
    void gradient(unsigned top, unsigned bottom, double height) {
        cairo_pattern_t* pattern = cairo_pattern_create_linear(0, 0, height * 0.35, height);
        const auto stop = [&](double at, unsigned rgb) {
            cairo_pattern_add_color_stop_rgb(pattern, at, (rgb >> 16U & 255U) / 255.0,
                                             (rgb >> 8U & 255U) / 255.0, (rgb & 255U) / 255.0);
        };
        stop(0, top);
        stop(1, bottom);
        cairo_set_source(cairo_, pattern);
        cairo_pattern_destroy(pattern);
    }
    void disc(double x, double y, double radius) {
        cairo_new_path(cairo_);
        cairo_arc(cairo_, x, y, radius, 0, 2 * kPi);
        cairo_fill(cairo_);
    }
    void ring(double x, double y, double radius, double width) {
        cairo_new_path(cairo_);
        cairo_arc(cairo_, x, y, radius, 0, 2 * kPi);
        cairo_set_line_width(cairo_, width);
        cairo_stroke(cairo_);
    }
    void roundedRect(double x, double y, double width, double height, double radius) {
        cairo_new_path(cairo_);
        cairo_arc(cairo_, x + width - radius, y + radius, radius, -kPi / 2, 0);
        cairo_arc(cairo_, x + width - radius, y + height - radius, radius, 0, kPi / 2);
        cairo_arc(cairo_, x + radius, y + height - radius, radius, kPi / 2, kPi);
        cairo_arc(cairo_, x + radius, y + radius, radius, kPi, 3 * kPi / 2);
        cairo_close_path(cairo_);
        cairo_fill(cairo_);
    }
    // The corners lie at `radius` from the centre, which is where the eye sees its middle.
    void playTriangle(double x, double y, double radius) {
        cairo_new_path(cairo_);
        for (int i = 0; i < 3; ++i) {
            const double angle = i * 2 * kPi / 3;
            cairo_line_to(cairo_, x + radius * std::cos(angle), y + radius * std::sin(angle));
        }
        cairo_close_path(cairo_);
        fillWithRoundCorners(radius * 0.18);
    }
    void star(double x, double y, double radius) {
        cairo_new_path(cairo_);
        for (int i = 0; i < 10; ++i) {
            const double r = i % 2 == 0 ? radius : radius * 0.46;
            const double angle = -kPi / 2 + i * kPi / 5;
            cairo_line_to(cairo_, x + r * std::cos(angle), y + r * std::sin(angle));
        }
        cairo_close_path(cairo_);
    }
    void fillWithRoundCorners(double width) {
        cairo_set_line_join(cairo_, CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_width(cairo_, width);
        cairo_stroke_preserve(cairo_);
        cairo_fill(cairo_);
    }
    void strokeWithRoundCorners(double width) {
        cairo_set_line_join(cairo_, CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_width(cairo_, width);
        cairo_stroke(cairo_);
    }
    // Pointing to the right for a positive reach.
    void chevron(double x, double y, double reach, double width) {
        cairo_new_path(cairo_);
        cairo_move_to(cairo_, x - reach / 2, y - std::abs(reach));
        cairo_line_to(cairo_, x + reach / 2, y);
        cairo_line_to(cairo_, x - reach / 2, y + std::abs(reach));
        cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_ROUND);
        strokeWithRoundCorners(width);
    }
    // A bell with its clapper, in a square of that size.
    void bell(double x, double y, double size) {
        const auto at = [&](double u, double v) { return std::pair(x + u * size, y + v * size); };
        const auto curve = [&](double a, double b, double c, double d, double e, double f) {
            const auto [x1, y1] = at(a, b);
            const auto [x2, y2] = at(c, d);
            const auto [x3, y3] = at(e, f);
            cairo_curve_to(cairo_, x1, y1, x2, y2, x3, y3);
        };
        const auto [left, bottom] = at(0.08, 0.74);
        cairo_new_path(cairo_);
        cairo_move_to(cairo_, left, bottom);
        curve(0.22, 0.62, 0.2, 0.52, 0.2, 0.4);
        curve(0.2, 0.18, 0.34, 0.08, 0.5, 0.08);
        curve(0.66, 0.08, 0.8, 0.18, 0.8, 0.4);
        curve(0.8, 0.52, 0.78, 0.62, 0.92, 0.74);
        cairo_close_path(cairo_);
        fillWithRoundCorners(size * 0.06);
        cairo_new_path(cairo_);
        cairo_arc(cairo_, x + size * 0.5, y + size * 0.84, size * 0.13, 0, kPi);
        cairo_fill(cairo_);
    }

private:
    cairo_t* cairo_;
};

void write(const std::string& folder, const std::string& name, double points,
           const std::function<void(Pen&)>& draw) {
    for (const int scale : {1, 2, 3}) {
        const int pixels = static_cast<int>(points) * scale;
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels, pixels);
        cairo_t* cairo = cairo_create(surface);
        cairo_scale(cairo, scale, scale);
        Pen pen(cairo);
        draw(pen);
        const std::string suffix = scale == 1 ? "" : "@" + std::to_string(scale) + "x";
        const std::string path = folder + "/" + name + suffix + ".png";
        const cairo_status_t status = cairo_surface_write_to_png(surface, path.c_str());
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
        if (status != CAIRO_STATUS_SUCCESS) {
            std::cerr << path << ": " << cairo_status_to_string(status) << '\n';
            std::exit(1);
        }
    }
}

constexpr unsigned kAccent = 0x0A6CFF;
constexpr unsigned kGold = 0xF5A300;
constexpr unsigned kGrey = 0x8E8E93;
constexpr unsigned kInk = 0x1C1C1E;

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: draw_pictures LIBRARY-FOLDER APP-FOLDER\n";
        return 2;
    }
    const std::string library = argv[1];
    write(library, "cvn-pn-audio-play", 44, [](Pen& pen) {
        pen.colour(kAccent);
        pen.disc(22, 22, 22);
        pen.colour(0xFFFFFF);
        pen.playTriangle(22.5, 22, 10);
    });
    write(library, "cvn-pn-audio-pause", 44, [](Pen& pen) {
        pen.colour(kAccent);
        pen.disc(22, 22, 22);
        pen.colour(0xFFFFFF);
        pen.roundedRect(14.5, 13, 5, 18, 1.5);
        pen.roundedRect(24.5, 13, 5, 18, 1.5);
    });
    write(library, "cvn-pn-video-play", 64, [](Pen& pen) {
        pen.colour(0x000000, 0.55);
        pen.disc(32, 32, 31);
        pen.colour(0xFFFFFF, 0.9);
        pen.ring(32, 32, 30, 2);
        pen.colour(0xFFFFFF);
        pen.playTriangle(33, 32, 14);
    });
    for (const bool next : {false, true}) {
        write(library, next ? "cvn-pn-carousel-next" : "cvn-pn-carousel-previous", 32,
              [next](Pen& pen) {
                  pen.colour(0xFFFFFF, 0.88);
                  pen.disc(16, 16, 16);
                  pen.colour(kInk);
                  pen.chevron(next ? 16.5 : 15.5, 16, next ? 6 : -6, 2.5);
              });
    }
    write(library, "cvn-pn-rating-star-icon-selected", 32, [](Pen& pen) {
        pen.colour(kGold);
        pen.star(16, 17, 13);
        pen.fillWithRoundCorners(3);
    });
    write(library, "cvn-pn-rating-star-icon-unselected", 32, [](Pen& pen) {
        pen.colour(kGrey);
        pen.star(16, 17, 13);
        pen.strokeWithRoundCorners(2);
    });
    write(argv[2], "AppIcon", 60, [](Pen& pen) {
        pen.gradient(0x5B8CFF, 0x6A3DE8, 60);
        pen.roundedRect(0, 0, 60, 60, 13.5);
        pen.colour(0xFFFFFF);
        pen.bell(14, 13, 32);
        pen.colour(0xFFB020);
        pen.disc(43, 18, 6);
    });
    return 0;
}
