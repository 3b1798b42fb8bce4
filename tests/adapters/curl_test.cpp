#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "adapters/asio/asio_dispatch.h"
#include "adapters/curl/curl_url_session.h"
#include "adapters/curl/session_error.h"
#include "tavrolin/foundation/expected.h"
#include "tests/support/http_server.h"

namespace tavrolin {
namespace {

using adapters::asio::AsioDispatch;
using adapters::asio::Clock;
using adapters::curl::CurlURLSession;
using foundation::URL;
using platform::URLRequest;
using platform::URLResponse;
using testing::HasSubstr;
using testing::IsEmpty;
using tests::HTTPReply;
using tests::HTTPServer;
using Fault = HTTPReply::Fault;
using namespace std::chrono_literals;

struct Outcome {
    int completions = 0;
    std::string body;
    std::string location;
    std::optional<int> status;
    foundation::Failure error;
    std::thread::id thread;
};

std::string contents(const std::string& path) {
    std::ostringstream out;
    out << std::ifstream(path, std::ios::binary).rdbuf();
    return out.str();
}

struct CurlTest : testing::Test {
    CurlTest() {
        char name[] = "/tmp/curl_testXXXXXX";
        folder = mkdtemp(name);
        makeSession(60);
    }
    ~CurlTest() override {
        session.reset();
        dispatch.runMainUntilIdle();
        std::filesystem::remove_all(folder);
    }

    void makeSession(double timeout) {
        session = std::make_unique<CurlURLSession>(
            dispatch, CurlURLSession::Configuration{
                          .temporaryDirectory = folder,
                          .sizeLimit = [](const URL&) { return std::uint64_t{1} << 20; },
                          .timeout = timeout});
    }

    std::shared_ptr<platform::URLSessionTask> download(const std::string& url, Outcome& outcome) {
        return session->downloadTask(
            URL::withString(url).value_or(URL()),
            [&outcome](const std::string& location, const auto& response, const auto& error) {
                ++outcome.completions;
                outcome.location = location;
                outcome.body = contents(location);
                if (response) outcome.status = response->statusCode;
                outcome.error = error;
                outcome.thread = std::this_thread::get_id();
            });
    }

    Outcome downloaded(const std::string& url) {
        Outcome outcome;
        download(url, outcome)->resume();
        dispatch.runMainUntilIdle();
        return outcome;
    }

    bool folderIsEmpty() const { return std::filesystem::is_empty(folder); }

