#include "adapters/player/film.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string_view>
#include <thread>
#include <utility>

#include "adapters/player/gst_library.h"

namespace tavrolin::adapters::player {

namespace {

using foundation::Error;
using platform::Size;

constexpr int kLargestSide = 8192;
constexpr std::int64_t kLargestPixels = 40'000'000;
constexpr double kLongest = 1e9;  // seconds; more is no duration
// GStreamer loses an error that comes just while it takes a part in, and then says nothing: a file
// is opened anew before it is given up.
constexpr GstClockTime kTimesToOpen[] = {GST_SECOND / 2, GST_SECOND, 4 * GST_SECOND};
constexpr GstClockTime kTimeForFrame = 3 * GST_SECOND;

// Pictures that are too large are refused where they are agreed upon, before there is memory for
// them. Until somebody asks for a size, they are small.
constexpr const char* kPictures =
    "capsfilter caps=video/x-raw,width=(int)[1,8192],height=(int)[1,8192] ! "
    "videoflip name=upright method=automatic ! videoscale ! videoconvert ! "
    "capsfilter name=size caps=video/x-raw,format=RGBA,width=(int)[1,64],height=(int)[1,64] ! "
    "appsink name=pictures sync=false max-buffers=1 enable-last-sample=false";

// The queue lets GStreamer read on for four seconds: of a sound file that doesn't say how long it
// is, that is what an estimate is made from.
constexpr const char* kSound =
    "queue max-size-time=4000000000 max-size-buffers=0 max-size-bytes=4194304 ! fakesink";

Error failure(std::string description) {
    return {"MediaPlayer", 1, std::move(description)};
}

bool isRegularFile(const std::string& path) {
    struct stat status = {};
    return path.find('\0') == std::string::npos && ::stat(path.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode) && status.st_size > 0;
}

}  // namespace

struct Film::Pipeline {
    explicit Pipeline(const GstLibrary& library) : gst(library) {}
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    ~Pipeline() {
        if (bus != nullptr) gst.objectUnref(bus);
        if (pictures != nullptr) gst.objectUnref(pictures);
        if (size != nullptr) gst.objectUnref(size);
        if (upright != nullptr) gst.objectUnref(upright);
        if (element == nullptr) return;
        gst.setState(element, GST_STATE_NULL);
        gst.objectUnref(element);
    }

    bool build(const std::string& path) {
        element = gst.pipelineNew(nullptr);
        GstElement* source = gst.elementMake("filesrc", nullptr);
        GstElement* decoder = gst.elementMake("decodebin", nullptr);
        if (element == nullptr || source == nullptr || decoder == nullptr) return false;
        gst.objectSet(source, "location", path.c_str(), nullptr);
        connect(decoder, "autoplug-continue", reinterpret_cast<GCallback>(&mayGoOn));
        connect(decoder, "autoplug-select", reinterpret_cast<GCallback>(&choose));
        connect(decoder, "pad-added", reinterpret_cast<GCallback>(&padAdded));
        gst.binAdd(bin(), source);
        gst.binAdd(bin(), decoder);
        bus = gst.getBus(element);
        return gst.elementLink(source, decoder) != 0;
    }

    /// Waits until it stands still at its place. What went wrong, if anything.
    foundation::Failure settle(GstClockTime limit) {
        GstMessage* message = gst.popMessage(
            bus, limit, static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_ASYNC_DONE));
        if (message == nullptr) {
            isStuck = true;
            return failure("The file could not be read in time.");
        }
        foundation::Failure result;
        if (message->type == GST_MESSAGE_ERROR) {
            GError* error = nullptr;
            gst.parseError(message, &error, nullptr);
            result = failure(error != nullptr ? error->message : "The file can't be played.");
            if (error != nullptr) gst.errorFree(error);
        }
        gst.miniObjectUnref(&message->mini_object);
        return result;
    }

    /// The pictures' own size, upright, with square pixels; empty when there are none.
    Size ownSize() const {
        GstPad* pad = upright == nullptr ? nullptr : gst.getPad(upright, "src");
        GstCaps* caps = pad == nullptr ? nullptr : gst.padCurrentCaps(pad);
        Size result;
        if (caps != nullptr) {
            const GstStructure* structure = gst.capsStructure(caps, 0);
            int width = 0;
            int height = 0;
            int wide = 1;
            int high = 1;
            gst.structureInt(structure, "width", &width);
            gst.structureInt(structure, "height", &height);
            gst.structureFraction(structure, "pixel-aspect-ratio", &wide, &high);
            if (wide < 1 || high < 1) wide = high = 1;
            result = {static_cast<double>(width) * wide / high, static_cast<double>(height)};
            gst.miniObjectUnref(&caps->mini_object);
        }
        if (pad != nullptr) gst.objectUnref(pad);
        return result;
    }

