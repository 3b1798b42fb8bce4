#include "device/content_extension/card.h"

#include <array>
#include <cmath>
#include <utility>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/layer.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin::device {

using foundation::Value;
using platform::Color;
using platform::Font;
using ui::DynamicColor;
using ui::Label;
using ui::LayoutAttribute;
using ui::LayoutConstraint;
using ui::LayoutRelation;
using ui::StackView;
using ui::View;

namespace {

// In points, on a rhythm of 8.
constexpr double kEdge = 16;  // around everything
constexpr double kGap = 8;
constexpr double kInset = 16;  // of texts within the card
constexpr double kIcon = 24;
constexpr double kRowHeight = 48;
constexpr double kCardRadius = 20;
constexpr double kIconRadius = 6;

constexpr double kNameSize = 13;
constexpr double kTextSize = 15;
constexpr double kActionSize = 17;
constexpr int kTitleLines = 2;
constexpr int kBodyLines = 4;

constexpr DynamicColor kBackdropTop{Color::rgba(0xC9D6EAFF), Color::rgba(0x1B2233FF)};
constexpr DynamicColor kBackdropBottom{Color::rgba(0xE7E1EFFF), Color::rgba(0x0B0D14FF)};
constexpr DynamicColor kDestructive{Color::rgba(0xD70015FF), Color::rgba(0xFF6961FF)};

// Texts of the Info dictionary; anything else is absent.
std::string text(const Value& value) {
    return value.isString() ? std::string(value.string()) : std::string();
}

Value entry(const Value& value, std::string_view key) {
    return value.isDictionary() ? value[key] : Value();
}

Value infoOf(const platform::Bundle& app) {
    try {
        return app.infoDictionary();
    } catch (const foundation::Exception&) {
        return Value::dictionary();
    }
}

std::string appName(const Value& info) {
    for (const char* key : {"CFBundleDisplayName", "CFBundleName", "CFBundleIdentifier"}) {
        if (std::string name = text(entry(info, key)); !name.empty()) return name;
    }
    return "App";
}

bool hidesDefaultContent(const Value& info) {
    const Value attributes = entry(entry(info, "NSExtension"), "NSExtensionAttributes");
    const Value hides = entry(attributes, "UNNotificationExtensionDefaultContentHidden");
    return (hides.isNumber() || hides.isString()) && hides.boolValue();
}

std::shared_ptr<ui::Image> appIcon(const Value& info, const platform::Bundle& app, double scale) {
    for (const Value& name : {entry(info, "CFBundleIconFile"),
                              entry(entry(info, "CorvalenKeys"), "CorvalenNotificationIcon")}) {
        if (text(name).empty()) continue;
        if (auto icon = ui::Image::named(text(name), app, scale)) return icon;
    }
    return nullptr;
}

// "now", "5m ago", "3h ago", "2d ago".
std::string ageText(double seconds) {
    struct Unit {
        double seconds;
        char letter;
    };
    static constexpr std::array<Unit, 3> kUnits = {{{86400, 'd'}, {3600, 'h'}, {60, 'm'}}};
    for (const Unit& unit : kUnits) {
        if (!(seconds >= unit.seconds)) continue;
        return std::to_string(static_cast<long>(seconds / unit.seconds)) + unit.letter + " ago";
    }
    return "now";
}

// The first character.
std::string initial(const std::string& name) {
    std::size_t length = 1;
    while (length < name.size() && (static_cast<unsigned char>(name[length]) & 0xC0U) == 0x80)
        ++length;
    return name.substr(0, length);
}

void fix(View& view, LayoutAttribute attribute, double constant) {
    LayoutConstraint::make(view, attribute, LayoutRelation::equal, constant)->setActive(true);
}

std::shared_ptr<Label> label(std::string_view text, const Font& font, const DynamicColor& color,
                             int lines = 1) {
    auto label = std::make_shared<Label>();
    label->setText(text);
    label->setFont(font);
    label->setTextColor(color);
    label->setNumberOfLines(lines);
    return label;
}

std::shared_ptr<StackView> column(double spacing, const StackView::Margins& margins) {
    auto stack = std::make_shared<StackView>();
    stack->setAxis(ui::Axis::vertical);
    stack->setSpacing(spacing);
    stack->setMargins(margins);
    return stack;
}

// Shows what another window shows, at its size.
class WindowView : public View {
public:
    explicit WindowView(ui::Window& window) : window_(window), size_(window.size()) {}
    std::string_view className() const override { return "WindowView"; }
    platform::Size intrinsicContentSize(double /*availableWidth*/) const override { return size_; }

protected:
    void drawContent(platform::Canvas& canvas) const override { window_.draw(canvas); }
    bool isPlaying() const override { return true; }  // nothing tells what changes in there

private:
    ui::Window& window_;
    platform::Size size_;
};

class Backdrop : public View {
public:
    std::string_view className() const override { return "Backdrop"; }
    void layoutSubviews() override {
        if (!gradient_) {
            gradient_ = std::make_shared<ui::GradientLayer>();
            layer().addSublayer(gradient_);
        }
        gradient_->setGradient(
            {{resolved(kBackdropTop), resolved(kBackdropBottom)}, {0.5, 0}, {0.5, 1}});
        gradient_->setFrame(bounds());
    }

private:
    std::shared_ptr<ui::GradientLayer> gradient_;
};

// A picture, or the name's first letter in its place.
std::shared_ptr<View> iconView(std::shared_ptr<ui::Image> icon, const std::string& name) {
    std::shared_ptr<View> view;
    if (icon) {
        auto picture = std::make_shared<ui::ImageView>();
        picture->setImage(std::move(icon));
        picture->setContentMode(ui::ContentMode::scaleAspectFill);
        view = picture;
    } else {
        auto letter = label(initial(name), Font::boldSystemFontOfSize(kNameSize), Color::white());
        letter->setTextAlignment(platform::TextAlignment::center);
        // The darker one in either appearance: the letter is white.
        letter->setBackgroundColor(ui::palette::tint.light);
        view = letter;
    }
    view->setCornerRadius(kIconRadius);
    view->setClipsToBounds(true);
    fix(*view, LayoutAttribute::width, kIcon);
    fix(*view, LayoutAttribute::height, kIcon);
    return view;
}

std::shared_ptr<View> header(const Value& info, std::shared_ptr<ui::Image> icon,
                             const std::string& age) {
    const std::string name = appName(info);
    auto row = std::make_shared<StackView>();
    row->setSpacing(kGap);
    row->setAlignment(ui::StackAlignment::center);
    row->setMargins({12, kInset, 12, kInset});
    row->addArrangedSubview(iconView(std::move(icon), name));
    auto title = label(name, Font::boldSystemFontOfSize(kNameSize), ui::palette::secondaryLabel);
    row->addArrangedSubview(title);
    auto time = label(age, Font::systemFontOfSize(kNameSize), ui::palette::secondaryLabel);
    time->horizontalPriorities() = {.hugging = ui::priority::defaultHigh,
                                    .compressionResistance = ui::priority::required};
    row->addArrangedSubview(time);
    return row;
}

std::shared_ptr<View> texts(const platform::NotificationContent& content) {
    auto stack = column(4, {12, kInset, kInset, kInset});
    const auto add = [&](const Value& value, const Font& font, int lines) {
        if (!value.isString() || value.length() == 0) return;
        stack->addArrangedSubview(label(value.string(), font, ui::palette::label, lines));
    };
    add(content.title, Font::boldSystemFontOfSize(kTextSize), kTitleLines);
    add(content.subtitle, Font::boldSystemFontOfSize(kTextSize), kTitleLines);
    add(content.body, Font::systemFontOfSize(kTextSize), kBodyLines);
    stack->setHidden(stack->arrangedSubviews().empty());
    return stack;
}

std::shared_ptr<View> hairline(double scale) {
    auto line = std::make_shared<View>();
    line->setBackgroundColor(ui::palette::separator);
    fix(*line, LayoutAttribute::height, 1 / std::max(1.0, scale));
    return line;
}

std::shared_ptr<View> panel() {
    auto stack = column(0, {});
    stack->setBackgroundColor(ui::palette::background);
    stack->setCornerRadius(kCardRadius);
    stack->setClipsToBounds(true);
    return stack;
}

// A button of the menu.
std::shared_ptr<View> actionRow(const platform::NotificationAction& action) {
    const bool isDestructive = (action.options & platform::kActionDestructive) != 0;
    auto row = column(0, {0, kInset, 0, kInset});
    auto title = label(action.title, Font::systemFontOfSize(kActionSize),
                       isDestructive ? kDestructive : ui::palette::label);
    fix(*title, LayoutAttribute::height, kRowHeight);
    row->addArrangedSubview(title);
    return row;
}

std::shared_ptr<View> menu(const std::vector<platform::NotificationAction>& actions, double scale) {
    auto panelView = panel();
    auto& stack = dynamic_cast<StackView&>(*panelView);
    for (const platform::NotificationAction& action : actions) {
        if (!stack.arrangedSubviews().empty()) stack.addArrangedSubview(hairline(scale));
        stack.addArrangedSubview(actionRow(action));
    }
    panelView->setHidden(actions.empty());
    return panelView;
}

}  // namespace

