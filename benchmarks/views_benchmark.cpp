// What the expanded view costs, layout by layout, at 2 pixels a point: its texts set anew, laid out
// and drawn, beside bare Cairo and Pango calls that set and draw the same texts and the same
// pictures at the same places. Both set texts that they never set before, in fonts that they know,
// and draw pictures that are decoded. Then the same with nothing changed; a second of a countdown
// and a step of a carousel, of which only what changed is laid out and drawn, beside the whole
// view; and `expand --png` from the start of its process beside a bare program that loads the same
// fonts and draws the same. Last the most memory that the content extension takes for what is
// large.

#include <fcntl.h>
#include <pango/pangocairo.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "adapters/html/html_importer.h"
#include "adapters/images/image_decoder.h"
#include "adapters/json/json_text.h"
#include "adapters/language/language_recognizer.h"
#include "adapters/memory/memory_platform.h"
#include "adapters/pango/canvas.h"
#include "adapters/pango/fonts.h"
#include "adapters/pango/typesetter.h"
#include "adapters/plist/folder_bundles.h"
#include "adapters/posix/posix_files.h"
#include "benchmarks/ratios.h"
#include "tavrolin/content_ui/components/item_carousel_component.h"
#include "tavrolin/content_ui/custom_notification_view_controller.h"
#include "tavrolin/content_ui/notification_view.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/canvas.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/window.h"
#include "tests/support/pictures.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace tavrolin;
using namespace tavrolin::benchmarks;
using foundation::Value;
using platform::Point;
using platform::Rect;

constexpr double kWidth = 375;
constexpr double kScale = 2;
constexpr int kTurns = 15;
constexpr int kRuns = 40;
constexpr int kStarts = 8;
constexpr double kGoal = 1.3;

const std::string kSource = TAVROLIN_SOURCE_DIR;
const std::string kBinary = TAVROLIN_BINARY_DIR;
const std::string kFilm = kSource + "/examples/media/clip.avi";

// --- The ports of a content extension, with what is measured as it is ---------------------------

struct Ports {
    adapters::memory::MemoryPlatform memory;
    adapters::plist::FolderBundles bundles{kSource + "/device/sample_app",
                                           {kSource + "/tavrolin/resources"}};
    adapters::posix::PosixFiles files{[](std::string_view) { return std::nullopt; }, std::nullopt};
    adapters::images::ImageDecoder images;
    adapters::json::JSONText json;
    adapters::html::HTMLImporter html;
    adapters::language::LanguageRecognizer languages;
    adapters::pango::Typesetter typesetter;

    Ports() {
        platform::Platform ports = memory.platform();
        ports.bundles = &bundles;
        ports.files = &files;
        ports.imageDecoder = &images;
        ports.json = &json;
        ports.drawing.htmlImporter = &html;
        ports.drawing.languageRecognizer = &languages;
        ports.drawing.typesetter = &typesetter;
        platform::install(ports);
        memory.mediaPlayers.setFile(
            kFilm,
            {.duration = 10, .picture = [picture = filmPicture()](double) { return picture; }});
    }

private:
    // A film's picture at the size that is shown, as a player hands it over.
    platform::ImageRef filmPicture() {
        const auto source = images.sourceWithFile(kSource + "/examples/media/landscape-2.jpg");
        constexpr auto kPixels = static_cast<std::uint32_t>(kWidth * kScale);
        return source->imageAtIndex(0, kPixels, kPixels);
    }
};

Ports& ports() {
    static auto* instance = new Ports;
    return *instance;
}

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The example's payload as the service extension hands it on: with the path of its media.
Value payloadOf(const std::string& example, const std::string& media) {
    Value payload = *ports().json.parse(contentsOf(kSource + "/examples/payloads/" + example));
    if (!media.empty()) {
        Value section = payload["cvnPayload"];
        section.set(kPNMediaURLPath, media);
        payload.set("cvnPayload", section);
    }
    return payload;
}

std::string mediaPath(const char* name) {
    return name == nullptr ? "" : kSource + "/examples/media/" + std::string(name);
}

