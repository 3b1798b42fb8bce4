#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "adapters/html/html_importer.h"
#include "adapters/memory/memory_platform.h"
#include "adapters/memory/recording_canvas.h"
#include "tavrolin/content_ui/color_utility.h"
#include "tavrolin/content_ui/emoji_utility.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/foundation/utf8.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/text_direction.h"

namespace {

using tavrolin::CVNColorUtility;
using tavrolin::CVNSharedUtility;
using tavrolin::adapters::memory::MemoryPlatform;
using tavrolin::adapters::memory::RecordingCanvas;
using tavrolin::foundation::Value;

constexpr double kWidth = 300;

MemoryPlatform& installed() {
    auto& memory = *new MemoryPlatform;
    auto ports = memory.platform();
    ports.drawing.htmlImporter = new tavrolin::adapters::html::HTMLImporter;
    tavrolin::platform::install(ports);
    return memory;
}

void require(bool condition) {
    if (!condition) std::abort();
}

void setLabel(const Value& html, const Value& plain) {
    tavrolin::ui::Label label;
    label.setNumberOfLines(2);
    CVNSharedUtility::sharedInstance().setLabel(label, html, plain, true);
    require(tavrolin::foundation::isValidUtf8(label.text()) ||
            !tavrolin::foundation::isValidUtf8(plain ? plain.string() : ""));
    label.setFrame({0, 0, kWidth, 40});
    RecordingCanvas canvas;
    label.draw(canvas);
    require(canvas.isBalanced());
}

}  // namespace

// What a campaign writes, on its way onto the screen.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static MemoryPlatform& memory = installed();
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    require(CVNColorUtility::colorFromHexString(text).has_value() == !text.empty());
    tavrolin::ui::directionOf(text);
    tavrolin::CVNEmojiUtility::containsEmoji(tavrolin::platform::StyledText::plain(text, {}));

    auto& utility = CVNSharedUtility::sharedInstance();
    require(utility.numberOfLinesForTextWithHTMLText(text, {}, false, kWidth) >= 0);
    require(utility.processedText(text, false, kWidth, true).string().starts_with(text));
    setLabel(text, {});
    setLabel({}, text);
    memory.logSink.clear();
    return 0;
}