    void setSize(int width, int height) const {
        const std::string text =
            "video/x-raw,format=RGBA,pixel-aspect-ratio=1/1,width=" + std::to_string(width) +
            ",height=" + std::to_string(height);
        GstCaps* caps = gst.capsFromString(text.c_str());
        gst.objectSet(size, "caps", caps, nullptr);
        gst.miniObjectUnref(&caps->mini_object);
    }

    platform::ImageRef pictureAt(double seconds) {
        const auto moment = static_cast<gint64>(seconds * 1e9);
        const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
        if (isStuck || gst.seek(element, GST_FORMAT_TIME, flags, moment) == 0) return nullptr;
        if (settle(kTimeForFrame)) return nullptr;
        GstSample* sample = gst.pullPreroll(reinterpret_cast<GstAppSink*>(pictures), 0);
        if (sample == nullptr) return nullptr;
        auto result = copied(*sample);
        gst.miniObjectUnref(reinterpret_cast<GstMiniObject*>(sample));
        return result;
    }

    const GstLibrary& gst;
    GstElement* element = nullptr;
    GstBus* bus = nullptr;
    GstElement* pictures = nullptr;
    GstElement* size = nullptr;
    GstElement* upright = nullptr;
    std::atomic<bool> hasSound = false;
    std::atomic<bool> hasPictures = false;
    std::atomic<bool> isTooLarge = false;
    std::atomic<bool> kindIsKnown = false;
    bool isStuck = false;

private:
    GstBin* bin() const { return reinterpret_cast<GstBin*>(element); }

    void connect(GstElement* object, const char* signal, GCallback callback) {
        gst.signalConnect(object, signal, callback, this, nullptr, GConnectFlags{});
    }

    std::string_view kindOf(const GstCaps* caps) const {
        return gst.structureName(gst.capsStructure(caps, 0));
    }

    platform::ImageRef copied(GstSample& sample) const {
        const GstCaps* caps = gst.sampleCaps(&sample);
        GstBuffer* buffer = gst.sampleBuffer(&sample);
        if (caps == nullptr || buffer == nullptr) return nullptr;
        int width = 0;
        int height = 0;
        gst.structureInt(gst.capsStructure(caps, 0), "width", &width);
        gst.structureInt(gst.capsStructure(caps, 0), "height", &height);
        const std::size_t bytes =
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
        if (bytes == 0 || gst.bufferSize(buffer) != bytes) return nullptr;  // rows have no padding
        auto image = std::make_shared<platform::Image>();
        image->width = static_cast<std::uint32_t>(width);
        image->height = static_cast<std::uint32_t>(height);
        image->pixels.resize(bytes);
        gst.bufferExtract(buffer, 0, image->pixels.data(), bytes);
        return image;
    }

    // --- Called on GStreamer's threads ---

    // Whether this stream is to be decoded further.
    static gboolean mayGoOn(GstElement*, GstPad*, GstCaps* caps, Pipeline* self) {
        // A file that is a picture is no film, though a film's pictures may be of the same kind.
        const bool isFirst = !self->kindIsKnown.exchange(true);
        if (isFirst && self->kindOf(caps).starts_with("image/")) return FALSE;
        int width = 0;
        int height = 0;
        const GstStructure* structure = self->gst.capsStructure(caps, 0);
        self->gst.structureInt(structure, "width", &width);
        self->gst.structureInt(structure, "height", &height);
        if (width > kLargestSide || height > kLargestSide ||
            std::int64_t{width} * height > kLargestPixels) {
            self->isTooLarge = true;
            return FALSE;
        }
        return TRUE;
    }

    // Nothing that reads other files or the network, and no device of which the machine may have
    // none: the same file is to give the same pictures.
    static int choose(GstElement*, GstPad*, GstCaps*, GstElementFactory* factory, Pipeline* self) {
        constexpr int kTry = 0;  // GstAutoplugSelectResult, which no header has
        constexpr int kSkip = 2;
        const char* klass = self->gst.factoryMetadata(factory, "klass");
        for (const char* word : {"Adaptive", "Network", "Hardware", "Source"}) {
            if (klass == nullptr || std::strstr(klass, word) != nullptr) return kSkip;
        }
        return kTry;
    }

