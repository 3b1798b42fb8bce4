#include "tavrolin/content_ui/view_classes.h"

#include <memory>

#include "tavrolin/content_ui/components/action_button_component.h"
#include "tavrolin/content_ui/components/audio_component.h"
#include "tavrolin/content_ui/components/gif_component.h"
#include "tavrolin/content_ui/components/header_component.h"
#include "tavrolin/content_ui/components/image_component.h"
#include "tavrolin/content_ui/components/landscape_carousel_component.h"
#include "tavrolin/content_ui/components/media_component.h"
#include "tavrolin/content_ui/components/multi_image_component.h"
#include "tavrolin/content_ui/components/portrait_carousel_component.h"
#include "tavrolin/content_ui/components/progress_component.h"
#include "tavrolin/content_ui/components/rating_component.h"
#include "tavrolin/content_ui/components/text_and_timer_component.h"
#include "tavrolin/content_ui/components/video_component.h"
#include "tavrolin/content_ui/layouts/carousel_layouts.h"
#include "tavrolin/content_ui/layouts/overlay_layout.h"
#include "tavrolin/content_ui/layouts/plain_layouts.h"
#include "tavrolin/content_ui/layouts/side_by_side_layout.h"
#include "tavrolin/foundation/class_registry.h"

namespace tavrolin {

namespace {

template <class... Views>
void registerAll() {
    using Registry = foundation::ClassRegistry<ui::View>;
    const auto add = []<class Made>(const std::shared_ptr<Made>& example) {
        if (Registry::isRegistered(example->className())) return;
        Registry::registerClass(example->className(), [] { return std::make_shared<Made>(); });
    };
    (add(std::make_shared<Views>()), ...);
}

}  // namespace

void registerViewClasses() {
    registerAll<CVNLayout01, CVNLayout21, CVNLayout23, CVNLayout24, CVNLayout41, CVNLayout51,
                CVNLayout61, CVNLayout71, CVNLayout72, CVNLayout91, CVNLayout92>();
    registerAll<CVNHeaderComponent, CVNTextAndTimerComponent, CVNProgressComponent,
                CVNRatingComponent, CVNMediaComponent, CVNImageComponent, CVNGifComponent,
                CVNAudioComponent, CVNVideoComponent, CVNPortraitCarouselComponent,
                CVNLandscapeCarouselComponent, CVNMultiImageComponent, CVNActionButtonComponent>();
}

}  // namespace tavrolin
