#include "adapters/curl/curl_url_session.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "adapters/curl/session_error.h"
#include "adapters/curl/temporary_file.h"
#include "adapters/curl/transfer.h"

namespace tavrolin::adapters::curl {

using foundation::Failure;
using platform::URLRequest;
using platform::URLResponse;

namespace {

constexpr long kConnectionsPerServer = 10;
constexpr long kConnections = 16;
constexpr auto kSilence = std::chrono::seconds(1);  // after which a transfer holds no clock
constexpr const char* kSystemCertificates = "/etc/ssl/certs";

class DataBody : public Body {
public:
    DataBody(platform::Dispatch& dispatch, platform::URLSession::DataCompletion completion)
        : dispatch_(dispatch), completion_(std::move(completion)) {}

    Failure append(std::string_view bytes) override {
        bytes_ += bytes;
        return std::nullopt;
    }
    void complete(std::optional<URLResponse> response, Failure error) override {
        dispatch_.asyncGlobal(platform::QueuePriority::normal,
                              [bytes = std::move(bytes_), completion = std::move(completion_),
                               response, error] { completion(bytes, response, error); });
    }

private:
    platform::Dispatch& dispatch_;
    platform::URLSession::DataCompletion completion_;
    std::string bytes_;
};

class FileBody : public Body {
public:
    FileBody(platform::Dispatch& dispatch, std::string directory,
             platform::URLSession::DownloadCompletion completion)
        : dispatch_(dispatch),
          file_(std::make_shared<TemporaryFile>(std::move(directory))),
          completion_(std::move(completion)) {}

    Failure append(std::string_view bytes) override { return file_->append(bytes); }
    void complete(std::optional<URLResponse> response, Failure error) override {
        if (!error) error = file_->close();
        if (error) file_.reset();
        dispatch_.asyncGlobal(
            platform::QueuePriority::normal,
            [file = std::move(file_), completion = std::move(completion_), response, error] {
                completion(file ? file->path() : std::string(), response, error);
            });
    }

private:
    platform::Dispatch& dispatch_;
    std::shared_ptr<TemporaryFile> file_;  // ends, and with it the file, after the completion
    platform::URLSession::DownloadCompletion completion_;
};

// The names that a search in a certificate directory goes by end in ".0".
bool isHashedDirectory(const char* path) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
        if (entry.path().extension() == ".0") return true;
    }
    return false;
}

Transfer::Trust systemTrust() {
    const char* file = std::getenv("SSL_CERT_FILE");
    if (file != nullptr && *file != '\0') return {.file = file, .directory = {}};
    if (isHashedDirectory(kSystemCertificates)) {
        return {.file = {}, .directory = kSystemCertificates};
    }
    return {};
}

}  // namespace

/// The thread that drives libcurl, and what it is told by others.
class CurlURLSession::Loop {
public:
    using Shared = std::shared_ptr<Transfer>;