// The example's carousel with these pictures, an item each.
Value carouselOf(const std::string& example, const std::vector<std::string>& pictures) {
    Value payload = payloadOf(example, "");
    Value section = payload["cvnPayload"];
    const Value items = section["carousel"];
    Value filled = Value::array();
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        Value item = items.at(i % items.count());
        item.set(kPNCarouselImageURLPath, pictures[i]);
        filled.append(item);
    }
    section.set("carousel", filled);
    payload.set("cvnPayload", section);
    return payload;
}

platform::DeliveredNotification notification(Value payload) {
    platform::DeliveredNotification result;
    result.request.identifier = "x";
    result.request.content.userInfo = std::move(payload);
    return result;
}

// --- What a view draws besides its texts ---------------------------------------------------------

// Rectangles in one colour or in several, and pictures, at their places.
class Shapes final : public platform::Canvas {
public:
    struct Shape {
        Rect rect;
        double cornerRadius = 0;
        platform::Gradient gradient;                     // of one colour: that
        platform::ImageRef image;                        // in that colour, where there is one
        std::optional<std::pair<Rect, double>> corners;  // what it is cut to, with a radius
    };
    explicit Shapes(double scale) : scale_(scale) {}

    const std::vector<Shape>& all() const { return all_; }

    void save() override { states_.push_back(states_.back()); }
    void restore() override { states_.pop_back(); }
    void translate(double dx, double dy) override {
        states_.back().offset.x += dx;
        states_.back().offset.y += dy;
    }
    void clip(const Rect& rect, double cornerRadius) override {
        if (cornerRadius > 0) states_.back().corners = {placed(rect), cornerRadius};
    }
    void beginGroup() override {}
    void endGroup(double) override {}
    void fill(const Rect& rect, double cornerRadius, const platform::Color& color) override {
        add({rect, cornerRadius, {{color}, {}, {}}, nullptr, {}});
    }
    void fill(const Rect& rect, double cornerRadius, const platform::Gradient& gradient) override {
        add({rect, cornerRadius, gradient, nullptr, {}});
    }
    void stroke(const Rect&, double, double, const platform::Color&) override {}
    void drawImage(const platform::ImageRef& image, const Rect& rect,
                   const std::optional<platform::Color>& tint) override {
        Shape shape{rect, 0, {}, image, {}};
        if (tint) shape.gradient.colors.push_back(*tint);
        add(shape);
    }
    void drawText(const platform::TextLayout&, Point, const platform::Color&) override {}
    double scale() const override { return scale_; }

private:
    void add(Shape shape) {
        shape.rect = placed(shape.rect);
        shape.corners = states_.back().corners;
        all_.push_back(std::move(shape));
    }
    Rect placed(const Rect& rect) const {
        return rect.movedBy(states_.back().offset.x, states_.back().offset.y);
    }

    struct State {
        Point offset;
        std::optional<std::pair<Rect, double>> corners;
    };
    double scale_;
    std::vector<State> states_{{}};
    std::vector<Shape> all_;
};

// --- The view ------------------------------------------------------------------------------------

class Expanded {
public:
    explicit Expanded(Value payload)
        : controller_(std::make_shared<CVNCustomNotificationViewController>()),
          window_(*controller_, kWidth, {.displayScale = kScale}) {
        controller_->didReceiveNotification(notification(std::move(payload)));
        ports().memory.dispatch.advance(0.1);
        size_ = window_.size();
        collect(controller_->view(), {});
        window_.draw(shapes_);
    }

    void setTextsAnew(int turn) {
        for (const auto& [label, text, frame] : labels_) {
            platform::StyledText changed = text;
            vary(changed, turn);
            label->setAttributedText(std::move(changed));
        }
    }
    static void vary(platform::StyledText& text, int turn) {
        // As wide as what it replaces, so that the lines stay.
        for (std::size_t i = 0; i < 4 && i < text.string.size(); ++i) {
            text.string[i] = static_cast<char>('0' + turn % 10);
            turn /= 10;
        }
    }
    void layOut() { window_.layoutIfNeeded(); }
    void draw() {
        adapters::pango::PixelCanvas canvas(size_.width, size_.height, kScale);
        window_.draw(canvas);
    }
    void layOutAndDraw() {
        controller_->view().setNeedsLayout();
        draw();
    }
    /// What looks different since the last time; returns how large that is, in points.
    platform::Size drawChanges() {
        const Rect dirty = window_.takeDirtyRect();
        if (dirty.isEmpty()) return {};
        adapters::pango::PixelCanvas canvas(dirty.width, dirty.height, kScale);
        canvas.translate(-dirty.x, -dirty.y);
        window_.draw(canvas, dirty);
        return dirty.size();
    }
    template <class T>
    T& find() {
        return *find<T>(controller_->view());
    }

