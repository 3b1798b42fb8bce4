#include "tavrolin/network/network_service.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/network/backend_service.h"
#include "tavrolin/network/http_method.h"
#include "tests/network/network_platform.h"

namespace tavrolin {
namespace {

using foundation::Error;
using foundation::URL;
using foundation::Value;
using network_test::NetworkPlatform;
using platform::URLResponse;
using testing::ElementsAre;
using testing::Pair;

const std::string kURL = "https://example.com/a.png";

/// Raises as the platform does for a request that it can't make.
class RaisingSession : public platform::URLSession {
public:
    std::shared_ptr<platform::URLSessionTask> dataTask(platform::URLRequest,
                                                       DataCompletion) override {
        foundation::Exception::raise("SomeException", "some reason");
    }
    std::shared_ptr<platform::URLSessionTask> downloadTask(URL, DownloadCompletion) override {
        foundation::Exception::raise("SomeException", "some reason");
    }
};

struct NetworkServiceTest : testing::Test {
    NetworkPlatform platform;
    std::shared_ptr<CVNPushNetworkService> service = CVNPushNetworkService::init();
    std::optional<URL> url = URL::withString(kURL);
};

TEST_F(NetworkServiceTest, TurnsEveryOutcomeIntoSuccessOrATextForPeople) {
    const auto response = [](int status) { return URLResponse{status}; };
    const Error transport{"transport", 7, "broken"};
    struct Case {
        std::optional<URLResponse> response;
        foundation::Failure error;
        std::optional<std::int64_t> code;
        std::string description;
    };
    const Case cases[] = {
        {std::nullopt, std::nullopt, 0, "Invalid response type"},
        {std::nullopt, transport, 0, "Invalid response type"},
        {URLResponse{}, std::nullopt, 0, "Invalid response type"},
        {response(200), transport, 0, "Request failed"},
        {response(404), transport, 0, "Request failed"},
        {response(200), std::nullopt, std::nullopt, ""},
        {response(299), std::nullopt, std::nullopt, ""},
        {response(400), std::nullopt, 400, "Authentication failed"},
        {response(499), std::nullopt, 499, "Authentication failed"},
        {response(500), std::nullopt, 500, "Bad request"},
        {response(599), std::nullopt, 599, "Bad request"},
        {response(600), std::nullopt, 600, "Outdated URL"},
        {response(199), std::nullopt, 199, "Request failed with code 199"},
        {response(302), std::nullopt, 302, "Request failed with code 302"},
        {response(601), std::nullopt, 601, "Request failed with code 601"},
    };
    for (const auto& [given, error, code, description] : cases) {
        const auto result = service->validateResponse(given, "", error);
        ASSERT_EQ(result.has_value(), code.has_value()) << description;
        if (!result) continue;
        EXPECT_EQ(result->domain, "NetworkService");
        EXPECT_EQ(result->code, code);
        EXPECT_EQ(result->localizedDescription, description);
        EXPECT_NE(result->localizedFailureReason, "");
        EXPECT_NE(result->localizedRecoverySuggestion, "");
    }
}

TEST_F(NetworkServiceTest, BuildsRequestsFromParametersAndHeaders) {
    const auto given = URL::withString("https://example.com/path?old=1");
    const auto plain = service->buildRequestFrom(given, Value(), Value::dictionary(), Value());
    EXPECT_EQ(plain.url, *given) << "an empty dictionary leaves the query";
    EXPECT_EQ(plain.cachePolicy, platform::CachePolicy::reloadIgnoringLocalAndRemoteCacheData);
    EXPECT_EQ(plain.timeoutInterval, 10);
    EXPECT_FALSE(plain.body);
    EXPECT_FALSE(plain.method);

    const auto full = service->buildRequestFrom(given, Value::dictionary({{"X-Name", "value"}}),
                                                Value::dictionary({{"q", "a b"}, {"b", "2"}}),
                                                Value::dictionary({{"z", 1}, {"a", true}}));
    EXPECT_EQ(full.url.absoluteString(), "https://example.com/path?q=a%20b&b=2");
    EXPECT_EQ(full.body, "{\"z\":1,\"a\":true}");
    EXPECT_THAT(full.headers, ElementsAre(Pair("X-Name", "value")));

    const auto noJSON = service->buildRequestFrom(
        given, Value(), Value(), Value::dictionary({{"when", foundation::Date{1}}}));
    EXPECT_FALSE(noJSON.body);
    EXPECT_FALSE(service->buildRequestFrom(given, Value(), Value(), Value::dictionary()).body);
    EXPECT_THROW(service->buildRequestFrom(given, Value(), Value::dictionary({{"q", 1}}), Value()),
                 foundation::Exception);
}

TEST_F(NetworkServiceTest, NamesTheTwoMethodsAndNoOther) {
    EXPECT_EQ(CVNPushHTTPMethodString(0), "GET");
    EXPECT_EQ(CVNPushHTTPMethodString(1), "POST");
    EXPECT_EQ(CVNPushHTTPMethodString(2), std::nullopt);
    EXPECT_EQ(CVNPushHTTPMethodString(-1), std::nullopt);
}

TEST_F(NetworkServiceTest, ReportsADataRequestThroughOneCallback) {
    std::vector<std::string> calls;
    const auto request = [&](const Value& headers) {
        service->makeDataRequestFor(
            url, 1, Value(), Value::dictionary({{"a", 1}}), headers,
            [&](const std::string& data) { calls.push_back("success " + data); },
            [&](const std::string& data, const Error& error, std::int64_t code) {
                calls.push_back(error.domain + " " + std::to_string(code) + " " +
                                error.localizedDescription + " " + data);
            });
        platform.dispatch.runUntilIdle();
    };
    platform.session.setAnswer(kURL, {.body = "bytes"});
    request(Value());
    EXPECT_THAT(
        platform.takeLog(),
        ElementsAre(
            "(INFO) CVNPushNetworkService: Request = " + kURL +
                " -[CVNPushNetworkService "
                "makeDataRequestFor:method:URLParams:bodyParams:headers:success:failure:]",
            testing::HasSubstr("(INFO) CVNPushNetworkService: Success for API call " + kURL)));
    platform.session.setAnswer(kURL, {.statusCode = 503, .body = "busy"});
    request(Value());
    EXPECT_THAT(platform.takeLog().back(),
                testing::HasSubstr("(WARN) CVNPushNetworkService: Failure for API call " + kURL));
    request(Value::dictionary({{"X-Number", 1}}));  // no text: raises on the way
    EXPECT_THAT(
        platform.takeLog().back(),
        testing::HasSubstr("(FATAL) CVNPushNetworkService: Could not request due to exception = "));
    EXPECT_THAT(calls, ElementsAre("success bytes", "NetworkService 503 Bad request busy",
                                   "Backend service 0 InvalidArgumentException "));
    EXPECT_EQ(platform.session.requests().front().method, "POST");
}

struct BackendServiceTest : NetworkServiceTest {
    std::unique_ptr<CVNPushBackendService> backend =
        CVNPushBackendService::initWithConfig(CVNPushBackendConfiguration::sharedInstance());
    std::vector<std::string> calls;

