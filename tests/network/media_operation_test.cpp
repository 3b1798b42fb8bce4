#include "tavrolin/service_extension/push_media_operation.h"

#include <gmock/gmock.h>

#include <functional>

#include "tavrolin/network/api_manager.h"
#include "tavrolin/network/network_queue.h"
#include "tests/network/network_platform.h"

namespace tavrolin {
namespace {

using foundation::URL;
using network_test::NetworkPlatform;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kURL = "https://example.com/a.png";

struct MediaOperationTest : testing::Test {
    NetworkPlatform platform;
    std::vector<std::string> outcomes;

    CVNPushMediaOperation::Completion note() {
        return [this](const std::optional<URL>& location, const foundation::Failure& error) {
            EXPECT_NE(location.has_value(), error.has_value());
            outcomes.push_back(error ? error->domain + " " + std::to_string(error->code) : "file");
        };
    }
};

struct EmptyOperation : CVNPushOperation {};

TEST_F(MediaOperationTest, OperationsAnnounceEachChangeBeforeAndAfterIt) {
    const auto operation = std::make_shared<EmptyOperation>();
    operation->setName("Name");
    std::vector<std::string> seen;
    operation->addObserver([&](std::string_view key, bool isPrior) {
        seen.push_back(std::string(key) + (isPrior ? " will " : " did ") +
                       (operation->isReady() ? "r" : "-") + (operation->isExecuting() ? "e" : "-") +
                       (operation->isFinished() ? "f" : "-"));
    });
    operation->finish();  // not started: nothing
    EXPECT_THAT(seen, IsEmpty());
    operation->start();
    operation->start();
    operation->finish();
    operation->finish();
    EXPECT_THAT(seen,
                ElementsAre("isReady will r--", "isReady did ---", "isExecuting will ---",
                            "isExecuting did -e-", "isExecuting will -e-", "isExecuting did ---",
                            "isFinished will ---", "isFinished did --f"));
    EXPECT_THAT(platform.takeLog(),
                ElementsAre(HasSubstr("(DEBUG) CVNPushOperation: \"Name\" Operation Started. "
                                      "-[CVNPushOperation start]"),
                            HasSubstr("\"Name\" Operation Finished. -[CVNPushOperation finish]")));
}

TEST_F(MediaOperationTest, ACancelledOperationStillStarts) {
    const auto operation = std::make_shared<EmptyOperation>();
    operation->cancel();
    operation->start();
    EXPECT_TRUE(operation->isCancelled());
    EXPECT_TRUE(operation->isExecuting());
}

TEST_F(MediaOperationTest, DownloadsOnTheSharedQueueUnlessAnotherIsGiven) {
    platform.session.setAnswer(kURL, {.body = "picture"});
    CVNPushAPIManager::retrieveMediaLocationWithURLString(kURL, nullptr, note());
    auto& shared = CVNPushNetworkQueue::sharedInstance().queue();
    ASSERT_EQ(shared.operations().size(), 1U);
    EXPECT_EQ(shared.operations()[0]->name(), "CVN_Image_Fetch_Operation");
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(shared.operations(), IsEmpty()) << "finished operations leave their queue";

    std::vector<std::function<void()>> blocks;
    foundation::OperationQueue own([&](auto block) { blocks.push_back(std::move(block)); });
    CVNPushAPIManager::retrieveMediaLocationWithURLString(kURL, &own, note());
    EXPECT_THAT(shared.operations(), IsEmpty());
    ASSERT_EQ(blocks.size(), 1U);
    blocks[0]();
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(outcomes, ElementsAre("file", "file"));
}

TEST_F(MediaOperationTest, HandsOverErrorsAlsoForWhatIsNoURL) {
    platform.session.setAnswer(kURL, {.statusCode = 404, .body = "page"});
    for (const std::string& text : {kURL, std::string(), std::string("no url")}) {
        CVNPushAPIManager::retrieveMediaLocationWithURLString(text, nullptr, note());
    }
    platform.dispatch.runUntilIdle();
    EXPECT_THAT(outcomes, testing::UnorderedElementsAre("NetworkService 404", "NetworkService 0",
                                                        "NetworkService 0"));
}

TEST_F(MediaOperationTest, CancellingStopsTheDownloadAndFinishesTheOperation) {
    platform.session.setAnswer(kURL, {.neverAnswers = true});
    const auto operation = CVNPushMediaOperation::initWithURLString(kURL, note());
    CVNPushNetworkQueue::sharedInstance().addOperation(operation);
    platform.dispatch.runUntilIdle();
    EXPECT_TRUE(operation->isExecuting());
    operation->start();  // a second start does nothing
    operation->cancel();
    platform.dispatch.runUntilIdle();
    EXPECT_TRUE(operation->isCancelled());
    EXPECT_TRUE(operation->isFinished());
    EXPECT_THAT(outcomes, ElementsAre("NetworkService 0"));
    EXPECT_EQ(platform.session.requests().size(), 1U);
}

}  // namespace
}  // namespace tavrolin
