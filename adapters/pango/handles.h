#pragma once

#include <memory>

// What owns the objects of the libraries below. Only for this adapter's sources.

// The libraries' own names.
// NOLINTBEGIN(bugprone-reserved-identifier)
using FcConfig = struct _FcConfig;
using PangoAttrList = struct _PangoAttrList;
using PangoContext = struct _PangoContext;
using PangoFontDescription = struct _PangoFontDescription;
using PangoLayout = struct _PangoLayout;
using PangoLayoutLine = struct _PangoLayoutLine;
using cairo_font_options_t = struct _cairo_font_options;
using cairo_pattern_t = struct _cairo_pattern;
using cairo_surface_t = struct _cairo_surface;
using cairo_t = struct _cairo;
// NOLINTEND(bugprone-reserved-identifier)

namespace tavrolin::adapters::pango {

struct Release {
    void operator()(FcConfig* config) const;
    void operator()(PangoAttrList* attributes) const;
    void operator()(PangoFontDescription* description) const;
    void operator()(cairo_t* cairo) const;
    void operator()(cairo_font_options_t* options) const;
    void operator()(cairo_pattern_t* pattern) const;
    void operator()(cairo_surface_t* surface) const;
};
using ConfigHandle = std::unique_ptr<FcConfig, Release>;
using AttributesHandle = std::unique_ptr<PangoAttrList, Release>;
using DescriptionHandle = std::unique_ptr<PangoFontDescription, Release>;
using CairoHandle = std::unique_ptr<cairo_t, Release>;
using FontOptionsHandle = std::unique_ptr<cairo_font_options_t, Release>;
using PatternHandle = std::unique_ptr<cairo_pattern_t, Release>;
using SurfaceHandle = std::unique_ptr<cairo_surface_t, Release>;

struct Unreference {
    void operator()(void* object) const;
};
/// Of the kinds that count their references themselves.
template <class Object>
using ObjectHandle = std::unique_ptr<Object, Unreference>;

}  // namespace tavrolin::adapters::pango
