#include <algorithm>
#include <cmath>
#include <random>

#include "tavrolin/ui/animation.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/scroll_view.h"
#include "tests/ui/ui_test.h"

namespace tavrolin::tests {
namespace {

using platform::Color;
using platform::Point;
using platform::Rect;
using ui::View;

constexpr int kSide = 100;  // of what is drawn, in points

// What is drawn at the middle of each pixel, exactly: what a clip lets through is not changed by
// it.
class SamplingCanvas final : public platform::Canvas {
public:
    explicit SamplingCanvas(double scale)
        : scale_(scale),
          side_(static_cast<int>(kSide * scale)),
          layers_(1, Layer(indexOf(0, side_), Color::clear())) {}

    using Layer = std::vector<Color>;
    const Layer& pixels() const { return layers_.front(); }
    int side() const { return side_; }
    std::size_t indexOf(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(side_) +
               static_cast<std::size_t>(x);
    }

    void save() override { states_.push_back(states_.back()); }
    void restore() override { states_.pop_back(); }
    void translate(double dx, double dy) override {
        states_.back().offset.x += dx;
        states_.back().offset.y += dy;
    }
    void clip(const Rect& rect, double cornerRadius) override {
        states_.back().clips.push_back({placed(rect), cornerRadius});
    }
    void beginGroup() override { layers_.emplace_back(layers_.back().size(), Color::clear()); }
    void endGroup(double alpha) override {
        const Layer group = std::move(layers_.back());
        layers_.pop_back();
        for (std::size_t i = 0; i < group.size(); ++i)
            blend(layers_.back()[i], group[i], alpha);
    }
    void fill(const Rect& rect, double cornerRadius, const Color& color) override {
        paint({placed(rect), cornerRadius}, [&](Point) { return color; });
    }
    void fill(const Rect& rect, double cornerRadius, const platform::Gradient& gradient) override {
        paint({placed(rect), cornerRadius}, [&, place = placed(rect)](Point point) {
            Color color = gradient.colors.front();
            color.red = (point.x - place.x) / place.width;
            return color;
        });
    }
    void stroke(const Rect& rect, double cornerRadius, double width, const Color& color) override {
        const Shape inner = {placed(rect).inset(width, width), cornerRadius - width};
        paint({placed(rect), cornerRadius},
              [&](Point point) { return inner.contains(point) ? Color::clear() : color; });
    }
    void drawImage(const platform::ImageRef&, const Rect& rect,
                   const std::optional<Color>&) override {
        paint({placed(rect), 0}, [&, place = placed(rect)](Point point) {
            return Color{(point.x - place.x) / place.width, (point.y - place.y) / place.height, 0};
        });
    }
    void drawText(const platform::TextLayout& text, Point origin, const Color& color) override {
        fill(text.inkBounds().movedBy(origin.x, origin.y), 0, color);
    }
    double scale() const override { return scale_; }

private:
    struct Shape {
        Rect rect;
        double radius = 0;
        bool contains(Point point) const {
            if (!rect.contains(point)) return false;
            const double r = std::min({radius, rect.width / 2, rect.height / 2});
            const double dx = std::max({rect.x + r - point.x, point.x - (rect.maxX() - r), 0.0});
            const double dy = std::max({rect.y + r - point.y, point.y - (rect.maxY() - r), 0.0});
            return !(r > 0) || dx * dx + dy * dy <= r * r;
        }
    };
    struct State {
        Point offset;
        std::vector<Shape> clips;
    };