    struct Text {
        ui::Label* label;
        platform::StyledText text;
        Rect frame;
    };
    const std::vector<Text>& texts() const { return labels_; }
    const Shapes& shapes() const { return shapes_; }
    platform::Size size() const { return size_; }

private:
    template <class T>
    static T* find(ui::View& view) {
        if (auto* const found = dynamic_cast<T*>(&view)) return found;
        for (const auto& subview : view.subviews()) {
            if (T* const found = find<T>(*subview)) return found;
        }
        return nullptr;
    }
    void collect(ui::View& view, Point origin) {
        if (view.isHidden()) return;
        const Rect frame = view.frame().movedBy(origin.x, origin.y);
        if (auto* const label = dynamic_cast<ui::Label*>(&view)) {
            labels_.push_back({label,
                               label->attributedText().value_or(platform::StyledText::plain(
                                   label->text(), {.font = label->font()})),
                               frame});
        }
        for (const auto& subview : view.subviews())
            collect(*subview, frame.origin());
    }

    std::shared_ptr<CVNCustomNotificationViewController> controller_;
    ui::Window window_;
    platform::Size size_;
    std::vector<Text> labels_;
    Shapes shapes_{kScale};
};

// --- The same with bare calls --------------------------------------------------------------------

class Bare {
public:
    explicit Bare(const Expanded& view) : view_(view) {
        for (const Shapes::Shape& shape : view.shapes().all())
            surfaces_.push_back(shape.image == nullptr ? nullptr : surfaceOf(*shape.image));
    }
    ~Bare() {
        for (cairo_surface_t* surface : surfaces_) {
            if (surface != nullptr) cairo_surface_destroy(surface);
        }
    }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;

