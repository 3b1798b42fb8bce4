#pragma once

#include "tavrolin/content_ui/layouts/base_layout_view.h"

namespace tavrolin {

// The layouts that stack their slots and do nothing else.

/// Texts only.
class CVNLayout01 : public CVNBaseLayoutView {
public:
    std::string_view className() const override { return "CVNLayout01"; }
    void configureNotification() override;
};

/// A picture.
class CVNLayout21 : public MediaLayoutView {
public:
    std::string_view className() const override { return "CVNLayout21"; }
    void configureNotification() override;
};

/// An animated picture.
class CVNLayout41 : public MediaLayoutView {
public:
    std::string_view className() const override { return "CVNLayout41"; }
    void configureNotification() override;
};

/// Sound.
class CVNLayout51 : public MediaLayoutView {
public:
    std::string_view className() const override { return "CVNLayout51"; }
    void configureNotification() override;
};

/// Film.
class CVNLayout61 : public MediaLayoutView {
public:
    std::string_view className() const override { return "CVNLayout61"; }
    void configureNotification() override;
};

}  // namespace tavrolin
