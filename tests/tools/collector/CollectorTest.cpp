#include "tests/tools/collector/CollectorTest.h"

#include <unistd.h>

#include "tests/support/StalledPipe.h"

namespace qel::collector {
namespace {

using namespace testing;

constexpr std::size_t limit = std::size_t{64} * 1024 * 1024;

TEST_F(CollectorTest, StoresPackagesAndExplainsRefusals) {
  const std::string largest(limit, 'x');
  EXPECT_EQ(statusOf(client_.Post(path, package, json)), 204);
  EXPECT_EQ(statusOf(client_.Post(path, "no package", "Application/JSON")), 204);
  EXPECT_THAT(stored("text FROM events"), ElementsAre(R"({"Category":"canary"})"));
  EXPECT_THAT(stored("text FROM refused"), ElementsAre("bad", "no package"));

  EXPECT_EQ(statusOf(client_.Post(path, package, "text/plain")), 415);
  EXPECT_EQ(statusOf(client_.Post(path, {{"Content-Encoding", "gzip"}}, package, json)), 415);
  EXPECT_EQ(statusOf(client_.Post("/%0A", package, json)), 404);
  EXPECT_EQ(statusOf(client_.Delete(path)), 405);
  EXPECT_EQ(statusOf(client_.Post(path, largest, json)), 204);
  EXPECT_EQ(statusOf(client_.Post(path, largest + 'x', json)), 413);
  client_.set_basic_auth("mallory", "open:sesame");
  const auto refused = client_.Post(path, largest, json);
  ASSERT_EQ(statusOf(refused), 401);
  EXPECT_EQ(refused->body, "unknown user or wrong secret\n");
  EXPECT_EQ(refused->get_header_value("WWW-Authenticate"),
            R"(Basic realm="analytics", charset="UTF-8")");

  collector_.terminate();
  EXPECT_EQ(collector_.join(), 0);
  const std::string log = collector_.errors();
  EXPECT_THAT(log, HasSubstr("204: events 1, environments 0, refused texts 1, "));
  for (const char* const secret : {"canary", "sesame", "mallory", "ada", "b3Blbj"}) {
    EXPECT_THAT(log, Not(HasSubstr(secret)));
  }
}

TEST_F(CollectorTest, StoresNothingOfAPackageWhileTheStoreIsFull) {
  test::query(store_,
              "CREATE TRIGGER full BEFORE INSERT ON events WHEN NEW.event = 'last'"
              " BEGIN SELECT raise(ABORT, 'disk full'); END");
  const std::string text = R"({"version": "3.1", "events": [{"a":1},{"Event":"last"}]})";
  const auto answer = client_.Post(path, text, json);
  ASSERT_EQ(statusOf(answer), 503);
  EXPECT_EQ(answer->body, "") << "the reason is not for the client";
  const std::string full = "503: cannot use the store " + store_.string() + ": disk full";
  EXPECT_THAT(collector_.errorsWith(full), HasSubstr(full));
  EXPECT_THAT(stored("text FROM events"), IsEmpty());
  test::query(store_, "DROP TRIGGER full");
  EXPECT_EQ(statusOf(client_.Post(path, text, json)), 204);
  EXPECT_THAT(stored("text FROM events"), SizeIs(2));
}

TEST_F(CollectorTest, FinishesARequestUnderWayWhenItIsStopped) {
  httplib::SSLClient idle("localhost", port_);
  idle.set_ca_cert_path(certificates_.caFile());
  idle.set_keep_alive(true);
  idle.set_basic_auth("ada", "open:sesame");
  EXPECT_EQ(statusOf(idle.Post(path, R"({"version": "3.1", "events": [{}]})", json)), 204);

  const std::string body(limit, 'x');
  // More than the buffers between client and server hold: the server has begun to read it.
  const std::size_t underWay = body.size() - 1000;
  const auto provide = [&](std::size_t offset, std::size_t /*length*/, httplib::DataSink& sink) {
    if (offset == 0) {
      return sink.write(body.data(), underWay);
    }
    collector_.terminate();
    collector_.errorsWith("cut: the server stops");
    return sink.write(body.data() + offset, body.size() - offset);
  };
  EXPECT_EQ(statusOf(client_.Post(path, body.size(), provide, json)), 204);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(collector_.join(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5))
      << "an idle client held it up";
  EXPECT_THAT(stored("length(text) FROM refused"), ElementsAre("67108864"));
}

TEST_F(CollectorTest, AcceptsTheUsersOfItsFileAlone) {
  // The tokens were made with the `base64` command.
  for (const auto& [authorization, status] : std::map<std::string, int>{
           {"Basic YWRhOm9wZW46c2VzYW1l", 204},
           {"Basic Ym9iOiMx", 204},
           {"Basic Ym9iOiMy", 401},
           {"Basic YWRhOg==", 401},
           {"Basic IyBwZW9wbGU=", 401},
           {"Basic YWRhOm9wZW46c2VzYW1lDQ==", 401},
           {"Bearer YWRhOm9wZW46c2VzYW1l", 401},
           {"", 401},
       }) {
    httplib::SSLClient client("localhost", port_);
    client.set_ca_cert_path(certificates_.caFile());
    EXPECT_EQ(statusOf(client.Post(path, {{"Authorization", authorization}}, package, json)),
              status)
        << authorization;
  }
}

TEST_F(CollectorTest, SaysWhyItCannotBegin) { expectTranscript("collector/options.txt"); }

TEST_F(CollectorTest, ServesAndStopsAlthoughNobodyReadsItsLog) {
  const test::StalledPipe log;
  test::Process collector("sh -c 'exec " + command_ + " 2>" + log.path().string() + "'");
  httplib::SSLClient client("localhost", portOf(collector));
  client.set_ca_cert_path(certificates_.caFile());
  client.set_read_timeout(std::chrono::seconds(10));
  EXPECT_EQ(statusOf(client.Get("/")), 404);
  collector.terminate();
  ::alarm(10);  // ends this program unless the collector ends first
  EXPECT_EQ(collector.join(), 0);
  ::alarm(0);
}

}  // namespace
}  // namespace qel::collector