    void draw(int turn) const {
        cairo_surface_t* const surface = cairo_image_surface_create(
            CAIRO_FORMAT_ARGB32, static_cast<int>(view_.size().width * kScale),
            static_cast<int>(std::ceil(view_.size().height * kScale)));
        cairo_t* const cairo = cairo_create(surface);
        cairo_scale(cairo, kScale, kScale);
        for (std::size_t i = 0; i < surfaces_.size(); ++i)
            drawShape(cairo, view_.shapes().all()[i], surfaces_[i]);
        for (const Expanded::Text& text : view_.texts())
            drawText(cairo, text, turn);
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
    }

private:
    static cairo_surface_t* surfaceOf(const platform::Image& image) {
        cairo_surface_t* const surface = cairo_image_surface_create(
            CAIRO_FORMAT_ARGB32, static_cast<int>(image.width), static_cast<int>(image.height));
        cairo_surface_flush(surface);
        unsigned char* const data = cairo_image_surface_get_data(surface);
        const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
        for (std::size_t y = 0; y < image.height; ++y) {
            auto* const row = reinterpret_cast<std::uint32_t*>(data + y * stride);
            for (std::size_t x = 0; x < image.width; ++x) {
                const std::uint8_t* const pixel = &image.pixels[(y * image.width + x) * 4];
                const auto premultiplied = [&](int i) { return pixel[i] * pixel[3] / 255U; };
                row[x] = static_cast<std::uint32_t>(pixel[3]) << 24U | premultiplied(0) << 16U |
                         premultiplied(1) << 8U | premultiplied(2);
            }
        }
        cairo_surface_mark_dirty(surface);
        return surface;
    }
    static void drawShape(cairo_t* cairo, const Shapes::Shape& shape, cairo_surface_t* picture) {
        const auto& [colors, start, end] = shape.gradient;
        const Rect& rect = shape.rect;
        cairo_save(cairo);
        if (shape.corners) {
            traceRectangle(cairo, shape.corners->first, shape.corners->second);
            cairo_clip(cairo);
        }
        if (colors.size() > 1) {
            cairo_pattern_t* const pattern = cairo_pattern_create_linear(
                rect.x + start.x * rect.width, rect.y + start.y * rect.height,
                rect.x + end.x * rect.width, rect.y + end.y * rect.height);
            const auto last = static_cast<double>(colors.size() - 1);
            for (std::size_t i = 0; i < colors.size(); ++i) {
                cairo_pattern_add_color_stop_rgba(pattern, static_cast<double>(i) / last,
                                                  colors[i].red, colors[i].green, colors[i].blue,
                                                  colors[i].alpha);
            }
            cairo_set_source(cairo, pattern);
            cairo_pattern_destroy(pattern);
        } else if (!colors.empty()) {
            cairo_set_source_rgba(cairo, colors[0].red, colors[0].green, colors[0].blue,
                                  colors[0].alpha);
        }
        if (picture != nullptr) {
            drawPicture(cairo, picture, rect, !colors.empty());
        } else {
            traceRectangle(cairo, rect, shape.cornerRadius);
            cairo_fill(cairo);
        }
        cairo_restore(cairo);
    }
    static void traceRectangle(cairo_t* cairo, const Rect& rect, double radius) {
        if (!(radius > 0)) return cairo_rectangle(cairo, rect.x, rect.y, rect.width, rect.height);
        constexpr double kQuarter = 1.5707963267948966;
        const double right = rect.maxX() - radius;
        const double bottom = rect.maxY() - radius;
        cairo_new_sub_path(cairo);
        cairo_arc(cairo, right, rect.y + radius, radius, -kQuarter, 0);
        cairo_arc(cairo, right, bottom, radius, 0, kQuarter);
        cairo_arc(cairo, rect.x + radius, bottom, radius, kQuarter, 2 * kQuarter);
        cairo_arc(cairo, rect.x + radius, rect.y + radius, radius, 2 * kQuarter, 3 * kQuarter);
        cairo_close_path(cairo);
    }
    static void drawPicture(cairo_t* cairo, cairo_surface_t* picture, const Rect& frame,
                            bool isTinted) {
        cairo_save(cairo);
        cairo_translate(cairo, frame.x, frame.y);
        cairo_scale(cairo, frame.width / cairo_image_surface_get_width(picture),
                    frame.height / cairo_image_surface_get_height(picture));
        if (isTinted) {
            cairo_mask_surface(cairo, picture, 0, 0);
        } else {
            cairo_set_source_surface(cairo, picture, 0, 0);
            cairo_paint(cairo);
        }
        cairo_restore(cairo);
    }
    static void drawText(cairo_t* cairo, const Expanded::Text& text, int turn) {
        platform::StyledText changed = text.text;
        Expanded::vary(changed, turn);
        PangoLayout* const layout = pango_layout_new(fonts().contextFor(changed.string));
        PangoAttrList* const attributes = pango_attr_list_new();
        guint at = 0;
        for (const platform::TextRun& run : changed.runs) {
            PangoFontDescription* const font = pango_font_description_new();
            pango_font_description_set_family(font, adapters::pango::Fonts::kFamily);
            pango_font_description_set_absolute_size(font, run.attributes.font.size * PANGO_SCALE);
            if (run.attributes.font.bold)
                pango_font_description_set_weight(font, PANGO_WEIGHT_BOLD);
            PangoAttribute* const attribute = pango_attr_font_desc_new(font);
            attribute->start_index = at;
            at += static_cast<guint>(run.length);
            attribute->end_index = at;
            pango_attr_list_insert(attributes, attribute);
            pango_font_description_free(font);
        }
        pango_layout_set_text(layout, changed.string.data(),
                              static_cast<int>(changed.string.size()));
        pango_layout_set_attributes(layout, attributes);
        pango_layout_set_width(layout, static_cast<int>(text.frame.width * PANGO_SCALE));
        pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
        PangoRectangle extents;
        pango_layout_get_extents(layout, nullptr, &extents);
        cairo_set_source_rgb(cairo, 0, 0, 0);
        cairo_move_to(cairo, text.frame.x, text.frame.y);
        pango_cairo_show_layout(cairo, layout);
        pango_attr_list_unref(attributes);
        g_object_unref(layout);
    }
    static adapters::pango::Fonts& fonts() {
        static auto* instance = new adapters::pango::Fonts;
        return *instance;
    }

    const Expanded& view_;
    std::vector<cairo_surface_t*> surfaces_;  // of the shapes; null for those without a picture
};

// --- Measuring -----------------------------------------------------------------------------------

