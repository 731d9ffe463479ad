#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string_view>
#include <thread>
#include <vector>

#include <netdb.h>

#include "host/QelUtilities/ScopeGuard.h"
#include "tests/host/QelHttp/HttpFixture.h"
#include "tests/support/Tally.h"

namespace {

std::promise<void> lookUpBegan;
std::promise<void> lookUpMayEnd;

}  // namespace

/// In place of the system's: nothing here has to be looked up, and one name takes forever.
extern "C" int getaddrinfo(const char* name, const char*, const addrinfo*, addrinfo**) {
  if (name != nullptr && std::string_view(name) == "slow.example") {
    lookUpBegan.set_value();
    lookUpMayEnd.get_future().wait();
  }
  return EAI_NONAME;
}

namespace qel::protocol::https {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test::AnswerAfter;
using test::HttpsTestServer;
using test::Manner;
using test::Protocol;

/// Far above what an ended transfer needs, far below every other limit.
constexpr std::chrono::seconds soon{5};

class DeadlineTest : public HttpFixture {
 protected:
  /// Posts on another thread, arms the deadline when that is under way, and waits for the end.
  static std::string endPost(const Message& message,
                             const std::function<void()>& waitUntilStalled) {
    auto posting = std::async(std::launch::async, [&] { return post(message); });
    waitUntilStalled();
    EXPECT_EQ(posting.wait_for(milliseconds(200)), std::future_status::timeout);
    setExitDeadline(milliseconds(50));
    const auto armed = steady_clock::now();
    std::string result = posting.get();
    EXPECT_LT(steady_clock::now() - armed, soon);
    return result;
  }

  /// What a host does that exits under its posting threads.
  [[noreturn]] static void exitWhilePosting(const Message& message) {
    static auto& posted = *new test::Tally;  // The threads may outlive all that is destroyed.
    for (int i = 0; i < 4; ++i) {
      std::thread([message] {
        while (post(message) == "200") {
          posted.add();
        }
      }).detach();
    }
    std::exit(posted.reaches(1) ? 0 : 2);
  }
};

TEST_F(DeadlineTest, EndsATransferWhereverItStands) {
  struct Row {
    const char* name;
    Protocol protocol;
    Manner manner;
    std::string body;
  };
  const std::vector<Row> rows = {
      {"shaking hands", Protocol::Silent, {}, "{}"},
      {"uploading", Protocol::Tls, Manner::Stalled, megabytes(32)},
      {"waiting", Protocol::Tls, Manner::Stalled, "{}"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    auto options = serverOptions({200, row.manner});
    options.protocol = row.protocol;
    options.answerAfter = AnswerAfter::Headers;
    const HttpsTestServer server(options);
    auto settings = settingsFor(server);
    settings.lowSpeedBytesPerSecond = 0;
    setSettings(settings);
    setExitDeadline(std::nullopt);
    const auto ended = endPost(message(row.body), [&] {
      ASSERT_TRUE(server.waitFor(1, row.protocol == Protocol::Silent ? 0 : 1));
    });
    EXPECT_EQ(ended, failureAt(server) + "the exit deadline has passed");
    EXPECT_EQ(post(message()), failureAt(server) + "the exit deadline has passed");
    EXPECT_EQ(server.connections(), 1);
  }
}

TEST_F(DeadlineTest, DoesNotWaitForANameServer) {
  const ScopeGuard releasing([] { lookUpMayEnd.set_value(); });
  setSettings({});
  auto message = this->message();
  message.host = "slow.example";
  EXPECT_EQ(endPost(message, [] { lookUpBegan.get_future().wait(); }),
            "posting to slow.example failed: the exit deadline has passed");
}

TEST_F(DeadlineTest, LeavesWhatEndsBeforeItAlone) {
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  for (const auto fromNow : {milliseconds(60'000), milliseconds::max()}) {
    setExitDeadline(fromNow);
    EXPECT_EQ(post(message()), "200");
  }
  setExitDeadline(milliseconds::min());
  EXPECT_EQ(post(message()), failureAt(server) + "the exit deadline has passed");
  setExitDeadline(std::nullopt);
  EXPECT_EQ(post(message()), "200");
}

TEST_F(DeadlineTest, LetsTheProcessExitUnderPostingThreads) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const HttpsTestServer server(serverOptions());
  // The processes that exit begin this test anew, but post to the server of the first.
  setenv("QEL_TEST_SERVER", server.address().c_str(), 0);
  setenv("QEL_TEST_AUTHORITY", certificates_.caFile().c_str(), 0);
  auto settings = settingsFor(server);
  settings.connectTo = getenv("QEL_TEST_SERVER");
  settings.caBundle = getenv("QEL_TEST_AUTHORITY");
  setSettings(settings);
  auto message = this->message(megabytes(1));
  message.closeConnection = true;
  for (int i = 0; i < 10; ++i) {
    EXPECT_EXIT(exitWhilePosting(message), testing::ExitedWithCode(0), "");
  }
  EXPECT_GE(server.requests().size(), 10U);
}

}  // namespace
}  // namespace qel::protocol::https
