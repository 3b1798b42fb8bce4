#pragma once

#include <functional>
#include <string>

#include "tavrolin/ui/image.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// A view that is worked by touch. Properties of interface files: enabled; action, the name of an
/// operation that the file's root offers: it gets the control.
class Control : public View {
public:
    using Action = std::function<void(View& sender)>;

    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool enabled);
    /// What a touch leads to, instead of what was there.
    void setAction(Action action) { action_ = std::move(action); }
    bool takeTap(platform::Point point) override;  // does nothing but the action
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    const std::string& actionName() const { return actionName_; }

protected:
    void sendAction();

private:
    bool isEnabled_ = true;
    Action action_;
    std::string actionName_;
};

/// A text or a picture to press. Properties of interface files: title, image, titleColor, fontSize,
/// bold, tintColor, insets ([top, leading, bottom, trailing]).
class Button : public Control {
public:
    Button();
    std::string_view className() const override { return "Button"; }

    const std::string& title() const { return title_.text(); }
    void setTitle(std::string_view title);
    void setTitleColor(const DynamicColor& color);
    void setTitleFont(const platform::Font& font);
    const std::shared_ptr<Image>& image() const { return image_; }
    void setImage(std::shared_ptr<Image> image);
    void setTintColor(std::optional<DynamicColor> color);
    struct Insets {
        double top = 0;
        double leading = 0;
        double bottom = 0;
        double trailing = 0;
    };
    void setContentInsets(const Insets& insets);

    platform::Size intrinsicContentSize(double availableWidth) const override;
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    void describe(foundation::Value& dictionary) const override;

protected:
    void drawContent(platform::Canvas& canvas) const override;
    platform::Rect contentExtent() const override;

private:
    struct Arrangement {
        platform::Rect image;  // empty without one
        platform::Rect title;
    };
    Arrangement arranged() const;
    void contentChanged();

    Label title_;  // not in the tree: set and drawn here
    std::shared_ptr<Image> image_;
    std::optional<DynamicColor> tintColor_;
    Insets insets_;
};

/// Chooses a value by the place of the touch. Properties of interface files: minimumTrackColor,
/// maximumTrackColor, thumbColor.
class Slider : public Control {
public:
    Slider();
    std::string_view className() const override { return "Slider"; }

    double minimumValue() const { return minimum_; }
    double maximumValue() const { return maximum_; }
    double value() const { return value_; }  // within both
    void setMinimumValue(double value);
    void setMaximumValue(double value);
    void setValue(double value);
    bool isContinuous() const { return isContinuous_; }
    void setContinuous(bool continuous) { isContinuous_ = continuous; }

    platform::Size intrinsicContentSize(double availableWidth) const override;
    bool takeTap(platform::Point point) override;  // sets the value, then the action
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    void describe(foundation::Value& dictionary) const override;

protected:
    void drawContent(platform::Canvas& canvas) const override;
    platform::Rect contentExtent() const override;

private:
    double minimum_ = 0;
    double maximum_ = 1;
    double value_ = 0;
    bool isContinuous_ = true;
    DynamicColor minimumTrackColor_ = palette::tint;
    DynamicColor maximumTrackColor_ = palette::fill;
    DynamicColor thumbColor_ = platform::Color::white();
};

/// A bar that fills. Properties of interface files: progressTintColor, trackTintColor.
class ProgressView : public View {
public:
    ProgressView();
    std::string_view className() const override { return "ProgressView"; }

    double progress() const { return progress_; }  // 0 to 1
    void setProgress(double progress);             // clamped; not a number is 0
    const DynamicColor& progressTintColor() const { return progressTintColor_; }
    void setProgressTintColor(const DynamicColor& color);
    void setTrackTintColor(const DynamicColor& color);

    platform::Size intrinsicContentSize(double availableWidth) const override;
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    void describe(foundation::Value& dictionary) const override;

protected:
    void drawContent(platform::Canvas& canvas) const override;

private:
    double progress_ = 0;
    DynamicColor progressTintColor_ = palette::tint;
    DynamicColor trackTintColor_ = palette::fill;
};

/// A row of dots, one of them the present one. More dots than there is room for are left out at
/// both sides. Properties of interface files: pageIndicatorColor, currentPageIndicatorColor.
class PageControl : public View {
public:
    PageControl();
    std::string_view className() const override { return "PageControl"; }

    std::int64_t numberOfPages() const { return numberOfPages_; }
    void setNumberOfPages(std::int64_t pages);  // 0 when negative
    std::int64_t currentPage() const { return currentPage_; }
    void setCurrentPage(std::int64_t page);  // clamped
    void setPageIndicatorTintColor(const DynamicColor& color);
    void setCurrentPageIndicatorTintColor(const DynamicColor& color);

    platform::Size intrinsicContentSize(double availableWidth) const override;
    bool setProperty(std::string_view name, const foundation::Value& value) override;
    void describe(foundation::Value& dictionary) const override;

protected:
    void drawContent(platform::Canvas& canvas) const override;
    platform::Rect contentExtent() const override;

private:
    std::int64_t numberOfPages_ = 0;
    std::int64_t currentPage_ = 0;
    DynamicColor pageColor_ = palette::fill;
    DynamicColor currentColor_ = palette::label;
};

}  // namespace tavrolin::ui
