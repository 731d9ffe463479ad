#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

#include <boost/asio.hpp>
#include <gmock/gmock.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "tests/support/Logged.h"
#include "tests/support/Process.h"
#include "tests/support/TestCertificates.h"
#include "tests/tools/CommandTest.h"
#include "tools/collector/AdminServer.h"
#include "tools/collector/Metrics.h"
#include "tools/collector/Reload.h"
#include "tools/collector/TlsSettings.h"

namespace qel::collector {
namespace {

using namespace testing;
using namespace std::chrono_literals;
using boost::asio::ip::tcp;

class AdminTest : public test::CommandTest {
 protected:
  tcp::socket connect(const std::string& from = "127.0.0.1") {
    tcp::socket socket(io_, {boost::asio::ip::make_address(from), 0});
    socket.connect({boost::asio::ip::address_v4::loopback(), server_.endpoint().port});
    return socket;
  }

  /// What the server answers to this text, until it closes the connection.
  std::string answerTo(const std::string& request, const std::string& from = "127.0.0.1") {
    tcp::socket socket = connect(from);
    boost::system::error_code ignored;
    boost::asio::write(socket, boost::asio::buffer(request), ignored);
    std::string answer;
    boost::asio::read(socket, boost::asio::dynamic_buffer(answer), ignored);
    return answer;
  }

  boost::asio::io_context io_;
  std::atomic<bool> isStopping_ = false;
  AdminServer server_{{"127.0.0.1", 0},
                      adminPages([this] { return std::string(isStopping_ ? "stopping" : ""); },
                                 []() -> std::string { throw qel::exception("no figures"); })};
};

TEST_F(AdminTest, ServesItsPagesAndNothingElse) {
  setenv("ADMIN", ("127.0.0.1:" + std::to_string(server_.endpoint().port)).c_str(), 1);
  expectTranscript("collector/admin.txt");
  isStopping_ = true;
  expectTranscript("collector/stopping.txt");
  EXPECT_THROW(AdminServer(server_.endpoint(), {}), qel::exception);
}

TEST_F(AdminTest, ClosesSilentConnectionsAndThoseBeyondItsLimit) {
  const std::string request = "GET /health HTTP/1.0\r\n\r\n";
  std::vector<tcp::socket> silent;
  for (const char* const address : {"127.0.0.1", "127.0.0.2"}) {
    EXPECT_THAT(answerTo(request, address), HasSubstr("ok\n"));
    for (int i = 0; i < 32; ++i) {
      silent.push_back(connect(address));
    }
    EXPECT_EQ(answerTo(request, address), "");
  }
  EXPECT_EQ(answerTo(request, "127.0.0.3"), "");
  const auto time = test::timeOf(
      [&] { EXPECT_TRUE(test::waitUntil([&] { return !answerTo(request).empty(); })); });
  EXPECT_THAT(time, AllOf(Gt(4s), Lt(15s)));
}

TEST(MetricsTest, WritesPrometheusText) {
  Metrics metrics;
  Package package;
  package.events = {{"a", 2, {}}, {"b", 1, {}}};
  package.refused = {{"c", 4, ""}};
  metrics.countStored(package, 1'000'000);
  metrics.countAnswer(204, 10ms);
  metrics.countAnswer(503, 11s);
  metrics.countAnswer(299, 2ms);
  const std::chrono::system_clock::time_point end{1h};
  EXPECT_EQ(toText(metrics.all({true, 1, 2, 3, {4'000'000'000, 5}, end, 6})),
            test::contentOf(QEL_TOOLS_TESTS "/collector/metrics.txt"));
}

TEST(ReloadTest, ReadsChangedFilesAndKeepsTheOldOnesIfTheyAreBroken) {
  test::TestCertificates certificates;
  const test::TemporaryDirectory directory;
  const auto certificate = certificates.issue("localhost");
  const auto key = directory.path() / "key";
  std::filesystem::copy_file(certificate, key);
  const std::string goodKey = test::contentOf(key);
  const std::string otherKey = test::Process("openssl genpkey -algorithm ed25519").readUntil(EOF);
  const test::CapturedLog log(log::Level::Info);
  const auto replaceKey = [&](const std::string& text) {
    std::filesystem::rename(test::write(directory.path() / "new", text), key);
  };
  test::Tally attempts;
  const auto load = [&] {
    const ScopeGuard count([&] { attempts.add(); });
    EXPECT_GT(certificateEnd(*makeTlsContext(certificate, key)), std::chrono::system_clock::now());
  };
  {
    Reload reload({{"certificate and key", {certificate, key}, load}}, 10ms);
    std::this_thread::sleep_for(100ms);  // nothing announces that nothing happens
    EXPECT_EQ(attempts.count(), 0);
    replaceKey(otherKey);
    ASSERT_TRUE(attempts.reaches(1));
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(attempts.count(), 1) << "tried the same files again";
    replaceKey(goodKey);
    ASSERT_TRUE(attempts.reaches(2));
    std::filesystem::remove(key);
    ASSERT_TRUE(attempts.reaches(3));
    replaceKey(goodKey);
    ASSERT_TRUE(attempts.reaches(4));
    reload.now();
    ASSERT_TRUE(attempts.reaches(5));
  }
  std::string outcomes;
  std::istringstream lines(log.text());
  for (std::string line; std::getline(lines, line);) {
    outcomes += line.substr(line.find("qel.collector: ") + strlen("qel.collector: "), 5);
  }
  EXPECT_EQ(outcomes, "keepsread keepsread read ") << log.text();
}

TEST(ReloadTest, DoesNotReadAFileThatIsBeingWritten) {
  const test::TemporaryDirectory directory;
  const auto file = test::write(directory.path() / "users", "");
  std::string read;
  test::Tally loads;
  const Reload reload({{"users",
                        {file},
                        [&] {
                          read = test::contentOf(file);
                          loads.add();
                        }}},
                      500ms);
  std::string written;
  for (int i = 0; i < 70; ++i) {
    test::write(file, written += "line\n");
    std::this_thread::sleep_for(10ms);
  }
  ASSERT_TRUE(loads.reaches(1));
  EXPECT_EQ(read, written);
}

}  // namespace
}  // namespace qel::collector