class Card::Controller : public ui::ViewController {
public:
    explicit Controller(std::shared_ptr<View> root) : root_(std::move(root)) {}

protected:
    std::shared_ptr<View> loadView() override { return root_; }

private:
    std::shared_ptr<View> root_;
};

Card::Card(ui::Window& expanded, const Contents& contents, const platform::Bundle& app,
           const ui::TraitCollection& traits) {
    const Value info = infoOf(app);
    auto card = panel();
    auto& rows = dynamic_cast<StackView&>(*card);
    rows.addArrangedSubview(
        header(info, appIcon(info, app, traits.displayScale),
               ageText(foundation::secondsBetween(contents.deliveredAt, contents.now))));
    rows.addArrangedSubview(std::make_shared<WindowView>(expanded));
    if (!hidesDefaultContent(info)) rows.addArrangedSubview(texts(contents.content));

    auto root = std::make_shared<Backdrop>();
    auto all = column(kGap, {kEdge, kEdge, kEdge, kEdge});
    all->addArrangedSubview(card);
    all->addArrangedSubview(menu(contents.actions, traits.displayScale));
    root->addSubview(all);
    ui::pinEdgesToSuperview(*all);
    controller_ = std::make_unique<Controller>(root);
    window_ = std::make_unique<ui::Window>(*controller_, expanded.size().width + 2 * kEdge, traits);
}

Card::~Card() = default;

}  // namespace tavrolin::device