struct Example {
    const char* name;
    const char* file;
    const char* media;
};
constexpr Example kExamples[] = {{"layout_01", "long-text.json", nullptr},
                                 {"layout_21", "countdown.json", "landscape-1.jpg"},
                                 {"layout_23", "overlay.json", "landscape-3.jpg"},
                                 {"layout_24", "small-image.json", "portrait-1.jpg"},
                                 {"layout_41", "gif.json", "spinner.gif"},
                                 {"layout_51", "audio.json", "chime.wav"},
                                 {"layout_61", "video.json", "clip.avi"}};

void measureLayout(const Example& example) {
    Expanded view(payloadOf(example.file, mediaPath(example.media)));
    const Bare bare(view);
    int ours = 0;
    int theirs = 0;
    const auto times = timesInTurns(TimeOf::processor, kTurns, kRuns,
                                    {[&] {
                                         view.setTextsAnew(ours++);
                                         view.layOutAndDraw();
                                     },
                                     [&] { bare.draw(theirs++); }, [&] { view.layOutAndDraw(); }});
    std::printf(
        "%-12s %4.0f points high, %zu texts, %zu shapes: %.0f us, bare calls %.0f us, "
        "unchanged %.0f us\n",
        example.name, view.size().height, view.texts().size(), view.shapes().all().size(),
        median(times[0]), median(times[1]), median(times[2]));
    printRatio(std::string(example.name) + "_to_bare_calls", medianRatio(times[0], times[1]),
               kGoal);
}

// A second of a countdown, from its timer to the frames and to the pixels.
void measureTick(const char* name, const char* example) {
    Expanded view(payloadOf(example, mediaPath("landscape-1.jpg")));
    int turn = 0;
    platform::Size part;
    view.drawChanges();
    const auto tick = [&] { ports().memory.dispatch.advance(1); };
    const auto setAnew = [&] {
        view.setTextsAnew(turn++);
        view.layOut();
    };
    const auto layouts = timesInTurns(TimeOf::processor, kTurns, kRuns, {tick, setAnew});
    tick();
    view.drawChanges();
    const auto all = timesInTurns(TimeOf::processor, kTurns, kRuns,
                                  {[&] {
                                       tick();
                                       part = view.drawChanges();
                                   },
                                   [&] {
                                       setAnew();
                                       view.draw();
                                   }});
    std::printf(
        "%-12s %.1f us, whole layout %.1f us; with drawing of %.0f x %.0f points %.0f us, of the "
        "whole %.0f us\n",
        name, median(layouts[0]), median(layouts[1]), part.width, part.height, median(all[0]),
        median(all[1]));
    printRatio(std::string(name) + "_to_whole_layout", medianRatio(layouts[0], layouts[1]), 0.1);
}

// A step of a carousel that has come to its end, with pictures that are decoded.
void measureStep(const char* name, const char* example) {
    Expanded view(carouselOf(example, {mediaPath("landscape-1.jpg"), mediaPath("landscape-2.jpg"),
                                       mediaPath("landscape-3.jpg")}));
    auto& carousel = view.find<ItemCarouselComponent>();
    int turn = 0;
    platform::Size part;
    const auto step = [&] {
        carousel.nextItem();
        ports().memory.dispatch.advance(0.4);
        part = view.drawChanges();
    };
    for (int i = 0; i < 3; ++i)
        step();
    const auto times =
        timesInTurns(TimeOf::processor, kTurns, kRuns, {step, [&] {
                                                            view.setTextsAnew(turn++);
                                                            view.layOutAndDraw();
                                                        }});
    std::printf("%-12s %.0f us for %.0f x %.0f points, whole layout and draw %.0f us\n", name,
                median(times[0]), part.width, part.height, median(times[1]));
    printRatio(std::string(name) + "_to_whole_layout_and_draw", medianRatio(times[0], times[1]),
               0.5);
}

void run(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = -1;
    if (posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0)
        waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) {
        std::fprintf(stderr, "views_benchmark: %s did not do it\n", words[0].c_str());
        std::exit(1);
    }
}

// Runs the program and writes the most memory that it, or one that it started, took, in bytes. For
// a process of its own that has little memory: what starts a program counts as the program's.
int writePeak(const std::string& file, const std::vector<std::string>& words) {
    run(words);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return (std::ofstream(file) << usage.ru_maxrss * 1024).good() ? 0 : 1;
}