    static void blend(Color& below, const Color& above, double opacity) {
        const double alpha = above.alpha * opacity;
        const auto mixed = [&](double a, double b) { return a * (1 - alpha) + b * alpha; };
        below = {mixed(below.red, above.red), mixed(below.green, above.green),
                 mixed(below.blue, above.blue), mixed(below.alpha, 1)};
    }
    Rect placed(const Rect& rect) const {
        return rect.movedBy(states_.back().offset.x, states_.back().offset.y);
    }
    template <class ColorAt>
    void paint(const Shape& shape, ColorAt colorAt) {
        const auto pixel = [&](double length) {
            return std::clamp(static_cast<int>(length * scale_), 0, side_);
        };
        for (int y = pixel(shape.rect.y); y < pixel(shape.rect.maxY() + 1); ++y) {
            for (int x = pixel(shape.rect.x); x < pixel(shape.rect.maxX() + 1); ++x) {
                const Point point{(x + 0.5) / scale_, (y + 0.5) / scale_};
                const auto isIn = [&](const Shape& other) { return other.contains(point); };
                if (!isIn(shape) || !std::ranges::all_of(states_.back().clips, isIn)) continue;
                blend(layers_.back()[indexOf(x, y)], colorAt(point), 1);
            }
        }
    }

    double scale_;
    int side_;
    std::vector<Layer> layers_;
    std::vector<State> states_{{}};
};

// Trees and changes by chance, the same each time.
class DirtyRectTest : public UITest {
protected:
    double number(double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    }
    std::size_t below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    }
    bool byChance() { return below(2) == 0; }
    Color color() { return {number(0, 1), number(0, 1), number(0, 1), byChance() ? 1 : 0.5}; }
    Rect rect() { return {number(-20, 80), number(-20, 80), number(0, 50), number(0, 40)}; }
    std::string text() { return std::string(below(12), 'x') + " y"; }
    static std::shared_ptr<ui::Image> picture() {
        return ui::Image::withSource(
            std::make_unique<adapters::memory::MemoryImageSource>(
                std::vector<adapters::memory::MemoryImageSource::Frame>{{30, 20}}),
            "picture");
    }

    std::shared_ptr<View> view() {
        std::shared_ptr<View> made;
        switch (below(8)) {
            case 0:
            case 1:
                made = label(text(), static_cast<int>(below(3)));
                break;
            case 2:
                made = std::make_shared<ui::ImageView>();
                break;
            case 3:
                made = std::make_shared<ui::ScrollView>();
                break;
            case 4:
                made = std::make_shared<ui::Button>();
                break;
            case 5:
                made = std::make_shared<ui::Slider>();
                break;
            case 6:
                made = std::make_shared<ui::PageControl>();
                break;
            default:
                made = std::make_shared<View>();
                break;
        }
        made->setFrame(rect());
        changeLooks(*made);
        return made;
    }

