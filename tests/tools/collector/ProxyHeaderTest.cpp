#include <gmock/gmock.h>

#include "tools/collector/ProxyHeader.h"

namespace qel::collector {
namespace {

using namespace std::string_literals;
using namespace testing;

/// The client's address, "own" for the load balancer's own, or "invalid".
std::string clientOf(const std::string& bytes) {
  const std::string start = bytes.substr(0, proxyStartSize);
  const auto size = proxyRestSize(start);
  if (!size || *size != bytes.size() - start.size()) {
    return "invalid";
  }
  const auto client = proxyClient(start, bytes.substr(proxyStartSize));
  return !client ? "invalid" : client->empty() ? "own" : *client;
}

TEST(ProxyHeaderTest, HasTheClientsAddressOrIsRefused) {
  const std::string signature = "\r\n\r\n\0\r\nQUIT\n"s;
  const std::string ipv4 = "\xc0\x00\x02\x01\x7f\x00\x00\x01\xdc\x04\x01\xbb"s;
  const std::string ipv6 =
      "\x20\x01" + std::string(13, '\0') + "\x07" + std::string(16, '\0') + "\x00\x50\x01\xbb"s;
  const std::vector<std::pair<std::string, std::string>> cases{
      {signature + "\x21\x11\x00\x0c"s + ipv4, "192.0.2.1:56324"},
      {signature + "\x21\x11\x00\x0f"s + ipv4 + "\x04\x00\x00"s, "192.0.2.1:56324"},
      {signature + "\x21\x21\x00\x24"s + ipv6, "[2001::7]:80"},
      {signature + "\x20\x00\x00\x00"s, "own"},
      {signature + "\x21\x00\x00\x00"s, "own"},
      {signature + "\x11\x11\x00\x0c"s + ipv4, "invalid"},
      {signature + "\x22\x11\x00\x0c"s + ipv4, "invalid"},
      {signature + "\x21\x12\x00\x0c"s + ipv4, "invalid"},
      {signature + "\x21\x11\x00\x0b"s + ipv4.substr(1), "invalid"},
      {signature + "\x21\x21\x00\x0c"s + ipv4, "invalid"},
      {signature + "\x21\x11\x10\x00"s + std::string(4096, '\0'), "invalid"},
      {"PROXY TCP4 192.0.2.1 192.0.2.2 1 2\r\n", "invalid"},
      {std::string(28, '\x16'), "invalid"},
  };
  for (const auto& [bytes, client] : cases) {
    EXPECT_EQ(clientOf(bytes), client) << PrintToString(bytes);
  }
}

}  // namespace
}  // namespace qel::collector
