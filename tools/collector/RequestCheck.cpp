#include "tools/collector/RequestCheck.h"

#include <algorithm>
#include <limits>

#include <boost/beast/core/string.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include "Application/Log/Analytics/Items/PackageFormat.h"

namespace qel::collector {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;

using Fields = http::request<http::empty_body>;

Answer noPlainLength() { return {411, "no plain Content-Length"}; }

/// Whether a header is continued on the next line. The parser accepts this obsolete form.
bool isFolded(std::string_view head) {
  return head.find("\n ") != std::string_view::npos || head.find("\n\t") != std::string_view::npos;
}

/// Whether a header's name has a blank. Some proxies accept "Transfer-Encoding : chunked" as the
/// header, others ignore it.
bool hasBlankInName(std::string_view head) {
  for (auto line = head.find('\n'); line + 1 < head.size(); line = head.find('\n', line + 1)) {
    const auto end = head.find_first_of(" \t:\n", line + 1);
    if (head[end] == ' ' || head[end] == '\t') {
      return true;
    }
  }
  return false;
}

bool isFramingError(const beast::error_code& error) {
  return error == http::error::bad_content_length || error == http::error::bad_transfer_encoding;
}

bool isPlainJson(const Fields& fields) {
  const auto type = fields[http::field::content_type];
  return beast::iequals(type.substr(0, type.find_first_of("; \t")), "application/json") &&
         fields.count(http::field::content_encoding) == 0;
}

std::optional<std::uint64_t> plainLength(const Fields& fields,
                                         const boost::optional<std::uint64_t>& parsed) {
  const auto text = fields[http::field::content_length];
  if (!parsed || fields.count(http::field::content_length) != 1 ||
      text.find_first_not_of("0123456789") != beast::string_view::npos ||
      fields.count(http::field::transfer_encoding) != 0) {
    return std::nullopt;
  }
  return *parsed;
}

}  // namespace

std::variant<RequestHead, Answer> parseHead(std::string_view head) {
  http::request_parser<http::empty_body> parser;
  parser.header_limit(std::numeric_limits<std::uint32_t>::max());
  parser.body_limit(std::numeric_limits<std::uint64_t>::max());
  beast::error_code error;
  parser.put(boost::asio::buffer(head.data(), head.size()), error);
  const Fields& fields = parser.get();
  if (isFramingError(error) || (error == http::error::bad_field && hasBlankInName(head))) {
    return noPlainLength();
  }
  if (error || !parser.is_header_done() || isFolded(head) ||
      fields.count(http::field::authorization) > 1 ||
      (fields.version() == 11 && fields.count(http::field::host) != 1)) {
    return Answer{400, "malformed request"};
  }
  const auto authorization = fields[http::field::authorization];
  RequestHead result;
  result.isUpload = fields.target() == log::analytics::format::uploadPath;
  result.isPost = fields.method() == http::verb::post;
  result.authorization.assign(authorization.data(), authorization.size());
  result.isPlainJson = isPlainJson(fields);
  result.length = plainLength(fields, parser.content_length());
  result.awaitsContinue = beast::iequals(fields[http::field::expect], "100-continue");
  result.keepsConnection = parser.keep_alive();
  return result;
}

std::optional<Answer> objectionToTarget(const RequestHead& head) {
  if (!head.isUpload) {
    return Answer{404, "unknown path"};
  }
  if (!head.isPost) {
    return Answer{405, "only POST is served"};
  }
  return std::nullopt;
}

std::optional<Answer> objectionToBody(const RequestHead& head, std::uint64_t largestBody) {
  if (!head.isPlainJson) {
    return Answer{415, "only uncompressed application/json is served"};
  }
  if (!head.length) {
    return noPlainLength();
  }
  if (*head.length > largestBody) {
    return Answer{413, "body too large"};
  }
  return std::nullopt;
}

}  // namespace qel::collector
