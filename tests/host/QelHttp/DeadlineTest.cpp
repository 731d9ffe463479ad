#include <cstdlib>
#include <future>
#include <thread>

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
using test::HttpsTestServer;

/// That a transfer ends wherever it stands is tested with the client's release.
class DeadlineTest : public HttpFixture {
 protected:
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

TEST_F(DeadlineTest, DoesNotWaitForANameServer) {
  const ScopeGuard releasing([] { lookUpMayEnd.set_value(); });
  setSettings({});
  auto message = this->message();
  message.host = "slow.example";
  auto posting = std::async(std::launch::async, [&] { return post(message); });
  lookUpBegan.get_future().wait();
  setExitDeadline(milliseconds(50));
  // Far above what an ended transfer needs, far below every other limit.
  EXPECT_EQ(posting.wait_for(std::chrono::seconds(5)), std::future_status::ready);
  EXPECT_EQ(posting.get(), "posting to slow.example failed: the exit deadline has passed");
}

TEST_F(DeadlineTest, LeavesWhatEndsBeforeItAlone) {
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  const std::pair<std::optional<milliseconds>, std::string> cases[] = {
      {milliseconds(60'000), "200"},
      {milliseconds::max(), "200"},
      {milliseconds::min(), failureAt(server) + "the exit deadline has passed"},
      {std::nullopt, "200"},
  };
  for (const auto& [fromNow, expected] : cases) {
    setExitDeadline(fromNow);
    EXPECT_EQ(post(message()), expected);
  }
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