    void download() {
        backend->makeDownloadRequestFor(
            url,
            [&](const URL& location) {
                std::ifstream file(location.path());
                calls.emplace_back(std::istreambuf_iterator<char>(file),
                                   std::istreambuf_iterator<char>());
            },
            [&](const Error& error) {
                calls.push_back(error.domain + " " + std::to_string(error.code) + " " +
                                error.localizedDescription + " " + error.localizedFailureReason);
            });
    }
};

TEST_F(BackendServiceTest, HandsOverTheFileOrTheError) {
    platform.session.setAnswer(kURL, {.body = "picture"});
    download();
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(platform.takeLog(),
                ElementsAre(testing::HasSubstr("CVNPushBackendService: URL Request = " + kURL),
                            testing::HasSubstr("CVNPushNetworkService: URL Request = " + kURL),
                            testing::HasSubstr("Success for downloadURL " + kURL)));
    platform.session.setAnswer(kURL, {.statusCode = 404});
    download();
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(platform.takeLog().back(), testing::HasSubstr("Failure for downloadURL " + kURL));
    url = std::nullopt;  // refused by the session, as every URL is that it can't load
    download();
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(calls,
                ElementsAre("picture",
                            "NetworkService 404 Authentication failed You need to be authenticated "
                            "to perform this action",
                            "NetworkService 0 Invalid response type The response received is not "
                            "of type NSHTTPURLResponse"));
    EXPECT_TRUE(std::filesystem::is_empty(platform.folder.path));
}

TEST_F(BackendServiceTest, ReportsARaisedExceptionAsAnError) {
    RaisingSession raising;
    platform.install(raising);
    download();
    EXPECT_THAT(calls, ElementsAre("Network service 0 SomeException some reason"));
    platform.install(platform.session);
}

TEST_F(BackendServiceTest, CancelsTheRequestUnderWay) {
    platform.session.setAnswer(kURL, {.neverAnswers = true});
    backend->cancel();  // nothing yet
    download();
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(calls, testing::IsEmpty());
    backend->cancel();
    backend->cancel();
    platform.dispatch.runUntilIdle();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_THAT(calls[0], testing::StartsWith("NetworkService 0 Invalid response type"));
}

}  // namespace
}  // namespace tavrolin