    explicit Loop(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

    void start(Shared transfer);
    void cancel(Shared transfer);
    void endSilentNow(platform::Block done);
    void finish();  // cancels everything and waits for the thread

    platform::Dispatch& dispatch() { return dispatch_; }

private:
    struct Orders {
        std::vector<Shared> started;
        std::vector<Shared> cancelled;
        std::vector<platform::Block> endingSilent;  // whom to tell when that is done
        bool isFinished = false;
    };

    void run();
    void refuse(const foundation::Error& error);
    void drive(const CurlLibrary& library);
    void add(Shared transfer);
    void end(CURL* handle, const Failure& error);
    void endCompleted();
    void endSilent(bool holdingNoClock);
    int millisecondsToNextDeadline() const;
    void wakeUp();

    platform::Dispatch& dispatch_;

    std::mutex mutex_;
    Orders orders_;
    std::thread thread_;
    const CurlLibrary* running_ = nullptr;  // while `multi_` may be woken up
    CURLM* multi_ = nullptr;
    std::optional<foundation::Error> unavailable_;

    // The thread's own.
    const CurlLibrary* library_ = nullptr;
    Transfer::Trust trust_;
    std::map<CURL*, Shared> transfers_;
};

// --- Called by others ---------------------------------------------------------------------------

void CurlURLSession::Loop::start(Shared transfer) {
    transfer->setHold(dispatch_.hold());
    const std::lock_guard lock(mutex_);
    if (orders_.isFinished || unavailable_) {
        return transfer->complete(unavailable_.value_or(sessionError(kCancelled, "cancelled")));
    }
    orders_.started.push_back(std::move(transfer));
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
    wakeUp();
}

void CurlURLSession::Loop::cancel(Shared transfer) {
    const std::lock_guard lock(mutex_);
    if (orders_.isFinished || unavailable_) return;  // it is complete, or about to be
    orders_.cancelled.push_back(std::move(transfer));
    wakeUp();
}

void CurlURLSession::Loop::endSilentNow(platform::Block done) {
    const std::lock_guard lock(mutex_);
    if (!thread_.joinable() || orders_.isFinished || unavailable_) {
        return dispatch_.asyncGlobal(platform::QueuePriority::normal, std::move(done));
    }
    orders_.endingSilent.push_back(std::move(done));
    wakeUp();
}

void CurlURLSession::Loop::finish() {
    {
        const std::lock_guard lock(mutex_);
        orders_.isFinished = true;
        wakeUp();
    }
    if (thread_.joinable()) thread_.join();
}

void CurlURLSession::Loop::wakeUp() {
    if (running_ != nullptr) running_->multiWakeup(multi_);
}

// --- On the thread ------------------------------------------------------------------------------

void CurlURLSession::Loop::run() {
    // Signals are the main thread's affair; a connection that breaks would send SIGPIPE here.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);

    const auto library = CurlLibrary::load();
    if (!library) return refuse(library.error());
    CURLM* multi = (*library)->multiInit();
    if (multi == nullptr) return refuse(sessionError(CURLE_FAILED_INIT, "no multi handle"));
    (*library)->multiSetopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, kConnectionsPerServer);
    (*library)->multiSetopt(multi, CURLMOPT_MAX_TOTAL_CONNECTIONS, kConnections);
    library_ = *library;
    trust_ = systemTrust();
    {
        const std::lock_guard lock(mutex_);
        running_ = library_;
        multi_ = multi;
    }
    drive(**library);
    {
        const std::lock_guard lock(mutex_);
        running_ = nullptr;
    }
    library_->multiCleanup(multi_);
}

void CurlURLSession::Loop::refuse(const foundation::Error& error) {
    const std::lock_guard lock(mutex_);
    unavailable_ = error;
    for (const Shared& transfer : orders_.started)
        transfer->complete(error);
    orders_.started.clear();
}

void CurlURLSession::Loop::drive(const CurlLibrary& library) {
    for (;;) {
        Orders orders;
        {
            const std::lock_guard lock(mutex_);
            orders.started.swap(orders_.started);
            orders.cancelled.swap(orders_.cancelled);
            orders.endingSilent.swap(orders_.endingSilent);
            orders.isFinished = orders_.isFinished;
        }
        for (Shared& transfer : orders.started)
            add(std::move(transfer));
        const Failure cancelled = sessionError(kCancelled, "cancelled");
        for (const Shared& transfer : orders.cancelled)
            end(transfer->handle(), cancelled);
        if (orders.isFinished) {
            while (!transfers_.empty())
                end(transfers_.begin()->first, cancelled);
            return;
        }
        int running = 0;
        library.multiPerform(multi_, &running);
        endCompleted();
        endSilent(!orders.endingSilent.empty());
        for (platform::Block& done : orders.endingSilent)
            dispatch_.asyncGlobal(platform::QueuePriority::normal, std::move(done));
        library.multiPoll(multi_, nullptr, 0, millisecondsToNextDeadline(), nullptr);
    }
}

void CurlURLSession::Loop::add(Shared transfer) {
    Failure error = transfer->prepare(*library_, trust_);
    if (!error) {
        const CURLMcode code = library_->multiAddHandle(multi_, transfer->handle());
        if (code != CURLM_OK) error = sessionError(code, "not accepted");
    }
    if (error) return transfer->complete(error);
    transfers_.emplace(transfer->handle(), std::move(transfer));
}

