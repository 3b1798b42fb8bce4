#include "adapters/pango/fonts.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <string>

#include "adapters/pango/handles.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::adapters::pango {

namespace {

constexpr const char* kInterFolder = "/usr/share/fonts/opentype/inter";
constexpr const char* kNotoFolder = "/usr/share/fonts/truetype/noto";
constexpr const char* kHanFolder = "/usr/share/fonts/opentype/noto";
constexpr const char* kMonoFolder = "/usr/share/fonts/truetype/dejavu";

struct File {
    const char* folder;
    const char* name;
};
constexpr File kCommonFiles[] = {
    {kInterFolder, "Inter-Regular.otf"},     {kInterFolder, "Inter-Bold.otf"},
    {kInterFolder, "Inter-Italic.otf"},      {kInterFolder, "Inter-BoldItalic.otf"},
    {kNotoFolder, "NotoColorEmoji.ttf"},     {kMonoFolder, "DejaVuSansMono.ttf"},
    {kMonoFolder, "DejaVuSansMono-Bold.ttf"}};

// One design for each script: the plain sans, and a serif where there is nothing else.
constexpr const char* kScriptFiles[] = {
    "NotoSans-*Italic.ttf",  "NotoSans*-Regular.ttf",
    "NotoSans*-Bold.ttf",    "NotoSerifTibetan-*.ttf",
    "NotoSerifAhom-*.ttf",   "NotoSerifDogra-*.ttf",
    "NotoSerifTangut-*.ttf", "NotoSerifYezidi-*.ttf",
    "NotoMusic-Regular.ttf", "NotoSerifNyiakengPuachueHmong-*.ttf"};
constexpr const char* kOtherDesigns[] = {"Noto Sans Display", "Noto Sans Mono",
                                         "Noto Sans Adlam Unjoined"};

// The monospaced font steps back where there is another one for a script. Colour emoji come as
// pictures of one size, which are scaled; a face that a family lacks is made from its upright or
// regular one.
constexpr const char* kRules = R"(
<alias binding="same"><family>emoji</family><prefer><family>Noto Color Emoji</family></prefer></alias>
<alias binding="same"><family>Inter</family><accept><family>Noto Sans</family></accept></alias>
<match target="pattern">
  <test name="family"><string>Inter</string></test>
  <edit name="spacing" mode="assign"><const>proportional</const></edit>
</match>
<match target="font">
  <test name="outline"><bool>false</bool></test>
  <edit name="pixelsizefixupfactor" mode="assign">
    <divide><name target="pattern">pixelsize</name><name target="font">pixelsize</name></divide>
  </edit>
</match>
<match target="font">
  <test name="outline"><bool>false</bool></test>
  <test name="scalable"><bool>true</bool></test>
  <edit name="matrix" mode="assign"><times><name>matrix</name>
    <matrix><name>pixelsizefixupfactor</name><double>0</double>
      <double>0</double><name>pixelsizefixupfactor</name></matrix></times></edit>
  <edit name="size" mode="assign">
    <divide><name>size</name><name>pixelsizefixupfactor</name></divide></edit>
</match>
<match target="font">
  <test name="outline"><bool>true</bool></test>
  <test name="slant"><const>roman</const></test>
  <test target="pattern" name="slant" compare="not_eq"><const>roman</const></test>
  <edit name="matrix" mode="assign"><times><name>matrix</name>
    <matrix><double>1</double><double>0.2</double><double>0</double><double>1</double></matrix>
  </times></edit>
  <edit name="slant" mode="assign"><const>oblique</const></edit>
</match>
<match target="font">
  <test name="outline"><bool>true</bool></test>
  <test name="weight" compare="less_eq"><const>medium</const></test>
  <test target="pattern" name="weight" compare="more_eq"><const>bold</const></test>
  <edit name="embolden" mode="assign"><bool>true</bool></edit>
  <edit name="weight" mode="assign"><const>bold</const></edit>
</match>
)";

const FcChar8* bytes(const std::string& text) {
    return reinterpret_cast<const FcChar8*>(text.c_str());
}

std::string pathOf(const File& file) {
    return std::string(file.folder) + "/" + file.name;
}

std::string element(const char* name, const std::string& content) {
    return std::string("<") + name + ">" + content + "</" + name + ">";
}

// The caches are what the system's package manager made, or else what this made before.
constexpr const char* kCaches =
    "<cachedir>/var/cache/fontconfig</cachedir><cachedir prefix=\"xdg\">fontconfig</cachedir>";

