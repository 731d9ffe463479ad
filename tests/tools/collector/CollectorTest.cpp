#include "tests/tools/collector/CollectorTest.h"

#include <future>
#include <semaphore>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/support/StalledPipe.h"

namespace qel::collector {
namespace {

using std::chrono::steady_clock;
using test::query;
using namespace testing;

constexpr std::size_t limit = std::size_t{64} * 1024 * 1024;

/// A connection that never says anything.
int connectSilently(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
    return socket;
  }
  ::close(socket);
  return -1;
}

TEST_F(CollectorTest, storesPackagesAndSaysWhatItRefuses) {
  EXPECT_EQ(statusOf(client_.Post(path, package, json)), 204);
  EXPECT_EQ(statusOf(client_.Post(path, "no package", "Application/JSON")), 204);
  EXPECT_THAT(query(store_, "SELECT text FROM events"), ElementsAre(R"({"Category":"canary"})"));
  EXPECT_THAT(query(store_, "SELECT text FROM refused"), ElementsAre("bad", "no package"));

  EXPECT_EQ(statusOf(client_.Post(path, package, "text/plain")), 415);
  EXPECT_EQ(statusOf(client_.Post(path, {{"Content-Encoding", "gzip"}}, package, json)), 415);
  EXPECT_EQ(statusOf(client_.Post("/%0A", package, json)), 404);
  EXPECT_EQ(statusOf(client_.Delete(path)), 405);
  EXPECT_EQ(statusOf(client_.Post(path, std::string(limit, 'x'), json)), 204);
  EXPECT_EQ(statusOf(client_.Post(path, std::string(limit + 1, 'x'), json)), 413);
  client_.set_basic_auth("mallory", "open:sesame");
  const auto refused = client_.Post(path, std::string(limit, 'x'), json);
  ASSERT_EQ(statusOf(refused), 401);
  EXPECT_EQ(refused->body, "unknown user or wrong secret\n");
  EXPECT_EQ(refused->get_header_value("WWW-Authenticate"),
            R"(Basic realm="analytics", charset="UTF-8")");

  collector_.terminate();
  EXPECT_EQ(collector_.join(), 0);
  const std::string log = collector_.errors();
  EXPECT_THAT(log, HasSubstr("204: events 1, environments 0, refused texts 1, "));
  for (const char* secret : {"canary", "sesame", "mallory", "ada", "b3Blbj"}) {
    EXPECT_THAT(log, Not(HasSubstr(secret)));
  }
}

TEST_F(CollectorTest, storesNothingOfAPackageWhileTheStoreIsFull) {
  query(store_,
        "CREATE TRIGGER full BEFORE INSERT ON events WHEN NEW.event = 'last'"
        " BEGIN SELECT raise(ABORT, 'disk full'); END");
  const std::string text = R"({"version": "3.1", "events": [{"a":1},{"Event":"last"}]})";
  const auto answer = client_.Post(path, text, json);
  ASSERT_EQ(statusOf(answer), 503);
  EXPECT_EQ(answer->body, "") << "the client has no business with the reason";
  const std::string full = "503: cannot use the store " + store_.string() + ": disk full";
  EXPECT_THAT(collector_.errorsWith(full), HasSubstr(full));
  EXPECT_THAT(query(store_, "SELECT text FROM events"), ElementsAre());
  query(store_, "DROP TRIGGER full");
  EXPECT_EQ(statusOf(client_.Post(path, text, json)), 204);
  EXPECT_THAT(query(store_, "SELECT text FROM events"), SizeIs(2));
}

TEST_F(CollectorTest, servesOthersBesideSlowAndEndlessClients) {
  std::array<int, 100> silent{};
  for (int& socket : silent) {
    socket = connectSilently(port_);
  }
  // Less than the time that it gives a silent connection.
  client_.set_read_timeout(std::chrono::seconds(5));
  EXPECT_EQ(statusOf(client_.Post(path, package, json)), 204);
  for (const int socket : silent) {
    ::close(socket);
  }
  httplib::Headers endless;
  for (int header = 0; header < 100; ++header) {
    endless.emplace("X-" + std::to_string(header), std::string(2000, 'x'));
  }
  EXPECT_EQ(statusOf(client_.Get("/", endless)), -1);
  EXPECT_EQ(statusOf(client_.Get("/")), 404);
}

TEST_F(CollectorTest, servesOthersBesideKnownSendersThatHoldTheirBodiesBack) {
  std::counting_semaphore begun(0);
  std::atomic<bool> served = false;
  const auto holdBack = [&](std::size_t, std::size_t, httplib::DataSink&) {
    begun.release();
    served.wait(false);
    return false;
  };
  std::vector<std::jthread> flood(200);
  for (auto& thread : flood) {
    thread = std::jthread([&] {
      httplib::SSLClient client("127.0.0.1", port_);
      client.enable_server_certificate_verification(false);
      client.set_basic_auth("ada", "open:sesame");
      client.Post(path, limit, holdBack, json);
    });
  }
  for (int workers = 64; workers > 0; --workers) {
    begun.acquire();
  }
  client_.set_connection_timeout(std::chrono::seconds(5));
  client_.set_read_timeout(std::chrono::seconds(5));
  EXPECT_EQ(statusOf(client_.Post(path, package, json)), 204);
  const std::string cut = "cut: makes room for others, from 127.0.0.1:";
  EXPECT_THAT(collector_.errorsWith(cut), HasSubstr(cut));
  served = true;
  served.notify_all();
}

TEST_F(CollectorTest, refusesWhatProgramsUnderstandDifferentlyAndSaysWhoSentIt) {
  const std::vector<httplib::Headers> ambiguities{
      {{"Content-Length", "2"}, {"Content-Length", "20"}},
      {{"Content-Length", "2, 2"}},
      {{"Content-Length", "+2"}},
      {{"Content-Length", "2x"}},
      {{"Content-Length", "2"}, {"Transfer-Encoding", "chunked"}},
      {{"Transfer-Encoding", "chunked"}},
  };
  for (const auto& headers : ambiguities) {
    EXPECT_EQ(statusOf(client_.Post(path, headers, "{}", json)), 411) << headers.begin()->second;
  }
  httplib::Request malformed;
  malformed.method = "BAD";
  malformed.path = "/";
  EXPECT_EQ(statusOf(client_.send(malformed)), 400);

  const int plain = connectSilently(port_);
  const std::string_view request = "GET / HTTP/1.1\r\n\r\n";
  EXPECT_EQ(::send(plain, request.data(), request.size(), 0), std::ssize(request));
  for (char answer = 0; ::recv(plain, &answer, 1, 0) > 0;) {
  }
  ::close(plain);
  const std::string noTls = "no TLS connection: http request, from 127.0.0.1:";
  EXPECT_THAT(collector_.errorsWith(noTls),
              AllOf(HasSubstr("400: malformed request, 0 ms, from 127.0.0.1:"), HasSubstr(noTls)));
}

TEST_F(CollectorTest, finishesARequestUnderWayWhenItIsStopped) {
  httplib::SSLClient idle("127.0.0.1", port_);
  idle.enable_server_certificate_verification(false);
  idle.set_keep_alive(true);
  idle.set_basic_auth("ada", "open:sesame");
  EXPECT_EQ(statusOf(idle.Post(path, R"({"version": "3.1", "events": [{}]})", json)), 204);

  const std::string body(limit, 'x');
  // More than the buffers between client and server hold: the server is in the midst of it.
  const std::size_t underWay = body.size() - 1000;
  const auto provide = [&](std::size_t offset, std::size_t /*length*/, httplib::DataSink& sink) {
    if (offset == 0) {
      return sink.write(body.data(), underWay);
    }
    collector_.terminate();
    for (int socket = 0; (socket = connectSilently(port_)) != -1;) {
      ::close(socket);
    }
    return sink.write(body.data() + offset, body.size() - offset);
  };
  EXPECT_EQ(statusOf(client_.Post(path, body.size(), provide, json)), 204);
  const auto begin = steady_clock::now();
  EXPECT_EQ(collector_.join(), 0);
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(5)) << "an idle client held it up";
  EXPECT_THAT(query(store_, "SELECT length(text) FROM refused"), ElementsAre("67108864"));
}

TEST_F(CollectorTest, servesAndStopsAlthoughNobodyReadsItsLog) {
  const test::StalledPipe log;
  test::Process collector(
      "sh -c 'exec " COLLECTOR_PROGRAM " --listen=127.0.0.1:0 --credentials=" + users_.string() +
      " --store=" + (directory_.path() / "other.db").string() +
      " --certificate=" + identity_.certificate.string() + " --key=" + identity_.key.string() +
      " 2>" + log.path().string() + "'");
  const int port = std::stoi(collector.readUntil('\n').substr(strlen("listening on 127.0.0.1:")));
  httplib::SSLClient client("localhost", port);
  client.set_ca_cert_path(certificates_.caFile());
  client.set_read_timeout(std::chrono::seconds(10));
  EXPECT_EQ(statusOf(client.Get("/")), 404);
  collector.terminate();
  auto end = std::async(std::launch::async, [&] { return collector.join(); });
  const bool isInTime = end.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  EXPECT_TRUE(isInTime);
  if (!isInTime) {
    kill(collector.id(), SIGKILL);
  }
  EXPECT_EQ(end.get(), 0);
}

}  // namespace
}  // namespace qel::collector