// Does nothing for a transfer that is over already.
void CurlURLSession::Loop::end(CURL* handle, const Failure& error) {
    const auto found = transfers_.find(handle);
    if (found == transfers_.end()) return;
    const Shared transfer = std::move(found->second);
    transfers_.erase(found);
    library_->multiRemoveHandle(multi_, handle);
    transfer->complete(error);
}

void CurlURLSession::Loop::endCompleted() {
    int left = 0;
    while (const CURLMsg* message = library_->multiInfoRead(multi_, &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        const auto found = transfers_.find(message->easy_handle);
        if (found == transfers_.end()) continue;
        end(found->first, found->second->result(message->data.result));
    }
}

void CurlURLSession::Loop::endSilent(bool holdingNoClock) {
    const auto now = Transfer::Clock::now();
    std::vector<Shared> silent;
    for (const auto& [handle, transfer] : transfers_) {
        if (transfer->deadline() <= now ||
            (holdingNoClock && transfer->lastProgress() + kSilence <= now)) {
            silent.push_back(transfer);
        }
    }
    for (const Shared& transfer : silent)
        end(transfer->handle(), transfer->timedOut());
}

// libcurl shortens the wait by timers of its own.
int CurlURLSession::Loop::millisecondsToNextDeadline() const {
    using Milliseconds = std::chrono::milliseconds;
    auto wait = std::chrono::duration_cast<Milliseconds>(std::chrono::hours(1));
    const auto now = Transfer::Clock::now();
    for (const auto& [handle, transfer] : transfers_) {
        wait = std::min(wait, std::chrono::ceil<Milliseconds>(transfer->deadline() - now));
    }
    return static_cast<int>(std::max(wait, Milliseconds::zero()).count());
}

// --- Tasks --------------------------------------------------------------------------------------

class CurlURLSession::Task : public platform::URLSessionTask {
public:
    Task(std::shared_ptr<Loop> loop, std::shared_ptr<Transfer> transfer)
        : loop_(std::move(loop)), transfer_(std::move(transfer)) {}

    void resume() override {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isStarted_, true)) return;
        loop_->start(transfer_);
    }

    void cancel() override {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isStarted_, true)) return loop_->cancel(transfer_);
        transfer_->complete(sessionError(kCancelled, "cancelled"));
    }

private:
    std::shared_ptr<Loop> loop_;
    std::shared_ptr<Transfer> transfer_;
    std::mutex mutex_;
    bool isStarted_ = false;  // or never to be
};

CurlURLSession::CurlURLSession(platform::Dispatch& dispatch, Configuration configuration)
    : configuration_(std::move(configuration)), loop_(std::make_shared<Loop>(dispatch)) {}

CurlURLSession::~CurlURLSession() {
    loop_->finish();
}

void CurlURLSession::endSilentTransfers(platform::Block done) {
    loop_->endSilentNow(std::move(done));
}

std::shared_ptr<platform::URLSessionTask> CurlURLSession::dataTask(URLRequest request,
                                                                   DataCompletion completion) {
    auto body = std::make_shared<DataBody>(loop_->dispatch(), std::move(completion));
    return task(std::move(request), std::move(body));
}

std::shared_ptr<platform::URLSessionTask> CurlURLSession::downloadTask(
    foundation::URL url, DownloadCompletion completion) {
    URLRequest request;
    request.url = std::move(url);
    request.timeoutInterval = configuration_.timeout;
    auto body = std::make_shared<FileBody>(loop_->dispatch(), configuration_.temporaryDirectory,
                                           std::move(completion));
    return task(std::move(request), std::move(body));
}

std::shared_ptr<platform::URLSessionTask> CurlURLSession::task(URLRequest request,
                                                               std::shared_ptr<Body> body) {
    const std::uint64_t limit = configuration_.sizeLimit
                                    ? configuration_.sizeLimit(request.url)
                                    : std::numeric_limits<std::uint64_t>::max();
    return std::make_shared<Task>(
        loop_, std::make_shared<Transfer>(std::move(request), limit, std::move(body)));
}

}  // namespace tavrolin::adapters::curl