// A configuration in which only the named files of the folders count.
std::string configuration(const std::vector<std::string>& folders,
                          const std::vector<std::string>& globs) {
    std::string text =
        "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig>";
    text += kCaches;
    std::string accepted;
    std::string rejected = element("glob", "*");
    for (const std::string& folder : folders)
        text += element("dir", folder);
    for (const std::string& glob : globs)
        accepted += element("glob", glob);
    for (const char* family : kOtherDesigns) {
        rejected +=
            "<pattern><patelt name=\"family\">" + element("string", family) + "</patelt></pattern>";
    }
    text +=
        element("selectfont", element("rejectfont", rejected) + element("acceptfont", accepted));
    return text + kRules + "</fontconfig>";
}

ConfigHandle parsed(const std::string& text) {
    ConfigHandle config(FcConfigCreate());
    FcConfigParseAndLoadFromMemory(config.get(), bytes(text), FcTrue);
    return config;
}

// The caches of folders. As long as they are held, whoever wants them gets the same ones.
class Caches {
public:
    Caches() = default;
    ~Caches() {
        for (FcCache* cache : held_)
            FcDirCacheUnload(cache);
    }
    Caches(const Caches&) = delete;
    Caches& operator=(const Caches&) = delete;

    bool describe(const char* folder, FcConfig* config) {
        FcCache* cache = FcDirCacheLoad(bytes(folder), config, nullptr);
        if (cache != nullptr) held_.push_back(cache);
        return cache != nullptr;
    }

private:
    std::vector<FcCache*> held_;
};

// Of the common files, those in these folders.
ConfigHandle commonFilesIn(const std::vector<std::string>& folders) {
    std::vector<std::string> globs;
    for (const File& file : kCommonFiles) {
        if (std::ranges::find(folders, file.folder) != folders.end()) globs.push_back(pathOf(file));
    }
    return parsed(configuration(folders, globs));
}

// Looking through a folder of 300 fonts takes half a second when no cache describes it, so of such
// a folder only the files themselves are read (10 ms).
ConfigHandle commonConfiguration() {
    const std::vector<std::string> folders = {kInterFolder, kNotoFolder, kMonoFolder};
    std::vector<std::string> described;
    ConfigHandle config = commonFilesIn(folders);
    Caches caches;
    std::ranges::copy_if(folders, std::back_inserter(described), [&](const std::string& folder) {
        return caches.describe(folder.c_str(), config.get());
    });
    if (described != folders) config = commonFilesIn(described);
    FcConfigBuildFonts(config.get());
    for (const File& file : kCommonFiles) {
        const bool isDescribed = std::ranges::find(described, file.folder) != described.end();
        if (!isDescribed) FcConfigAppFontAddFile(config.get(), bytes(pathOf(file)));
    }
    return config;
}

ConfigHandle wholeConfiguration() {
    std::vector<std::string> globs;
    for (const File& file : kCommonFiles)
        globs.push_back(pathOf(file));
    for (const char* name : kScriptFiles)
        globs.push_back(std::string(kNotoFolder) + "/" + name);
    for (const char* name : {"NotoSansCJK-Regular.ttc", "NotoSansCJK-Bold.ttc"})
        globs.push_back(std::string(kHanFolder) + "/" + name);
    ConfigHandle config =
        parsed(configuration({kInterFolder, kNotoFolder, kHanFolder, kMonoFolder}, globs));
    FcConfigBuildFonts(config.get());
    return config;
}

std::vector<FcPattern*> patternsIn(FcConfig* config, std::string_view family) {
    std::vector<FcPattern*> found;
    for (const FcSetName name : {FcSetSystem, FcSetApplication}) {
        const FcFontSet* set = FcConfigGetFonts(config, name);
        for (int i = 0; set != nullptr && i < set->nfont; ++i) {
            FcChar8* its = nullptr;
            if (FcPatternGetString(set->fonts[i], FC_FAMILY, 0, &its) == FcResultMatch &&
                (family.empty() || family == reinterpret_cast<const char*>(its)))
                found.push_back(set->fonts[i]);
        }
    }
    return found;
}

const FcCharSet* charactersOf(FcPattern* pattern) {
    FcCharSet* set = nullptr;
    return FcPatternGetCharSet(pattern, FC_CHARSET, 0, &set) == FcResultMatch ? set : nullptr;
}

