#include "device/content_extension/content_extension_process.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adapters/html/html_importer.h"
#include "adapters/language/language_recognizer.h"
#include "adapters/pango/typesetter.h"
#include "adapters/player/media_players.h"
#include "device/app_ports.h"
#include "device/content_extension/card.h"
#include "device/content_extension/expanded_view.h"
#include "device/content_extension/pictures.h"
#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/device_error.h"
#include "device/process_life.h"
#include "device/process_messages.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/platform/bundle.h"

namespace tavrolin::device {

using adapters::asio::AsioDispatch;
using foundation::Value;

namespace {

// What only a process that draws has. It lives as long as the process.
struct DrawingAdapters {
    explicit DrawingAdapters(AsioDispatch& dispatch) : players(dispatch) {}

    platform::DrawingPorts ports() { return {&importer, &recognizer, &players, &typesetter}; }

    adapters::html::HTMLImporter importer;
    adapters::language::LanguageRecognizer recognizer;
    adapters::player::MediaPlayers players;
    adapters::pango::Typesetter typesetter;
};

ExpandedView::Surroundings surroundingsOf(const Value& message) {
    ui::TraitCollection traits;
    traits.userInterfaceStyle = message[kMessageDark].boolValue() ? ui::UserInterfaceStyle::dark
                                                                  : ui::UserInterfaceStyle::light;
    traits.displayScale = message[kMessageScale].doubleValue();
    return {message[kMessageWidth].doubleValue(), traits};
}

void draw(ExpandedView& view, const Value& message,
          const platform::DeliveredNotification& notification) {
    const Value& png = message[kMessagePNG];
    const Value& svg = message[kMessageSVG];
    const Value& cardPNG = message[kMessageCardPNG];
    const bool wantsCard = message[kMessageCard].boolValue();
    const ui::TraitCollection traits = surroundingsOf(message).traits;
    std::optional<Card> card;
    if (cardPNG || (wantsCard && (png || svg))) {
        card.emplace(view.window(),
                     Card::Contents{notification.request.content, notification.date,
                                    platform::current().dispatch->now(), view.actions()},
                     platform::current().bundles->main(), traits);
    }
    ui::Window& window = wantsCard && card ? card->window() : view.window();
    if (png) drawPNG(window, traits.displayScale, std::string(png.string()));
    if (svg) drawSVG(window, traits.displayScale, std::string(svg.string()));
    if (cardPNG) drawPNG(card->window(), traits.displayScale, std::string(cardPNG.string()));
}

Value expand(ExpandedView& view, const Value& message,
             const platform::DeliveredNotification& notification) {
    view.show(surroundingsOf(message));
    for (const Value& step : message[kMessageSteps].items())
        view.take(step);
    const Value shown = view.description(message[kMessageWantsTree].boolValue());
    draw(view, message, notification);
    view.awaitResponses();
    return view.completed(shown);
}

void serve(Channel& channel, const Value& message) {
    ProcessLife life(channel, message, "content-extension");
    ProcessPlatform& platform = life.platform();
    AsioDispatch& dispatch = life.dispatch();
    const platform::DeliveredNotification notification{
        {std::string(message[kMessageIdentifier].string()), contentOf(message[kMessageContent])},
        message[kMessageDelivered].date()};

    ExtensionRequests requests;
    SystemNotificationCenter system = platform.makeNotificationCenter({});
    ExpandedNotificationCenter center(
        system, platform.systemState(), notification.request.identifier, requests, [&] {
            channel.send(Value::dictionary(
                {{kMessageRemoved, Value::array({notification.request.identifier})}}));
        });
    Calls calls(platform.systemState(), dispatch, platform.json());
    SystemPasteboard pasteboard(calls);
    DrawingAdapters drawing(dispatch);
    platform.install({.center = center, .pasteboard = &pasteboard, .drawing = drawing.ports()},
                     life.logLevel());
    CVNPushCorvalenHandler::sharedInstance().setCorvalenAdapter(
        std::make_shared<CoreSDK>(platform.systemState(), dispatch, platform.json()));

    ExpandedView view(dispatch, notification, actionsOf(message[kMessageActions]), requests);
    try {
        const Value shown = expand(view, message, notification);
        channel.send(Value::dictionary({{kMessageExpanded, shown}, {kMessageStory, view.story()}}));
    } catch (const DeviceError& error) {
        channel.send(Value::dictionary({{kMessageFailure, error.what()}}));
    }
    life.end();
}

}  // namespace

int runContentExtensionProcess(int channelDescriptor) {
    return serveProcess(channelDescriptor, "content extension", serve);
}

}  // namespace tavrolin::device
