#include "adapters/pango/handles.h"

#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <pango/pango.h>

namespace tavrolin::adapters::pango {

void Release::operator()(FcConfig* config) const {
    FcConfigDestroy(config);
}
void Release::operator()(PangoAttrList* attributes) const {
    pango_attr_list_unref(attributes);
}
void Release::operator()(PangoFontDescription* description) const {
    pango_font_description_free(description);
}
void Release::operator()(cairo_t* cairo) const {
    cairo_destroy(cairo);
}
void Release::operator()(cairo_font_options_t* options) const {
    cairo_font_options_destroy(options);
}
void Release::operator()(cairo_pattern_t* pattern) const {
    cairo_pattern_destroy(pattern);
}
void Release::operator()(cairo_surface_t* surface) const {
    cairo_surface_destroy(surface);
}

void Unreference::operator()(void* object) const {
    g_object_unref(object);
}

}  // namespace tavrolin::adapters::pango
