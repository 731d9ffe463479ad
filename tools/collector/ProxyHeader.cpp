#include "tools/collector/ProxyHeader.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace qel::collector {
namespace {

namespace asio = boost::asio;
namespace ip = asio::ip;

constexpr std::string_view signature("\r\n\r\n\0\r\nQUIT\n", 12);
constexpr std::size_t startSize = 16;
constexpr std::size_t largestRest = 2048;

std::size_t byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

std::size_t numberAt(std::string_view bytes, std::size_t index) {
  return byteAt(bytes, index) << 8U | byteAt(bytes, index + 1);
}

/// `addresses` has the source's address, the destination's address and both ports.
template <typename Address>
std::optional<std::string> client(std::string_view addresses) {
  typename Address::bytes_type bytes{};
  if (addresses.size() < 2 * bytes.size() + 4) {
    return std::nullopt;
  }
  std::copy_n(addresses.begin(), bytes.size(), bytes.begin());
  const auto port = static_cast<std::uint16_t>(numberAt(addresses, 2 * bytes.size()));
  std::ostringstream text;
  text << ip::tcp::endpoint(Address(bytes), port);
  return text.str();
}

/// The number of bytes that follow the first `startSize` bytes.
std::optional<std::size_t> restSize(std::string_view start) {
  constexpr std::size_t version = 2;
  if (!start.starts_with(signature) || byteAt(start, 12) >> 4U != version) {
    return std::nullopt;
  }
  const std::size_t size = numberAt(start, 14);
  return size <= largestRest ? std::optional(size) : std::nullopt;
}

std::optional<std::string> clientOf(std::string_view start, std::string_view rest) {
  enum Command { Local, Proxy };
  enum Family { Unspecified = 0x00, TcpOverIpv4 = 0x11, TcpOverIpv6 = 0x21 };
  const auto command = byteAt(start, 12) & 0xfU;
  if (command == Local) {
    return std::string();
  }
  if (command != Proxy) {
    return std::nullopt;
  }
  switch (byteAt(start, 13)) {
    case TcpOverIpv4:
      return client<ip::address_v4>(rest);
    case TcpOverIpv6:
      return client<ip::address_v6>(rest);
    case Unspecified:
      return std::string();
    default:
      return std::nullopt;
  }
}

}  // namespace

asio::awaitable<std::optional<std::string>> readProxyHeader(boost::beast::tcp_stream& stream) {
  std::string start(startSize, '\0');
  co_await asio::async_read(stream, asio::buffer(start), asio::use_awaitable);
  const auto size = restSize(start);
  if (!size) {
    co_return std::nullopt;
  }
  std::string rest(*size, '\0');
  co_await asio::async_read(stream, asio::buffer(rest), asio::use_awaitable);
  co_return clientOf(start, rest);
}

}  // namespace qel::collector