    static void padAdded(GstElement*, GstPad* pad, Pipeline* self) {
        GstCaps* caps = self->gst.padCurrentCaps(pad);
        if (caps == nullptr) return;
        const std::string_view kind = self->kindOf(caps);
        if (kind == "audio/x-raw" && !self->hasSound.exchange(true))
            self->attach(pad, self->made(kSound));
        if (kind == "video/x-raw" && !self->hasPictures.exchange(true))
            self->attach(pad, self->makePictures());
        self->gst.miniObjectUnref(&caps->mini_object);
    }

    GstElement* made(const char* description) const {
        GError* error = nullptr;
        GstElement* result = gst.parseBin(description, TRUE, &error);
        if (error != nullptr) gst.errorFree(error);
        return result;
    }

    GstElement* makePictures() {
        GstElement* sink = made(kPictures);
        if (sink == nullptr) return nullptr;
        auto* all = reinterpret_cast<GstBin*>(sink);
        pictures = gst.binGetByName(all, "pictures");
        size = gst.binGetByName(all, "size");
        upright = gst.binGetByName(all, "upright");
        return sink;
    }

    void attach(GstPad* pad, GstElement* sink) {
        if (sink == nullptr) return;
        gst.binAdd(bin(), sink);
        GstPad* entry = gst.getPad(sink, "sink");
        gst.padLink(pad, entry);
        gst.objectUnref(entry);
        gst.syncState(sink);
    }
};

Film::Film(std::unique_ptr<Pipeline> pipeline) : pipeline_(std::move(pipeline)) {}

Film::~Film() {
    // Ending waits for what is under way; what didn't answer in time may take its own.
    if (pipeline_->isStuck) std::thread([stuck = std::move(pipeline_)] {}).detach();
}

foundation::Expected<std::unique_ptr<Film>> Film::open(const std::string& path) {
    if (!isRegularFile(path)) return failure("There is no such file, or nothing in it.");
    const auto library = GstLibrary::load();
    if (!library) return library.error();
    std::unique_ptr<Film> film;
    foundation::Failure problem;
    for (const GstClockTime time : kTimesToOpen) {
        film.reset(new Film(std::make_unique<Pipeline>(**library)));
        Pipeline& pipeline = *film->pipeline_;
        if (!pipeline.build(path)) return failure("A part of GStreamer is missing.");
        pipeline.gst.setState(pipeline.element, GST_STATE_PAUSED);  // a failure is on the bus
        problem = pipeline.settle(time);
        if (!pipeline.isStuck) break;
    }
    const Pipeline& pipeline = *film->pipeline_;
    if (pipeline.isTooLarge) return failure("The pictures are too large.");
    if (problem) return *problem;
    if (!pipeline.hasSound && !pipeline.hasPictures)
        return failure("There is neither sound nor picture in it.");
    film->duration_ = film->queriedDuration();
    return film;
}

double Film::duration() const {
    return duration_;
}

double Film::queriedDuration() const {
    // Of a file that doesn't say, GStreamer makes an estimate when it has read on for a moment.
    constexpr auto kPatience = std::chrono::milliseconds(300);
    const auto& gst = pipeline_->gst;
    const auto begin = std::chrono::steady_clock::now();
    gint64 nanoseconds = -1;
    while (gst.queryDuration(pipeline_->element, GST_FORMAT_TIME, &nanoseconds) == 0) {
        if (std::chrono::steady_clock::now() - begin > kPatience) return std::nan("");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    const double seconds = static_cast<double>(nanoseconds) / 1e9;
    return seconds >= 0 && seconds <= kLongest ? seconds : std::nan("");
}

platform::ImageRef Film::frame(double seconds, Size maximum) {
    if (seconds == lastMoment_ && maximum == lastMaximum_) return lastFrame_;
    const Size own = pipeline_->ownSize();
    if (own.width < 1 || own.height < 1 || !(maximum.width >= 1) || !(maximum.height >= 1))
        return nullptr;
    const double scale = std::min({1.0, maximum.width / own.width, maximum.height / own.height});
    const auto pixels = [scale](double length) {
        return std::clamp(static_cast<int>(length * scale + 1e-6), 1, kLargestSide);
    };
    pipeline_->setSize(pixels(own.width), pixels(own.height));
    platform::ImageRef found;
    // At its end there is no picture any more: the one before it stays.
    for (const double back : {0.0, 0.05, 0.25, 1.0}) {
        if (back > 0 && seconds <= 0) break;
        found = pipeline_->pictureAt(std::max(0.0, seconds - back));
        if (found) break;
    }
    lastMoment_ = seconds;
    lastMaximum_ = maximum;
    lastFrame_ = found;
    return found;
}

}  // namespace tavrolin::adapters::player
