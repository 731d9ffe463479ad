// Sends the program what no HTTP client would.

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include "tests/support/Query.h"
#include "tests/tools/collector/CollectorTest.h"

namespace qel::collector {
namespace {

using test::query;
using namespace testing;

constexpr const char* host = "Host: localhost\r\n";
/// Of a TLS record: some of what is sent still waits in the socket while the server answers.
constexpr std::size_t recordSize = 512;

std::string credentials(const std::string& secret) {
  return "Authorization: " + httplib::make_basic_authentication_header("ada", secret).second +
         "\r\n";
}

/// The end of a head, and the body.
std::string bodyWithLength(const std::string& body) {
  return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string postHead = "POST " + std::string(path) + " HTTP/1.1\r\n" + host;
const std::string jsonType = "Content-Type: " + std::string(json) + "\r\n";
const std::string validHead = postHead + credentials("open:sesame") + jsonType;

using Tls = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

Tls makeTls() { return {SSL_CTX_new(TLS_client_method()), SSL_CTX_free}; }

/// A TLS connection to a port of this machine, which sends when it is flushed.
class RawConnection {
 public:
  RawConnection(int port, SSL_CTX* tls)
      : socket_(BIO_new_connect(("127.0.0.1:" + std::to_string(port)).c_str())) {
    BIO* const buffer = BIO_new(BIO_f_buffer());
    BIO_set_write_buffer_size(buffer, 1 << 16);
    chain_.reset(BIO_push(BIO_new_ssl(tls, 1), BIO_push(buffer, socket_)));
    EXPECT_EQ(BIO_do_connect(socket_), 1);
    const timeval shorterThanIdle{4, 0};
    ::setsockopt(static_cast<int>(BIO_get_fd(socket_, nullptr)), SOL_SOCKET, SO_RCVTIMEO,
                 &shorterThanIdle, sizeof(shorterThanIdle));
  }

  bool shakesHands() { return BIO_do_handshake(chain_.get()) == 1; }

  void send(const std::string& bytes) {
    EXPECT_EQ(BIO_write(chain_.get(), bytes.data(), static_cast<int>(bytes.size())),
              std::ssize(bytes));
    EXPECT_EQ(BIO_flush(chain_.get()), 1);
  }

  /// All that comes until the server closes the connection, or says nothing more.
  std::string read() {
    std::string text;
    std::array<char, 4096> part{};
    for (int size = 1; size > 0;) {
      size = BIO_read(chain_.get(), part.data(), part.size());
      text.append(part.data(), static_cast<std::size_t>(std::max(size, 0)));
    }
    return text;
  }
  bool isClosed() const { return !BIO_should_retry(chain_.get()); }

 private:
  BIO* const socket_;
  std::unique_ptr<BIO, decltype(&BIO_free_all)> chain_{nullptr, BIO_free_all};
};

TEST_F(CollectorTest, takesNoBytesOfARefusedRequestForTheNextOne) {
  const std::string filling = "X: " + std::string(recordSize, 'x') + "\r\n";
  const std::string smuggled = validHead + filling + bodyWithLength(package);
  const std::string tail = bodyWithLength(smuggled);
  const std::string stranger = postHead + credentials("wrong") + jsonType;
  const std::string longText(9000, 'x');
  const std::vector<std::pair<std::string, std::string>> attempts{
      {"416", stranger + "Range: bytes=zz\r\n" + tail},
      {"416", validHead + "Range: bytes=2-1\r\n" + tail},
      {"416", validHead + "Range: bytes=\r\n\r\n"},
      {"414", "POST /" + longText + " HTTP/1.1\r\n" + host + tail},
      {"400", "BAD / HTTP/1.1\r\n" + tail},
      {"400", "POST / HTTP/2.0\r\n" + tail},
      {"400", "\r\n" + smuggled},
      {"400", stranger + "X: " + longText + "\r\n" + tail},
      {"405", "HEAD " + std::string(path) + " HTTP/1.1\r\n" + tail},
      {"404", "HEAD / HTTP/1.1\r\n" + tail},
      {"416", "GET " + std::string(path) + " HTTP/1.1\r\nRange: bytes=-0\r\n" + tail},
      {"405", "PUT " + std::string(path) + " HTTP/1.1\r\nExpect: 100-continue\r\n" + tail},
      {"411", validHead + "Content-Length: 0\r\n" + tail},
      {"411", validHead + "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n" + smuggled},
      {"411", validHead + "Transfer-Encoding : chunked\r\n" + tail},
      {"503",
       postHead + "Content-Type: multipart/form-data; boundary=x\r\n" +
           bodyWithLength("--x\r\nContent-Disposition: form-data; name=y\r\n\r\n" + smuggled)},
      {"401", stranger + tail + smuggled},
      {"415", postHead + credentials("open:sesame") + tail + smuggled},
  };
  const Tls tls = makeTls();
  SSL_CTX_set_max_send_fragment(tls.get(), recordSize);
  for (const auto& [status, attempt] : attempts) {
    SCOPED_TRACE(attempt.substr(0, 100));
    RawConnection connection(port_, tls.get());
    connection.send(attempt);
    std::string answers = connection.read();
    const std::string goOn = "HTTP/1.1 100 Continue\r\n\r\n";
    answers.erase(0, answers.starts_with(goOn) ? goOn.size() : 0);
    EXPECT_THAT(answers, AllOf(StartsWith("HTTP/1.1 " + status), HasSubstr("Connection: close"),
                               Not(HasSubstr("Keep-Alive"))));
    EXPECT_EQ(answers.rfind("HTTP/1.1 "), 0) << answers;
    EXPECT_TRUE(connection.isClosed());
  }
  EXPECT_THAT(query(store_, "SELECT text FROM events"), ElementsAre());

  const std::string last = validHead + filling + "Connection: close\r\n" + bodyWithLength(package);
  RawConnection honest(port_, tls.get());
  honest.send(smuggled + last);
  EXPECT_THAT(honest.read(),
              AllOf(StartsWith("HTTP/1.1 204 "), ContainsRegex("\r\n\r\nHTTP/1.1 204 ")));
  EXPECT_THAT(query(store_, "SELECT text FROM events"), SizeIs(1));
}

TEST_F(CollectorTest, agreesOnKeysOfCheapGroupsAlone) {
  struct Case {
    const char* groups;
    int version;
    bool isTaken;
  };
  for (const auto& [groups, version, isTaken] : std::vector<Case>{
           {"X25519:P-256", TLS1_2_VERSION, true},
           {"X25519", TLS1_3_VERSION, true},
           {"P-256", TLS1_3_VERSION, true},
           {"P-384", TLS1_3_VERSION, true},
           {"ffdhe8192:X25519", TLS1_3_VERSION, true},
           {"ffdhe8192", TLS1_3_VERSION, false},
           {"ffdhe2048", TLS1_3_VERSION, false},
           {"P-521:X448", TLS1_3_VERSION, false},
       }) {
    const Tls tls = makeTls();
    SSL_CTX_set_max_proto_version(tls.get(), version);
    ASSERT_EQ(SSL_CTX_set1_groups_list(tls.get(), groups), 1);
    EXPECT_EQ(RawConnection(port_, tls.get()).shakesHands(), isTaken) << groups;
  }
  const std::string refusal = "no TLS connection: no suitable key share, from";
  EXPECT_THAT(collector_.errorsWith(refusal), HasSubstr(refusal));
}

}  // namespace
}  // namespace qel::collector
