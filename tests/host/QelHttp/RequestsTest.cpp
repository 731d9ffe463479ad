#include <vector>

#include "tests/host/QelHttp/HttpFixture.h"

namespace qel::protocol::https {
namespace {

using test::HttpsTestServer;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RequestsTest : public HttpFixture {};

TEST_F(RequestsTest, ArriveAsTheyWereWritten) {
  std::string body = megabytes(1) + std::string(500'000, '\0') + "\r\n\r\n{\"ä\": \"\xff\"}";
  body[7] = '\0';
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  auto message = this->message(body);
  message.path = "/a/../b%20c?d=e";
  ASSERT_EQ(post(message), "200");
  const auto request = server.requests().at(0);
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.path, "/a/../b%20c?d=e");
  EXPECT_TRUE(request.body == body);
  EXPECT_EQ(request.headers.at("host"), serverName);
  EXPECT_EQ(request.headers.at("content-type"), "application/json; charset=utf-8");
  EXPECT_EQ(request.headers.count("expect"), 0U);
}

TEST_F(RequestsTest, CarryTheCredentials) {
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  struct Row {
    const char* user;
    const char* secret;
    const char* authorization;
  };
  const std::vector<Row> rows = {
      {"customer", "canary-4711", "Basic Y3VzdG9tZXI6Y2FuYXJ5LTQ3MTE="},
      {"m\xc3\xbcller", "a:b", "Basic bcO8bGxlcjphOmI="},
      {"", "canary-4711", "Basic OmNhbmFyeS00NzEx"},
      {"", "", nullptr},
  };
  for (const auto& [user, secret, authorization] : rows) {
    SCOPED_TRACE(user);
    auto message = this->message();
    message.user = user;
    message.secret = secret;
    ASSERT_EQ(post(message), "200");
    const auto headers = server.requests().back().headers;
    ASSERT_EQ(headers.count("authorization"), authorization ? 1U : 0U);
    if (authorization) {
      EXPECT_EQ(headers.at("authorization"), authorization);
    }
  }
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(RequestsTest, AreRefusedWhenAFieldCouldChangeTheirMeaning) {
  const HttpsTestServer server(serverOptions());
  setSettings(settingsFor(server));
  const std::string nul(1, '\0');
  struct Row {
    std::string Message::*field;
    std::vector<std::string> values;
    const char* expected;
  };
  const std::vector<Row> rows = {
      {&Message::host,
       {"", "a/b", "a@b", "a?b", "a#b", "a:8443", "a b", "a\\b", "a\r", "a\nb", "a" + nul, "[a]"},
       "the host is"},
      {&Message::path, {"", "a", "/a b", "/a\r", "/a\nb", "/a" + nul, "/a#b"}, "the path does not"},
      {&Message::contentType,
       {"a\rX-b: c", "a\nX-b: c", "a" + nul},
       "the content type holds CR, LF or NUL"},
      {&Message::user, {"a\r", "a\n", "a" + nul}, "the user holds CR, LF or NUL"},
      {&Message::user, {"a:b"}, "the user holds a colon"},
      {&Message::secret,
       {"canary-4711\r", "canary-4711\nX-b: c", "canary-4711" + nul},
       "the secret holds CR, LF or NUL"},
  };
  for (const auto& [field, values, expected] : rows) {
    for (const auto& value : values) {
      SCOPED_TRACE(value);
      auto message = this->message();
      message.*field = value;
      EXPECT_THAT(post(message), AllOf(StartsWith("not posted: "), HasSubstr(expected),
                                       Not(HasSubstr("canary")), Not(HasSubstr("X-b"))));
    }
  }
  EXPECT_EQ(server.connections(), 0);
}

}  // namespace
}  // namespace qel::protocol::https