// Joins and directs others and shows nothing itself: any font will do.
bool isInvisible(gunichar character) {
    return character == 0xAD || (character >= 0x200B && character <= 0x200F) ||
           (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2060 && character <= 0x206F) ||
           (character >= 0xFE00 && character <= 0xFE0F) ||
           (character >= 0xE0000 && character <= 0xE0FFF);
}

}  // namespace

// Fonts, and the context that sets text in them.
class Fonts::Set {
public:
    explicit Set(ConfigHandle config) : config_(std::move(config)) {
        for (const char* family : {kFamily, kEmojiFamily}) {
            for (FcPattern* pattern : patternsIn(config_.get(), family)) {
                if (const FcCharSet* set = pango::charactersOf(pattern)) covered_.push_back(set);
                break;  // the faces of a family have the same characters
            }
        }
    }

    FcConfig* config() const { return config_.get(); }
    bool isEmpty() const { return patternsIn(config(), {}).empty(); }

    PangoContext* context() {
        if (!context_) makeContext();
        return context_.get();
    }

    bool covers(std::string_view text) const {
        const char* const end = text.data() + text.size();
        for (const char* at = text.data(); at < end; at = g_utf8_next_char(at)) {
            if (static_cast<unsigned char>(*at) < 0x80) continue;
            const gunichar character = g_utf8_get_char(at);
            const auto has = [&](const FcCharSet* set) { return FcCharSetHasChar(set, character); };
            if (!isInvisible(character) && std::ranges::none_of(covered_, has)) return false;
        }
        return true;
    }

private:
    void makeContext() {
        map_.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
        pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map_.get()), config());
        context_.reset(pango_font_map_create_context(map_.get()));
        // The same advances at every scale, and no dependence on a screen.
        pango_context_set_round_glyph_positions(context_.get(), FALSE);
        const FontOptionsHandle options(cairo_font_options_create());
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        pango_cairo_context_set_font_options(context_.get(), options.get());
        pango_cairo_context_set_resolution(context_.get(), 72);
        pango_context_set_language(context_.get(), pango_language_from_string("en"));
        pango_context_set_base_dir(context_.get(), PANGO_DIRECTION_LTR);
    }

    ConfigHandle config_;
    std::vector<const FcCharSet*> covered_;  // the config's
    ObjectHandle<PangoFontMap> map_;
    ObjectHandle<PangoContext> context_;
};

Fonts::Fonts() {
    // The languages of the user would choose among the fonts of a script.
    ::setenv("PANGO_LANGUAGE", "en", 1);
    common_ = std::make_unique<Set>(commonConfiguration());
    if (patternsIn(common_->config(), kFamily).empty())
        common_ = std::make_unique<Set>(ConfigHandle(FcInitLoadConfigAndFonts()));
    if (common_->isEmpty()) foundation::Exception::raise("FontException", "No fonts are installed");
    // Before the first font map, which would load the system's configuration otherwise.
    FcConfigSetCurrent(common_->config());
}

Fonts::~Fonts() = default;

Fonts::Set& Fonts::all() {
    if (!all_) all_ = std::make_unique<Set>(wholeConfiguration());
    return *all_;
}

PangoContext* Fonts::contextFor(std::string_view text) {
    return common_->covers(text) || all().isEmpty() ? common_->context() : all().context();
}

std::vector<std::pair<char32_t, char32_t>> Fonts::charactersOf(std::string_view family) {
    std::vector<FcPattern*> patterns = patternsIn(common_->config(), family);
    if (patterns.empty()) patterns = patternsIn(all().config(), family);
    const FcCharSet* set = patterns.empty() ? nullptr : pango::charactersOf(patterns.front());
    if (set == nullptr) return {};
    std::vector<std::pair<char32_t, char32_t>> ranges;
    std::array<FcChar32, FC_CHARSET_MAP_SIZE> page{};
    FcChar32 next = 0;
    for (FcChar32 base = FcCharSetFirstPage(set, page.data(), &next); base != FC_CHARSET_DONE;
         base = FcCharSetNextPage(set, page.data(), &next)) {
        for (FcChar32 i = 0; i < page.size() * 32; ++i) {
            if ((page[i / 32] >> (i % 32) & 1U) == 0) continue;
            const char32_t character = base + i;
            if (!ranges.empty() && ranges.back().second + 1 == character) {
                ranges.back().second = character;
            } else {
                ranges.emplace_back(character, character);
            }
        }
    }
    return ranges;
}

}  // namespace tavrolin::adapters::pango