// A device with notifications on its tray, as they came: with the path of their media in them.
class Device {
public:
    Device() {
        const std::string pattern = fs::temp_directory_path() / "tavrolin-views-XXXXXX";
        std::vector<char> name(pattern.begin(), pattern.end());
        name.push_back('\0');
        if (mkdtemp(name.data()) == nullptr) {
            std::perror("views_benchmark");
            std::exit(1);
        }
        folder_ = name.data();
    }
    ~Device() { fs::remove_all(folder_); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    void deliver(const std::string& identifier, Value payload) const {
        Value aps = payload["aps"];
        aps.set("mutable-content", 0);
        payload.set("aps", aps);
        std::ofstream(path("push.json"))
            << *ports().json.serialise(payload, platform::JSONText::Style::compact);
        run({kProgram, "--device", path("device"), "deliver", "--no-limit", "--id", identifier,
             path("push.json")});
    }
    std::vector<std::string> expanding(const std::string& identifier) const {
        return {kProgram,   "--device", path("device"),      "--time", "jump", "expand",
                identifier, "--png",    path("expanded.png")};
    }

private:
    const std::string kProgram = kBinary + "/tavrolin";
    std::string folder_;
};

// The same picture in both.
void measureStart() {
    const Device device;
    device.deliver("x", payloadOf("countdown.json", kSource + "/examples/media/landscape-1.jpg"));
    const std::string title = "Early bird ends soon";
    const std::string body = "Tickets go up by a third when the clock runs out.";
    const std::string icon = kSource + "/device/sample_app/AppIcon@2x.png";
    const auto times = timesInTurns(
        TimeOf::real, kTurns, kStarts,
        {[&] { run(device.expanding("x")); },
         [&] {
             run({kBinary + "/benchmarks/bare_picture", device.path("bare.png"), "375", "331", "2",
                  title, body, "885:53:40", icon, kSource + "/examples/media/landscape-1.jpg"});
         }});
    std::printf("expand --png from process start %.1f ms, bare program %.1f ms\n",
                median(times[0]) / 1e3, median(times[1]) / 1e3);
    printRatio("expand_png_to_bare_program", medianRatio(times[0], times[1]), kGoal);
}

Value textPayload(const char* key, const std::string& text) {
    Value payload = payloadOf("long-text.json", "");
    Value section = payload["cvnPayload"];
    section.set(key, text);
    payload.set("cvnPayload", section);
    return payload;
}

std::string repeated(std::string_view part, std::size_t length) {
    std::string text;
    while (text.size() < length)
        text += part;
    return text;
}

// 30 frames of 3 megapixels, each of stripes that have moved.
std::string largeAnimation() {
    constexpr unsigned kFrameWidth = 2000;
    constexpr unsigned kFrameHeight = 1500;
    std::vector<test::GIFFrame> frames;
    for (unsigned i = 0; i < 30; ++i) {
        test::GIFFrame frame = test::plainFrame(kFrameWidth, kFrameHeight, 'w', 10);
        for (std::size_t at = 0; at < frame.letters.size(); ++at)
            frame.letters[at] = "rgbwk"[(at / 50 + i) % 5];
        frames.push_back(std::move(frame));
    }
    return test::gif(kFrameWidth, kFrameHeight, frames);
}

// Bytes, of the process that the words start.
double peakOf(const Device& device, std::vector<std::string> words) {
    words.insert(words.begin(), {"/proc/self/exe", "--peak", device.path("peak")});
    run(words);
    return std::stod(contentsOf(device.path("peak")));
}

std::string photo(bool isProgressive) {
    return test::jpeg(4000, 3000, {3'000'000, isProgressive});
}

// The most that one expanded view takes, without a player.
void measureMemory() {
    constexpr double kMost = 48e6;
    const Device device;
    struct Case {
        const char* name;
        Value payload;
        const char* step;
    };
    const auto withPicture = [&](const char* example, const char* name, const std::string& bytes) {
        std::ofstream(device.path(name), std::ios::binary) << bytes;
        return payloadOf(example, device.path(name));
    };
    const Case cases[] = {
        {"photo", withPicture("image.json", "b.jpg", photo(false)), "wait 0"},
        {"progressive_photo", withPicture("image.json", "p.jpg", photo(true)), "wait 0"},
        {"interlaced_png", withPicture("image.json", "i.png", test::png(4000, 3000, {0, true})),
         "wait 0"},
        {"animation", withPicture("gif.json", "a.gif", largeAnimation()), "wait 2.25"},
        {"text", textPayload("htB", repeated("漢字仮名交じり文", 300'000)), "wait 0"},
        {"html", textPayload("htB", repeated("<p><b>x</b> <i>y</i></p>", 1'000'000)), "wait 0"},
    };
    for (const Case& each : cases) {
        device.deliver(each.name, each.payload);
        std::vector<std::string> words = device.expanding(each.name);
        words.insert(words.end(), {"--do", each.step});
        const double peak = peakOf(device, words);
        std::printf("%-18s expand --png takes %.1f MB\n", each.name, peak / 1e6);
        printRatio(std::string(each.name) + "_peak_to_48_MB", peak / kMost, 1);
    }
}

constexpr int kPages = 10;

// Goes through all pages of a carousel, there and back, and draws whatever comes into sight.
int turnPages(const std::string& payload) {
    Expanded view(*ports().json.parse(contentsOf(payload)));
    auto& carousel = view.find<ItemCarouselComponent>();
    const auto settle = [&] {
        for (int i = 0; i < 4; ++i) {
            ports().memory.dispatch.advance(0.1);
            view.drawChanges();
        }
    };
    for (int i = 0; i <= kPages; ++i, settle())
        carousel.nextItem();
    for (int i = 0; i <= kPages; ++i, settle())
        carousel.previousItem();
    view.draw();
    return 0;
}

// Of ten pictures of 12 megapixels: in the content extension, which draws once all steps are taken,
// and where each step is drawn from its begin to its end.
void measureCarouselMemory() {
    constexpr double kMost = 64e6;
    const Device device;
    std::vector<std::string> steps;
    for (int i = 0; i < 2 * kPages; ++i)
        steps.insert(steps.end(), {"--do", i < kPages ? "press 0" : "press 1", "--do", "wait 0.4"});
    const std::pair<const char*, std::string> files[] = {
        {"photos", photo(false)},
        {"progressive_photos", photo(true)},
        {"pngs", test::png(4000, 3000, {0, false})},
        {"interlaced_pngs", test::png(4000, 3000, {0, true})}};
    for (const auto& [what, bytes] : files) {
        std::ofstream(device.path(what), std::ios::binary) << bytes;
        for (const std::string shape : {"landscape", "portrait"}) {
            const std::string name = shape + "_" + what;
            const Value payload = carouselOf("carousel-" + shape + ".json",
                                             std::vector<std::string>(kPages, device.path(what)));
            device.deliver(name, payload);
            std::vector<std::string> words = device.expanding(name);
            words.insert(words.end(), steps.begin(), steps.end());
            const double once = peakOf(device, words);
            const double each =
                peakOf(device, {"/proc/self/exe", "--turn", device.path("push.json")});
            std::printf(
                "%-28s expanded and stepped through %.1f MB, with each step drawn %.1f MB\n",
                name.c_str(), once / 1e6, each / 1e6);
            printRatio(name + "_peak_to_64_MB", std::max(once, each) / kMost, 1);
        }
    }
}

}  // namespace

// usage: views_benchmark [NAME], of one layout only, or "tick", "step", "start", "memory"
// or "carousel_memory"
int main(int argc, char** argv) {
    if (argc > 3 && std::string_view(argv[1]) == "--peak")
        return writePeak(argv[2], {argv + 3, argv + argc});
    ports();
    if (argc > 2 && std::string_view(argv[1]) == "--turn") return turnPages(argv[2]);
    const std::string wanted = argc > 1 ? argv[1] : "";
    for (const Example& example : kExamples) {
        if (wanted.empty() || wanted == example.name) measureLayout(example);
    }
    if (wanted.empty() || wanted == "tick") {
        measureTick("text_tick", "countdown.json");
        measureTick("bar_tick", "timer.json");
    }
    if (wanted.empty() || wanted == "step") {
        measureStep("page_step", "carousel-landscape.json");
        measureStep("pair_step", "carousel-portrait.json");
    }
    if (wanted.empty() || wanted == "start") measureStart();
    if (wanted.empty() || wanted == "memory") measureMemory();
    if (wanted.empty() || wanted == "carousel_memory") measureCarouselMemory();
    return 0;
}
