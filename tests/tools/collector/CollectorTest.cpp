#include <gmock/gmock.h>

#include "tests/tools/collector/CollectorProcess.h"
#include "tests/tools/collector/StoreQuery.h"

namespace qel::collector {
namespace {

using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* path = "/authenticated/customer-care.php";
constexpr const char* json = "application/json; charset=utf-8";
constexpr const char* package = R"({"version": "3.1", "events": [{"Category":"canary"},bad]})";
constexpr std::size_t limit = std::size_t{16} * 1024 * 1024;

/// The status of the answer, or -1 without one.
int statusOf(const httplib::Result& result) { return result ? result->status : -1; }

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

TEST(Collector, storesPackagesAndSaysWhatItRefuses) {
  CollectorProcess collector;
  auto& client = collector.client();
  client.set_keep_alive(true);
  EXPECT_EQ(statusOf(client.Post(path, package, json)), 204);
  EXPECT_EQ(statusOf(client.Post(path, "no package", "Application/JSON")), 204);
  EXPECT_THAT(query(collector.store(), "SELECT text FROM events"),
              ElementsAre(R"({"Category":"canary"})"));
  EXPECT_THAT(query(collector.store(), "SELECT text FROM refused"),
              ElementsAre("bad", "no package"));

  EXPECT_EQ(statusOf(client.Post(path, package, "text/plain")), 415);
  EXPECT_EQ(statusOf(client.Post(path, {{"Content-Encoding", "gzip"}}, package, json)), 415);
  EXPECT_EQ(statusOf(client.Post("/authenticated/customer-care", package, json)), 404);
  EXPECT_EQ(statusOf(client.Get("/")), 404);
  EXPECT_EQ(statusOf(client.Get(path)), 405);
  EXPECT_EQ(statusOf(client.Delete(path)), 405);
  EXPECT_EQ(statusOf(client.Post(path, std::string(limit, 'x'), json)), 204);
  EXPECT_EQ(statusOf(client.Post(path, std::string(limit + 1, 'x'), json)), 413);

  const std::vector<std::pair<const char*, const char*>> strangers{{"ada", "sesame"},
                                                                   {"mallory", "open:sesame"}};
  for (const auto& [user, secret] : strangers) {
    client.set_basic_auth(user, secret);
    const auto refused = client.Post(path, std::string(limit, 'x'), json);
    ASSERT_EQ(statusOf(refused), 401);
    EXPECT_EQ(refused->body, "unknown user or wrong secret\n");
    EXPECT_EQ(refused->get_header_value("WWW-Authenticate"),
              R"(Basic realm="analytics", charset="UTF-8")");
  }
  collector.terminate();
  EXPECT_EQ(collector.join(), 0);
  const std::string log = collector.errors();
  EXPECT_THAT(log, HasSubstr("204: events 1, environments 0, refused texts 1, "));
  for (const char* secret : {"canary", "sesame", "mallory", "ada", "b3Blbj"}) {
    EXPECT_THAT(log, Not(HasSubstr(secret)));
  }
}

TEST(Collector, answersWhileTheStoreTakesNothing) {
  CollectorProcess collector;
  query(collector.store(), "DROP TABLE events");
  const auto answer = collector.client().Post(path, package, json);
  ASSERT_EQ(statusOf(answer), 503);
  EXPECT_EQ(answer->body, "") << "the client has no business with the reason";
  EXPECT_THAT(query(collector.store(), "SELECT text FROM refused"), ElementsAre());
  EXPECT_THAT(collector.errors(), HasSubstr("503: cannot use the store "));
}

TEST(Collector, servesOthersBesideSlowAndEndlessClients) {
  CollectorProcess collector;
  std::array<int, 100> silent{};
  for (int& socket : silent) {
    socket = connectSilently(collector.port());
  }
  const auto begin = steady_clock::now();
  EXPECT_EQ(statusOf(collector.client().Post(path, package, json)), 204);
  // Less than the time that it gives a silent connection.
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(5));
  for (const int socket : silent) {
    ::close(socket);
  }
  httplib::Headers endless;
  for (int header = 0; header < 100; ++header) {
    endless.emplace(std::string("X-") + std::to_string(header), std::string(2000, 'x'));
  }
  EXPECT_EQ(statusOf(collector.client().Get("/", endless)), -1);
  EXPECT_EQ(statusOf(collector.client().Get("/")), 404);
}

TEST(Collector, finishesARequestUnderWayWhenItIsStopped) {
  CollectorProcess collector;
  auto idle = httplib::SSLClient("127.0.0.1", collector.port());
  idle.enable_server_certificate_verification(false);
  idle.set_keep_alive(true);
  EXPECT_EQ(statusOf(idle.Post("/", "", json)), 404);

  const std::string body(limit, 'x');
  // More than the buffers between client and server hold: the server is in the midst of it.
  const std::size_t underWay = body.size() - 1000;
  const auto provide = [&](std::size_t offset, std::size_t /*length*/, httplib::DataSink& sink) {
    if (offset == 0) {
      return sink.write(body.data(), underWay);
    }
    collector.terminate();
    for (int socket = 0; (socket = connectSilently(collector.port())) != -1;) {
      ::close(socket);
    }
    return sink.write(body.data() + offset, body.size() - offset);
  };
  EXPECT_EQ(statusOf(collector.client().Post(path, body.size(), provide, json)), 204);
  const auto begin = steady_clock::now();
  EXPECT_EQ(collector.join(), 0);
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(5)) << "an idle client held it up";
  EXPECT_THAT(query(collector.store(), "SELECT length(text) FROM refused"),
              ElementsAre("16777216"));
}

TEST(Collector, endsWithALineAndAStatusAfterBadInput) {
  const std::string here = testing::TempDir();
  const std::string missing = here + "qel-missing";
  const std::vector<std::tuple<std::vector<std::string>, int, std::string>> cases{
      {{"--version"}, 0, ""},
      {{"--store=s"}, 2, "qel-collector: --certificate FILE is required\n"},
      {{"--certificate=c", "--key=k", "--credentials", missing, "--store=s"},
       2,
       "qel-collector: cannot read the credentials file " + missing +
           ": No such file or directory\n"},
  };
  for (const auto& [arguments, status, message] : cases) {
    CollectorProcess collector(arguments);
    EXPECT_EQ(collector.join(), status);
    EXPECT_EQ(collector.errors(), message);
  }
}

}  // namespace
}  // namespace qel::collector