    std::string folder;
    AsioDispatch dispatch{Clock::real()};
    HTTPServer server;
    std::unique_ptr<CurlURLSession> session;
};

TEST_F(CurlTest, StreamsADownloadToAPrivateFileThatLastsUntilTheCompletionReturns) {
    const std::string body(300'000, 'x');
    server.reply("/a.png", {.body = body});
    mode_t mode = 0;
    std::string location;
    session
        ->downloadTask(*URL::withString(server.url("/a.png")),
                       [&](const std::string& path, const auto& response, const auto& error) {
                           struct stat status {};
                           EXPECT_EQ(stat(path.c_str(), &status), 0);
                           mode = status.st_mode & 0777U;
                           location = path;
                           EXPECT_EQ(contents(path).size(), body.size());
                           EXPECT_EQ(response->statusCode, 200);
                           EXPECT_FALSE(error);
                       })
        ->resume();
    dispatch.runMainUntilIdle();
    EXPECT_EQ(mode, 0600U);
    EXPECT_THAT(location, testing::MatchesRegex(folder + "/CVN[0-9a-f]+\\.tmp"));
    EXPECT_EQ(location.size(), folder.size() + 1 + 3 + 24 + 4);
    EXPECT_TRUE(folderIsEmpty());
}

TEST_F(CurlTest, LeavesAFileThatTheCompletionMovedAway) {
    server.reply("/a", {.body = "bytes"});
    const std::string moved = folder + "/kept";
    session
        ->downloadTask(*URL::withString(server.url("/a")),
                       [&](const std::string& path, const auto&, const auto&) {
                           std::filesystem::rename(path, moved);
                       })
        ->resume();
    dispatch.runMainUntilIdle();
    EXPECT_EQ(contents(moved), "bytes");
}

struct AnswerCase {
    const char* name;
    HTTPReply reply;
    std::optional<int> status;
    bool fails;
    std::string body;
};

TEST_F(CurlTest, TellsWholeAnswersFromBrokenOnes) {
    const std::string elsewhere = server.url("/target");
    server.reply("/target", {.body = "target"});
    for (int i = 0; i < 8; ++i) {
        server.reply(
            "/hop" + std::to_string(i),
            {.status = 302,
             .headers = {{"Location", i == 0 ? "/target" : "/hop" + std::to_string(i - 1)}}});
    }
    const auto redirect = [](std::string to) {
        return HTTPReply{.status = 302, .headers = {{"Location", std::move(to)}}};
    };
    const AnswerCase cases[] = {
        {"empty", {}, 200, false, ""},
        {"without a length", {.body = "abc", .declaresLength = false}, 200, false, "abc"},
        {"404 with a page", {.status = 404, .body = "gone"}, 404, false, "gone"},
        {"500", {.status = 500}, 500, false, ""},
        {"redirect", redirect(elsewhere), 200, false, "target"},
        {"five redirects", redirect("/hop3"), 200, false, "target"},
        {"six redirects", redirect("/hop4"), 302, true, ""},
        {"a loop", redirect("/case"), 302, true, ""},
        {"redirect to a file", redirect("file:///etc/passwd"), 302, true, ""},
        {"redirect to ftp", redirect("ftp://127.0.0.1/a"), 302, true, ""},
        {"cut short", {.body = "abc", .declaredLength = 10}, 200, true, ""},
        {"longer than declared", {.body = "abcdef", .declaredLength = 3}, 200, false, "abc"},
        {"hangs up", {.fault = Fault::closesAtOnce}, std::nullopt, true, ""},
        {"declares too much", {.declaredLength = 2'000'000}, 200, true, ""},
        {"endless",
         {.body = std::string(10'000, 'x'), .declaresLength = false, .fault = Fault::endless},
         200,
         true,
         ""},
        {"declares little, sends without end",
         {.body = std::string(10'000, 'x'), .declaredLength = 3, .fault = Fault::endless},
         200,
         false,
         "xxx"},
        {"huge headers",
         {.headers = std::vector<std::pair<std::string, std::string>>(
              400, {"X-Fill", std::string(1000, 'x')})},
         std::nullopt,
         true,
         ""},
    };
    for (const auto& [name, reply, status, fails, body] : cases) {
        SCOPED_TRACE(name);
        server.reply("/case", reply);
        const Outcome outcome = downloaded(server.url("/case"));
        EXPECT_EQ(outcome.completions, 1);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.error.has_value(), fails)
            << (outcome.error ? outcome.error->description() : "");
        EXPECT_EQ(outcome.location.empty(), fails);
        EXPECT_EQ(outcome.body, body);
        EXPECT_TRUE(folderIsEmpty());
    }
    EXPECT_LT(server.bodyBytesSent(), 20'000'000U)
        << "an endless body was read far beyond its limit";
}

TEST_F(CurlTest, RefusesURLsThatAreNotOfTheWeb) {
    for (const std::string url :
         {"", "file:///etc/passwd", "ftp://127.0.0.1/a", "/relative", "http://"}) {
        SCOPED_TRACE(url);
        const Outcome outcome = downloaded(url);
        EXPECT_EQ(outcome.completions, 1);
        EXPECT_TRUE(outcome.error);
        EXPECT_FALSE(outcome.status);
    }
}

TEST_F(CurlTest, GivesUpAfterTheTimeOutWithoutProgressOnly) {
    makeSession(0.15);
    server.reply("/silent", {.fault = Fault::silence});
    const Outcome silent = downloaded(server.url("/silent"));
    ASSERT_TRUE(silent.error);
    EXPECT_EQ(silent.error->code, adapters::curl::kTimedOut);

    // Five answers that each take less than the time-out, together longer than it.
    for (int i = 0; i < 5; ++i) {
        server.reply("/slow" + std::to_string(i),
                     {.status = i < 4 ? 302 : 200,
                      .body = i < 4 ? "" : "done",
                      .headers = {{"Location", "/slow" + std::to_string(i + 1)}},
                      .delay = 50ms});
    }
    const Outcome slow = downloaded(server.url("/slow0"));
    EXPECT_FALSE(slow.error);
    EXPECT_EQ(slow.body, "done");
}

TEST_F(CurlTest, SendsTheRequestAsItWasBuilt) {
    server.reply("/data?q=1", {.body = "answer"});
    URLRequest request;
    request.url = *URL::withString(server.url("/data?q=1"));
    request.cachePolicy = platform::CachePolicy::reloadIgnoringLocalAndRemoteCacheData;
    request.headers = {{"X-Name", "value"}, {"X-Empty", ""}};
    std::string body;
    const auto run = [&] {
        session
            ->dataTask(request,
                       [&](const std::string& bytes, const auto&, const auto&) { body = bytes; })
            ->resume();
        dispatch.runMainUntilIdle();
    };
    run();
    request.method = "POST";
    request.body = std::string("{\"a\":\0 1}", 9);
    run();
    request.method = std::nullopt;
    run();
    EXPECT_EQ(body, "answer");

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].header("X-Name"), "value");
    EXPECT_EQ(requests[0].header("Cache-Control"), "no-cache");
    EXPECT_EQ(requests[1].method, "POST");
    EXPECT_EQ(requests[1].body, *request.body);
    EXPECT_EQ(requests[1].header("Content-Type"), "") << "nobody asked for one";
    EXPECT_EQ(requests[2].method, "GET") << "the default, also with a body";
    EXPECT_EQ(requests[2].body, *request.body);
}

TEST_F(CurlTest, NeverLetsAHeaderSmuggleInAnother) {
    URLRequest request;
    request.url = *URL::withString(server.url("/"));
    request.headers = {{"X-Name", "value\r\nX-Other: smuggled"}};
    foundation::Failure error;
    session->dataTask(request, [&](const auto&, const auto&, const auto& e) { error = e; })
        ->resume();
    dispatch.runMainUntilIdle();
    EXPECT_TRUE(error);
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(CurlTest, CompletesOnceOnAnotherThreadWhenCancelledAtAnyTime) {
    server.reply("/silent", {.fault = Fault::silence});
    server.reply("/fast", {.body = "fast"});
    Outcome before, during, after;
    const auto suspended = download(server.url("/silent"), before);
    suspended->cancel();
    suspended->resume();
    const auto running = download(server.url("/silent"), during);
    running->resume();
    server.waitForRequests(1);
    running->cancel();
    running->cancel();
    const auto done = download(server.url("/fast"), after);
    done->resume();
    done->resume();
    dispatch.runMainUntilIdle();
    done->cancel();
    dispatch.runMainUntilIdle();

    for (const Outcome* outcome : {&before, &during}) {
        EXPECT_EQ(outcome->completions, 1);
        ASSERT_TRUE(outcome->error);
        EXPECT_EQ(outcome->error->code, adapters::curl::kCancelled);
        EXPECT_NE(outcome->thread, std::this_thread::get_id());
    }
    EXPECT_EQ(after.completions, 1);
    EXPECT_FALSE(after.error);
}

TEST_F(CurlTest, CompletesWhatIsUnderWayWhenTheSessionEnds) {
    server.reply("/silent", {.fault = Fault::silence});
    Outcome open, late;
    const auto first = download(server.url("/silent"), open);
    const auto second = download(server.url("/silent"), late);
    first->resume();
    server.waitForRequests(1);
    session.reset();
    second->resume();
    dispatch.runMainUntilIdle();
    for (const Outcome* outcome : {&open, &late}) {
        EXPECT_EQ(outcome->completions, 1);
        ASSERT_TRUE(outcome->error);
        EXPECT_EQ(outcome->error->code, adapters::curl::kCancelled);
    }
}

TEST_F(CurlTest, FetchesTenFilesOfASlowServerSideBySide) {
    constexpr auto kDelay = 100ms;
    std::vector<Outcome> outcomes(10);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        server.reply("/" + std::to_string(i), {.body = std::to_string(i), .delay = kDelay});
    }
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        download(server.url("/" + std::to_string(i)), outcomes[i])->resume();
    }
    dispatch.runMainUntilIdle();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5 * kDelay);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        EXPECT_EQ(outcomes[i].body, std::to_string(i));
    }
}

TEST_F(CurlTest, FailsWhenTheBytesCannotBeKept) {
    server.reply("/a", {.body = "bytes"});
    std::filesystem::remove_all(folder);
    const Outcome outcome = downloaded(server.url("/a"));
    ASSERT_TRUE(outcome.error);
    EXPECT_THAT(outcome.error->description(), HasSubstr("No such file"));
    EXPECT_EQ(outcome.location, "");
}

TEST(CurlHold, AJumpingClockWaitsForATransferThatMakesProgress) {
    AsioDispatch dispatch(Clock::jumping({0}));
    HTTPServer server;
    server.reply("/", {.body = "arrived", .delay = 50ms});
    CurlURLSession session(dispatch, {.temporaryDirectory = "/tmp", .sizeLimit = {}});
    URLRequest request;
    request.url = *URL::withString(server.url("/"));
    std::vector<std::string> order;
    dispatch.afterMain(30, [&] { order.emplace_back("time is up"); });
    session
        .dataTask(request,
                  [&](const std::string& body, const auto&, const auto&) { order.push_back(body); })
        ->resume();
    dispatch.runMainUntilIdle();
    EXPECT_THAT(order, testing::ElementsAre("arrived", "time is up"));
}

TEST(CurlTLS, TrustsOnlyKnownCertificatesForTheRightHost) {
    if (!HTTPServer::supportsTLS()) GTEST_SKIP() << "built without OpenSSL";
    HTTPServer good(HTTPServer::Security::tls);
    HTTPServer wrongHost(HTTPServer::Security::tlsWrongHost);
    const auto succeeds = [](const HTTPServer& server, const std::string& trusted) {
        if (trusted.empty()) {
            unsetenv("SSL_CERT_FILE");
        } else {
            setenv("SSL_CERT_FILE", trusted.c_str(), 1);
        }
        AsioDispatch dispatch(Clock::real());
        CurlURLSession session(dispatch, {.temporaryDirectory = "/tmp", .sizeLimit = {}});
        URLRequest request;
        request.url = *URL::withString(server.url("/"));
        std::optional<bool> result;
        session
            .dataTask(request,
                      [&](const auto&, const auto&, const auto& error) { result = !error; })
            ->resume();
        dispatch.runMainUntilIdle();
        return result;
    };
    EXPECT_EQ(succeeds(good, good.certificateFile()), true);
    EXPECT_EQ(succeeds(good, ""), false) << "unknown to the system";
    EXPECT_EQ(succeeds(good, wrongHost.certificateFile()), false) << "another one's certificate";
    EXPECT_EQ(succeeds(wrongHost, wrongHost.certificateFile()), false) << "for another host";
    EXPECT_EQ(succeeds(good, "/nowhere.pem"), false);
}

}  // namespace
}  // namespace tavrolin
