#include "tavrolin/service_extension/notification_operation.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/image_decoder.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/platform/wait_group.h"
#include "tavrolin/service_extension/notification_media_downloader.h"
#include "tavrolin/service_extension/push_file_utility.h"

namespace tavrolin {

using foundation::Value;
using platform::Attachment;
using platform::NotificationContent;
using platform::QueuePriority;

namespace {

constexpr double kSimpleNotificationDelay = 3;  // seconds

platform::Dispatch& dispatch() {
    return *platform::current().dispatch;
}

// Copies the attachment into the shared folder, where it outlives the notification's own file.
Value savedPath(const Attachment& attachment) {
    return CVNPushFileUtility::saveAttachment(attachment).path();
}

// Downloads within the group, on the global high-priority queue.
template <class Done>
void download(const std::shared_ptr<platform::WaitGroup>& group, Value url, Done done) {
    group->enter();
    dispatch().asyncGlobal(QueuePriority::high,
                           [group, url = std::move(url), done = std::move(done)] {
                               CVNNotificationMediaDownloader::downloadAndSaveMediaFromURLString(
                                   url, [group, done](const std::optional<Attachment>& attachment) {
                                       if (attachment) done(*attachment);
                                       group->leave();
                                   });
                           });
}

Value orEmpty(const Value& text) {
    return text.isNil() ? Value("") : text;
}

// The first that is there, as the system takes it: what is no text shows nothing.
Value firstPresent(const Value& first, const Value& second) {
    const Value& text = first.isNil() ? second : first;
    return text.isString() ? text : Value();
}

}  // namespace

CVNNotificationOperation::CVNNotificationOperation(Content content, Payload payload,
                                                   CompletionBlock completion,
                                                   std::string_view name)
    : notificationCompletionBlock_(std::move(completion)),
      notificationPayload_(std::move(payload)),
      bestAttemptContent_(std::move(content)) {
    setName(std::string(name));
}

std::shared_ptr<CVNNotificationOperation> CVNNotificationOperation::initWithAPNSContent(
    Content content, Payload payLoad, CompletionBlock andCompletion) {
    return std::shared_ptr<CVNNotificationOperation>(new CVNNotificationOperation(
        std::move(content), std::move(payLoad), std::move(andCompletion), kAPNSOperationName));
}

std::shared_ptr<CVNNotificationOperation>
CVNNotificationOperation::initWithLocalNotificaitonPayload(Payload payload,
                                                           CompletionBlock andCompletion) {
    auto content = std::make_shared<platform::MutableNotificationContent>(
        getNotificationContentWithPayload(payload));
    return std::shared_ptr<CVNNotificationOperation>(new CVNNotificationOperation(
        std::move(content), std::move(payload), std::move(andCompletion), kLocalOperationName));
}

NotificationContent CVNNotificationOperation::getNotificationContentWithPayload(
    const Payload& payload) {
    static const CVNAps kNoAps;
    static const CVNAlert kNoAlert;
    static const CVNPayload kNoSection;
    const CVNAps& aps = payload->aps ? *payload->aps : kNoAps;
    const CVNAlert& alert = aps.alert ? *aps.alert : kNoAlert;
    const CVNPayload& section = payload->cvnPayload ? *payload->cvnPayload : kNoSection;
    NotificationContent content;
    content.title = firstPresent(alert.title, section.title);
    content.subtitle = firstPresent(alert.subtitle, section.subtitle);
    content.body = firstPresent(alert.body, section.body);
    content.categoryIdentifier = firstPresent(aps.category, section.category);
    content.sound = firstPresent(aps.sound, section.sound);
    if (payload->aps) payload->aps->category = content.categoryIdentifier;
    return content;
}

std::shared_ptr<CVNNotificationOperation> CVNNotificationOperation::self() {
    return std::static_pointer_cast<CVNNotificationOperation>(shared_from_this());
}

void CVNNotificationOperation::start() {
    if (isExecuting()) return;
    CVNPushOperation::start();
    const bool started = guard(
        "-[CVNNotificationOperation start]", "Could not request due to exception = %@",
        [&] {
            const auto& aps = notificationPayload_->aps;
            if (aps && aps->category == Value(kNotificationCategorySimpleNotification)) {
                handleSimpleNotification();
            } else {
                handleRichMediaNotificationWithRatingImages();
            }
        },
        LogLevel::debug);
    if (!started) contentComplete();
}

void CVNNotificationOperation::contentComplete() {
    if (notificationCompletionBlock_) {
        notificationCompletionBlock_(notificationPayload_, bestAttemptContent_);
    }
    finish();
}

void CVNNotificationOperation::setUserInfo(const Value& userInfo) {
    bestAttemptContent_->change([&](NotificationContent& content) { content.userInfo = userInfo; });
}

void CVNNotificationOperation::handleSimpleNotification() {
    dispatch().afterMain(kSimpleNotificationDelay, [operation = self()] {
        operation->setUserInfo(operation->notificationPayload_->toNSDictionary());
        operation->contentComplete();
    });
}

void CVNNotificationOperation::handleRichMediaNotificationWithRatingImages() {
    const auto rating = notificationPayload_->cvnUi ? notificationPayload_->cvnUi->cvnRat : nullptr;
    const auto group = platform::WaitGroup::make(dispatch());
    // Without a rating both downloads are tried all the same, of nothing.
    download(group, rating ? orEmpty(rating->selectedIconURL) : Value(""),
             [rating](const Attachment& icon) { rating->selectedIconURLPath = savedPath(icon); });
    download(group, rating ? orEmpty(rating->unselectedIconURL) : Value(""),
             [rating](const Attachment& icon) { rating->unselectedIconURLPath = savedPath(icon); });
    group->notify(QueuePriority::high, [operation = self()] {
        const auto& section = operation->notificationPayload_->cvnPayload;
        const Value type = section ? section->type : Value();
        if (type == Value(kCarouselPortraitType) || type == Value(kCarouselLandscapeType)) {
            operation->handleCarouselNotification();
        } else {
            operation->handleRichMediaNotification();
        }
    });
}

void CVNNotificationOperation::handleRichMediaNotification() {
    const auto& section = notificationPayload_->cvnPayload;
    CVNNotificationMediaDownloader::downloadAndSaveMediaFromURLString(
        section ? section->mediaURL : Value(),
        [operation = self(), section](const std::optional<Attachment>& attachment) {
            if (attachment) {
                operation->bestAttemptContent_->change(
                    [&](NotificationContent& content) { content.attachments = {*attachment}; });
                section->mediaURLPath = savedPath(*attachment);
            }
            operation->setUserInfo(operation->notificationPayload_->toNSDictionary());
            operation->contentComplete();
        });
}

void CVNNotificationOperation::handleCarouselNotification() {
    const auto items = notificationPayload_->cvnPayload->carousel.value_or(
        std::vector<foundation::Ref<CVNCarousel>>());
    // Downloads end in any order; each writes its own slot.
    const auto slots = std::make_shared<std::vector<std::optional<Attachment>>>(items.size());
    const auto group = platform::WaitGroup::make(dispatch());
    for (std::size_t i = 0; i < items.size(); ++i) {
        download(group, items[i]->imgUrl, [slots, i, item = items[i]](const Attachment& picture) {
            (*slots)[i] = picture;
            item->imgUrlPath = savedPath(picture);
        });
    }
    group->notify(QueuePriority::high, [operation = self(), slots] {
        std::vector<Attachment> attachments;
        for (const auto& slot : *slots) {
            if (slot) attachments.push_back(*slot);
        }
        if (!attachments.empty()) {
            operation->bestAttemptContent_->change([&](NotificationContent& content) {
                content.attachments = std::move(attachments);
            });
        }
        operation->setUserInfo(operation->getCarouselModifiedContent());
        operation->contentComplete();
    });
}

Value CVNNotificationOperation::getCarouselModifiedContent() {
    auto& section = *notificationPayload_->cvnPayload;
    std::vector<foundation::Ref<CVNCarousel>> shown;
    for (const auto& item :
         section.carousel.value_or(std::vector<foundation::Ref<CVNCarousel>>())) {
        if (isValidImage(item->imgUrlPath)) shown.push_back(item);
    }
    section.carousel = std::move(shown);
    return notificationPayload_->toNSDictionary();
}

bool CVNNotificationOperation::isValidImage(const Value& path) {
    constexpr std::string_view kOperation = "-[CVNNotificationOperation isValidImage:]";
    const auto unreadable = [&](std::string_view why) {
        log(LogLevel::debug, kOperation,
            formatMessage("Carousel image not downloaded due to error: %@", {why}));
        return false;
    };
    bool isValid = false;
    guard(
        kOperation, "Carousel image not downloaded due to exception: %@",
        [&] {
            if (path.isNil()) {
                foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                             "there is no path");
            }
            if (!platform::current().files->isReadableFile(path.string())) {
                unreadable("there is no such file that can be read");
            } else if (!CVNPushFileUtility::isInMediaFolder(path.string())) {
                unreadable("the file lies outside the media folder");
            } else {
                isValid = platform::current().imageDecoder->decodes(path.string());
            }
        },
        LogLevel::debug);
    return isValid;
}

}  // namespace tavrolin