    void changeContent(View& view) {
        if (auto* const label = dynamic_cast<ui::Label*>(&view)) {
            byChance() ? label->setText(text()) : label->setTextColor(color());
        } else if (auto* const image = dynamic_cast<ui::ImageView*>(&view)) {
            image->setImage(byChance() ? picture() : nullptr);
            image->setContentMode(byChance() ? ui::ContentMode::center
                                             : ui::ContentMode::scaleAspectFill);
        } else if (auto* const scroll = dynamic_cast<ui::ScrollView*>(&view)) {
            scroll->setContentOffset({number(-40, 40), number(-40, 40)}, byChance());
        } else if (auto* const button = dynamic_cast<ui::Button*>(&view)) {
            button->setEnabled(byChance());
            byChance() ? button->setTitle(text()) : button->setImage(picture());
        } else if (auto* const slider = dynamic_cast<ui::Slider*>(&view)) {
            slider->setValue(number(0, 1));
        } else if (auto* const pages = dynamic_cast<ui::PageControl*>(&view)) {
            pages->setNumberOfPages(static_cast<std::int64_t>(below(6)));
            pages->setCurrentPage(static_cast<std::int64_t>(below(6)));
        } else {
            changeLayers(view);
        }
    }
    void changeLayers(View& view) {
        if (!view.layer().sublayers().empty() && byChance()) {
            view.layer().removeSublayer(*view.layer().sublayers().front());
            return;
        }
        auto gradient = std::make_shared<ui::GradientLayer>();
        gradient->setGradient({{color(), color()}, {0, 0}, {1, 1}});
        gradient->setFrame(rect());
        view.layer().addSublayer(gradient);
    }
    void changeLooks(View& view) {
        switch (below(5)) {
            case 0:
                view.setBackgroundColor(byChance() ? std::optional<ui::DynamicColor>(color())
                                                   : std::nullopt);
                break;
            case 1:
                view.setBorder(number(0, 3), color());
                break;
            case 2:
                view.setCornerRadius(number(0, 12));
                break;
            case 3:
                view.setClipsToBounds(byChance());
                break;
            default:
                changeContent(view);
                break;
        }
    }
    // One change, or some time.
    void step(View& root) {
        std::vector<std::shared_ptr<View>> all;
        collect(root, all);
        View& any = all.empty() ? root : *all[below(all.size())];
        switch (below(12)) {
            case 0:
                if (all.size() < 25) (byChance() ? root : any).insertSubview(view(), below(3));
                break;
            case 1:
                if (&any != &root && byChance()) any.removeFromSuperview();
                break;
            case 2:
                if (&any != &root) any.setFrame(rect());
                break;
            case 3:
                if (&any != &root) any.setHidden(byChance());
                break;
            case 4:
                any.setAlpha(byChance() ? 1 : number(0, 1));
                break;
            case 5:
                ui::animateAlpha(any, number(0, 1), 0.3);
                break;
            case 6:
                ui::crossFade(any, 0.3, [&] { changeLooks(any); });
                break;
            case 7:
            case 8:
                memory.dispatch.advance(number(0, 0.4));
                break;
            default:
                changeLooks(any);
                break;
        }
    }
    static void collect(const View& view, std::vector<std::shared_ptr<View>>& all) {
        for (const auto& child : view.subviews()) {
            all.push_back(child);
            collect(*child, all);
        }
    }

    std::mt19937 random{11};
};

// Draws the rectangle, and puts it where it belongs in what was there.
void drawPart(ui::Window& window, const Rect& rect, double scale, SamplingCanvas::Layer& kept) {
    SamplingCanvas canvas(scale);
    window.draw(canvas, rect);
    for (int y = 0; y < canvas.side(); ++y) {
        for (int x = 0; x < canvas.side(); ++x) {
            if (!rect.contains({(x + 0.5) / scale, (y + 0.5) / scale})) continue;
            const auto at = canvas.indexOf(x, y);
            kept[at] = canvas.pixels()[at];
        }
    }
}

// What was drawn part by part is what is drawn as a whole.
TEST_F(DirtyRectTest, HoldsWhateverLooksDifferent) {
    int parts = 0;
    for (int tree = 0; tree < 20; ++tree) {
        const double scale = tree % 2 == 0 ? 1 : 0.75;
        Controller controller;
        View& root = *controller.root;
        root.setBackgroundColor(Color::white());
        constrain(root, "self.height = " + std::to_string(kSide));
        ui::Window window(controller, kSide, {.displayScale = scale});
        SamplingCanvas::Layer kept = SamplingCanvas(scale).pixels();
        for (int i = 0; i < 100; ++i) {
            step(root);
            const Rect rect = window.takeDirtyRect();
            drawPart(window, rect, scale, kept);
            parts += !rect.isEmpty() && rect.width * rect.height < kSide * kSide * 0.5 ? 1 : 0;
            SamplingCanvas drawn(scale);
            window.draw(drawn);
            const auto at =
                std::ranges::mismatch(drawn.pixels(), kept).in1 - drawn.pixels().begin();
            ASSERT_EQ(at, std::ssize(kept))
                << "tree " << tree << ", step " << i << ", pixel " << at % drawn.side() << ","
                << at / drawn.side() << ", drawn anew " << testing::PrintToString(rect);
        }
    }
    EXPECT_GT(parts, 300);
}

}  // namespace
}  // namespace tavrolin::tests
