#include "adapters/memory/memory_url_session.h"

#include <cstdio>
#include <fstream>
#include <random>
#include <utility>

namespace tavrolin::adapters::memory {

using foundation::Error;
using platform::URLRequest;
using platform::URLResponse;

struct MemoryURLSession::State {
    State(platform::Dispatch& d, std::string dir) : dispatch(d), directory(std::move(dir)) {}

    platform::Dispatch& dispatch;
    const std::string directory;
    std::mutex mutex;
    std::map<std::string, Answer, std::less<>> answers;
    Answer defaultAnswer{.statusCode = std::nullopt,
                         .error = Error{"MemoryURLSession", -1003, "the host was not found"}};
    std::vector<URLRequest> requests;
    std::vector<std::weak_ptr<Task>> silent;
    // Several processes share the folder for temporary files.
    const unsigned prefix = std::random_device()();
    unsigned long long downloads = 0;

    Answer answerTo(const URLRequest& request) {
        const std::lock_guard lock(mutex);
        requests.push_back(request);
        const auto found = answers.find(request.url.absoluteString());
        return found == answers.end() ? defaultAnswer : found->second;
    }

    std::string newPath() {
        const std::lock_guard lock(mutex);
        return directory + "/CVN" + std::to_string(prefix) + "-" + std::to_string(++downloads) +
               ".tmp";
    }
};

/// Completes once: with its answer, or cancelled, whichever comes first.
class MemoryURLSession::Task : public platform::URLSessionTask,
                               public std::enable_shared_from_this<Task> {
public:
    using Finish = std::function<void(const Answer&)>;

    Task(std::shared_ptr<State> state, URLRequest request, Finish finish)
        : state_(std::move(state)), request_(std::move(request)), finish_(std::move(finish)) {}

    void resume() override {
        {
            const std::lock_guard lock(mutex_);
            if (isStarted_ || !finish_) return;
            isStarted_ = true;
        }
        Answer answer = state_->answerTo(request_);
        if (answer.neverAnswers) {
            const std::lock_guard lock(state_->mutex);
            state_->silent.push_back(weak_from_this());
            return;
        }
        const double delay = answer.delay;
        auto arrive = [self = shared_from_this(), answer = std::move(answer)] {
            self->complete(answer);
        };
        if (delay > 0) {
            state_->dispatch.afterMain(delay, std::move(arrive));
        } else {
            arrive();
        }
    }

    void cancel() override {
        complete(
            {.statusCode = std::nullopt, .error = Error{"MemoryURLSession", -999, "cancelled"}});
    }

private:
    void complete(const Answer& answer) {
        Finish finish;
        {
            const std::lock_guard lock(mutex_);
            finish.swap(finish_);
        }
        if (!finish) return;
        state_->dispatch.asyncGlobal(platform::QueuePriority::normal,
                                     [finish = std::move(finish), answer] { finish(answer); });
    }

    std::shared_ptr<State> state_;
    const URLRequest request_;
    std::mutex mutex_;
    bool isStarted_ = false;
    Finish finish_;
};

namespace {

std::optional<URLResponse> responseOf(const MemoryURLSession::Answer& answer) {
    if (!answer.statusCode) return std::nullopt;
    return URLResponse{answer.statusCode};
}

}  // namespace

MemoryURLSession::MemoryURLSession(platform::Dispatch& dispatch, std::string directory)
    : state_(std::make_shared<State>(dispatch, std::move(directory))) {}

MemoryURLSession::~MemoryURLSession() {
    std::vector<std::weak_ptr<Task>> silent;
    {
        const std::lock_guard lock(state_->mutex);
        silent.swap(state_->silent);
    }
    for (const auto& weak : silent) {
        if (const auto task = weak.lock()) task->cancel();
    }
}

void MemoryURLSession::setAnswer(std::string_view url, Answer answer) {
    const std::lock_guard lock(state_->mutex);
    state_->answers.insert_or_assign(std::string(url), std::move(answer));
}

void MemoryURLSession::setDefaultAnswer(Answer answer) {
    const std::lock_guard lock(state_->mutex);
    state_->defaultAnswer = std::move(answer);
}

std::vector<URLRequest> MemoryURLSession::requests() const {
    const std::lock_guard lock(state_->mutex);
    return state_->requests;
}

std::shared_ptr<platform::URLSessionTask> MemoryURLSession::dataTask(URLRequest request,
                                                                     DataCompletion completion) {
    return std::make_shared<Task>(state_, std::move(request),
                                  [completion = std::move(completion)](const Answer& answer) {
                                      completion(answer.body, responseOf(answer), answer.error);
                                  });
}

std::shared_ptr<platform::URLSessionTask> MemoryURLSession::downloadTask(
    foundation::URL url, DownloadCompletion completion) {
    URLRequest request;
    request.url = std::move(url);
    return std::make_shared<Task>(
        state_, std::move(request),
        [state = state_, completion = std::move(completion)](const Answer& answer) {
            if (answer.error || !answer.statusCode) {
                return completion({}, responseOf(answer), answer.error);
            }
            const std::string path = state->newPath();
            std::ofstream(path, std::ios::binary) << answer.body;
            completion(path, responseOf(answer), std::nullopt);
            std::remove(path.c_str());
        });
}

}  // namespace tavrolin::adapters::memory
