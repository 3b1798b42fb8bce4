// The least that a process can do for a picture of a notification: loads the fonts, sets its texts,
// decodes its icon, and its picture in eighths of its size, draws all of it and writes a PNG. The
// baseline of what `expand --png` takes from its start.
//
// usage: bare_picture PNG WIDTH HEIGHT SCALE TITLE BODY TIMER ICON JPEG
//
// The sizes are in points. The icon, a PNG, goes beside the texts, the timer's text on a red panel,
// the picture below them, as wide as the canvas.

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

// Does not include what it needs itself.
#include <jpeglib.h>

namespace {

constexpr double kMargin = 16;
constexpr double kIcon = 40;
constexpr double kLeft = kMargin + kIcon + 12;
constexpr double kTextSize = 15;

// The faces that are needed, and the font for emoji, from the caches of the package manager.
constexpr const char* kConfiguration = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
<dir>/usr/share/fonts/opentype/inter</dir>
<dir>/usr/share/fonts/truetype/noto</dir>
<cachedir>/var/cache/fontconfig</cachedir>
<selectfont>
<rejectfont><glob>*</glob></rejectfont>
<acceptfont>
<glob>*/Inter-Regular.otf</glob><glob>*/Inter-Bold.otf</glob><glob>*/NotoColorEmoji.ttf</glob>
</acceptfont>
</selectfont>
</fontconfig>)";

void check(bool isGood) {
    if (!isGood) std::_Exit(EXIT_FAILURE);
}

PangoContext* fonts() {
    FcConfig* config = FcConfigCreate();
    check(FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(kConfiguration),
                                         FcTrue) == FcTrue);
    check(FcConfigBuildFonts(config) == FcTrue);
    FcConfigSetCurrent(config);
    PangoFontMap* map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map), config);
    PangoContext* context = pango_font_map_create_context(map);
    pango_context_set_round_glyph_positions(context, FALSE);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    return context;
}

PangoLayout* layoutOf(PangoContext* context, const char* text, PangoWeight weight, double width) {
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, "Inter");
    pango_font_description_set_absolute_size(font, kTextSize * PANGO_SCALE);
    pango_font_description_set_weight(font, weight);
    pango_layout_set_font_description(layout, font);
    pango_layout_set_width(layout, static_cast<int>(width * PANGO_SCALE));
    pango_layout_set_text(layout, text, -1);
    return layout;
}

// How high the text is.
double drawText(cairo_t* cairo, PangoContext* context, const char* text, PangoWeight weight,
                double y, double width) {
    PangoLayout* layout = layoutOf(context, text, weight, width);
    int height = 0;
    pango_layout_get_size(layout, nullptr, &height);
    cairo_move_to(cairo, kLeft, y);
    pango_cairo_show_layout(cairo, layout);
    return static_cast<double>(height) / PANGO_SCALE;
}

void trace(cairo_t* cairo, double x, double y, double width, double height, double radius) {
    constexpr double kQuarter = 1.5707963267948966;
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, x + width - radius, y + radius, radius, -kQuarter, 0);
    cairo_arc(cairo, x + width - radius, y + height - radius, radius, 0, kQuarter);
    cairo_arc(cairo, x + radius, y + height - radius, radius, kQuarter, 2 * kQuarter);
    cairo_arc(cairo, x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cairo);
}

double drawTimer(cairo_t* cairo, PangoContext* context, const char* text, double y, double width) {
    PangoLayout* layout = layoutOf(context, text, PANGO_WEIGHT_BOLD, width);
    int textWidth = 0;
    int textHeight = 0;
    pango_layout_get_size(layout, &textWidth, &textHeight);
    const double panelHeight = static_cast<double>(textHeight) / PANGO_SCALE + 12;
    trace(cairo, kLeft, y, static_cast<double>(textWidth) / PANGO_SCALE + 24, panelHeight, 8);
    cairo_set_source_rgb(cairo, 0.78, 0.16, 0.16);
    cairo_fill(cairo);
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_move_to(cairo, kLeft + 12, y + 6);
    pango_cairo_show_layout(cairo, layout);
    return panelHeight;
}

void drawIcon(cairo_t* cairo, const char* path) {
    cairo_surface_t* icon = cairo_image_surface_create_from_png(path);
    check(cairo_surface_status(icon) == CAIRO_STATUS_SUCCESS);
    cairo_save(cairo);
    trace(cairo, kMargin, kMargin, kIcon, kIcon, 8);
    cairo_clip(cairo);
    cairo_translate(cairo, kMargin, kMargin);
    const double scale = kIcon / cairo_image_surface_get_width(icon);
    cairo_scale(cairo, scale, scale);
    cairo_set_source_surface(cairo, icon, 0, 0);
    cairo_paint(cairo);
    cairo_restore(cairo);
}

void drawPicture(cairo_t* cairo, const char* path, double y, double width, double scale) {
    std::FILE* file = std::fopen(path, "rb");
    check(file != nullptr);
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    info.scale_denom = 8;
    info.scale_num =
        static_cast<unsigned>(std::clamp(width * scale * 8 / info.image_width + 0.999, 1.0, 8.0));
    info.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&info);
    cairo_surface_t* picture =
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(info.output_width),
                                   static_cast<int>(info.output_height));
    unsigned char* pixels = cairo_image_surface_get_data(picture);
    const auto stride = static_cast<unsigned>(cairo_image_surface_get_stride(picture));
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = pixels + std::size_t{info.output_scanline} * stride;
        jpeg_read_scanlines(&info, &row, 1);
    }
    cairo_surface_mark_dirty(picture);
    cairo_translate(cairo, 0, y);
    cairo_scale(cairo, width / info.output_width, width / info.output_width);
    cairo_set_source_surface(cairo, picture, 0, 0);
    cairo_paint(cairo);
}

void writePNG(cairo_surface_t* surface, const char* path) {
    std::FILE* file = std::fopen(path, "wb");
    check(file != nullptr);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_compression_level(png, 1);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    const auto width = static_cast<png_uint_32>(cairo_image_surface_get_width(surface));
    const auto height = static_cast<png_uint_32>(cairo_image_surface_get_height(surface));
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_bgr(png);
    png_write_info(png, info);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    unsigned char* pixels = cairo_image_surface_get_data(surface);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
    for (png_uint_32 y = 0; y < height; ++y)
        png_write_row(png, pixels + y * stride);
    png_write_end(png, nullptr);
    check(std::fclose(file) == 0);
}

}  // namespace

int main(int argc, char** argv) {
    check(argc == 10);
    const double width = std::atof(argv[2]);
    const double height = std::atof(argv[3]);
    const double scale = std::atof(argv[4]);
    cairo_surface_t* surface = cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, static_cast<int>(width * scale), static_cast<int>(height * scale));
    cairo_t* cairo = cairo_create(surface);
    cairo_scale(cairo, scale, scale);
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_paint(cairo);
    cairo_set_source_rgb(cairo, 0, 0, 0);
    PangoContext* context = fonts();
    const double room = width - kMargin - kLeft;
    drawIcon(cairo, argv[8]);
    double y = kMargin;
    y += drawText(cairo, context, argv[5], PANGO_WEIGHT_BOLD, y, room) + 4;
    y += drawText(cairo, context, argv[6], PANGO_WEIGHT_NORMAL, y, room) + 8;
    y += drawTimer(cairo, context, argv[7], y, room);
    drawPicture(cairo, argv[9], y + kMargin, width, scale);
    cairo_surface_flush(surface);
    writePNG(surface, argv[1]);
    std::_Exit(EXIT_SUCCESS);
}
