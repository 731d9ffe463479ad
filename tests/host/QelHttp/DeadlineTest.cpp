#include <array>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string_view>
#include <thread>
#include <vector>

#include <netdb.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/QelUtilities/ScopeGuard.h"
#include "tests/host/QelHttp/HttpFixture.h"

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

  /// The process of a host that exits under its posting threads.
  [[noreturn]] static void exitWhilePosting(Settings settings, const Message& message,
                                            int addressPipe) {
    std::array<char, 64> address{};
    if (read(addressPipe, address.data(), address.size() - 1) <= 0) {
      _exit(2);
    }
    settings.connectTo = address.data();
    setSettings(settings);
    static std::promise<void> firstPosted;
    std::thread([message] {
      Client().post(message);
      firstPosted.set_value();
    }).detach();
    for (int i = 0; i < 3; ++i) {
      std::thread([message] {
        while (post(message) == "200") {
        }
      }).detach();
    }
    firstPosted.get_future().wait();
    std::exit(0);
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
      ASSERT_TRUE(row.protocol == Protocol::Silent ? server.waitForConnections(1)
                                                   : server.waitForRequests(1));
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
  auto message = this->message(megabytes(1));
  message.closeConnection = true;
  Settings settings;
  settings.caBundle = certificates_.caFile();
  settings.connectFor = serverName;
  for (int i = 0; i < 10; ++i) {
    std::array<int, 2> addressPipe{};
    ASSERT_EQ(pipe(addressPipe.data()), 0);
    const pid_t host = fork();
    ASSERT_GE(host, 0);
    if (host == 0) {
      exitWhilePosting(settings, message, addressPipe[0]);
    }
    const HttpsTestServer server(serverOptions());
    const auto address = server.address();
    ASSERT_EQ(write(addressPipe[1], address.data(), address.size()), std::ssize(address));
    int status = 0;
    ASSERT_EQ(waitpid(host, &status, 0), host);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    close(addressPipe[0]);
    close(addressPipe[1]);
  }
}

}  // namespace
}  // namespace qel::protocol::https
