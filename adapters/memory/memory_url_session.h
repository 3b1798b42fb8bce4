#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/url_session.h"

namespace tavrolin::adapters::memory {

/// An HTTP client that knows its answers beforehand:
///
///     session.setAnswer("https://example.com/a.png", {.body = bytes});
///     session.setAnswer("https://example.com/b.png", {.statusCode = 404});
///
/// Completions run on the dispatch's global queue. A URL without an answer fails as an unknown host
/// does. Downloads lie in temporary files, as the port demands. Threads: any.
class MemoryURLSession : public platform::URLSession {
public:
    struct Answer {
        std::optional<int> statusCode = 200;  // absent: no response arrives
        std::string body{};
        std::optional<foundation::Error> error{};
        double delay = 0;           // seconds of the dispatch's clock
        bool neverAnswers = false;  // completes when it is cancelled or the session ends
    };

    /// Where downloads are put: an existing directory. The dispatch must outlive the session.
    MemoryURLSession(platform::Dispatch& dispatch, std::string directory);
    ~MemoryURLSession() override;

    /// What a URL, by its whole text, is answered with from now on.
    void setAnswer(std::string_view url, Answer answer);
    /// What every URL without an answer of its own gets.
    void setDefaultAnswer(Answer answer);

    /// The requests that were started, in order; those of downloads too.
    std::vector<platform::URLRequest> requests() const;

    std::shared_ptr<platform::URLSessionTask> dataTask(platform::URLRequest request,
                                                       DataCompletion completion) override;
    std::shared_ptr<platform::URLSessionTask> downloadTask(foundation::URL url,
                                                           DownloadCompletion completion) override;

private:
    struct State;
    class Task;

    std::shared_ptr<State> state_;
};

}  // namespace tavrolin::adapters::memory
