#include "tools/collector/PackageReceiver.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <exception>
#include <future>
#include <optional>
#include <utility>

#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "tools/collector/PackageReader.h"

namespace qel::collector {
namespace {

using std::chrono::steady_clock;

/// In bytes. Parsing a malicious body takes several times its size in memory, so only one body
/// above this size is parsed at a time. A client's body has at most a million bytes plus one row.
constexpr std::size_t largeBody = std::size_t{2} * 1024 * 1024;

bool isPlainJson(const httplib::Request& request) {
  std::string type = request.get_header_value("Content-Type");
  type.erase(std::min(type.find_first_of("; \t"), type.size()));
  std::transform(type.begin(), type.end(), type.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return type == "application/json" && !request.has_header("Content-Encoding");
}

/// Whether the length of the body is given in the only form that all proxies interpret alike.
bool hasPlainLength(const httplib::Request& request) {
  const std::string length = request.get_header_value("Content-Length");
  // Some proxies accept "Transfer-Encoding : chunked" as the header, others ignore it.
  const bool namesArePlain =
      std::none_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
        return header.first.find_first_of(" \t\r\v\f") != std::string::npos;
      });
  return namesArePlain && request.get_header_value_count("Content-Length") == 1 &&
         !length.empty() && length.find_first_not_of("0123456789") == std::string::npos &&
         !request.has_header("Transfer-Encoding");
}

/// The answer that rejects a request because of its request line or headers; `std::nullopt` if both
/// are acceptable.
std::optional<Answer> objection(const httplib::Request& request, const Credentials& credentials,
                                std::size_t largestBody) {
  if (request.path != log::analytics::format::uploadPath) {
    return Answer{404, "unknown path"};
  }
  if (request.method != "POST") {
    return Answer{405, "only POST is served"};
  }
  if (!credentials.accept(request.get_header_value("Authorization"))) {
    return Answer{401, "unknown user or wrong secret"};
  }
  if (!isPlainJson(request)) {
    return Answer{415, "only application/json is served"};
  }
  if (!hasPlainLength(request)) {
    return Answer{411, "no plain Content-Length"};
  }
  if (request.get_header_value<std::uint64_t>("Content-Length") > largestBody) {
    return Answer{413, "body too large"};
  }
  return std::nullopt;
}

}  // namespace

PackageReceiver::PackageReceiver(std::size_t largestBody, Credentials credentials,
                                 StoreWriter& store, ConnectionWatch& watch)
    : largestBody_(largestBody),
      credentials_(std::move(credentials)),
      store_(store),
      watch_(watch) {}

void PackageReceiver::refuse(const httplib::Request& request, httplib::Response& response) {
  const Answer answer = objection(request, credentials_, largestBody_).value();
  give(response, answer);
  logAnswer(answer, watch_.peerOfThisWorker(), {});
}

void PackageReceiver::receive(const httplib::Request& request, httplib::Response& response,
                              const httplib::ContentReader& reader) {
  const auto begin = steady_clock::now();
  auto answer = objection(request, credentials_, largestBody_);
  watch_.admitBody(request.ssl, answer ? Sender::Unknown : Sender::Known);
  std::string body;
  if (!answer) {
    body.reserve(request.get_header_value<std::uint64_t>("Content-Length"));
  }
  // An answer that is sent before the client has sent its whole body is often lost.
  const bool isWhole = hasPlainLength(request) && read(reader, answer ? nullptr : &body);
  if (!answer) {
    watch_.awaitAnswer(request.ssl);
    answer = isWhole ? store(std::move(body)) : Answer{400, "the body broke off"};
  }
  give(response, *answer);
  logAnswer(*answer, watch_.peerOfThisWorker(), steady_clock::now() - begin);
}

/// Reads a request body up to the size limit, and appends it to `body` unless `body` is null.
/// Returns whether the request body was read completely.
bool PackageReceiver::read(const httplib::ContentReader& reader, std::string* body) const {
  std::size_t received = 0;
  return reader([&](const char* data, std::size_t size) {
    received += size;
    if (body != nullptr) {
      body->append(data, size);
    }
    return received <= largestBody_;
  });
}

Answer PackageReceiver::store(std::string body) {
  if (body.size() <= largeBody) {
    return storeNow(std::move(body));
  }
  const utilities::MutexLock turn(largeBodies_);
  return storeNow(std::move(body));
}

Answer PackageReceiver::storeNow(std::string body) {
  try {
    const auto upload = std::make_shared<const Upload>(std::move(body), std::string());
    const auto stored = std::make_shared<std::promise<void>>();
    store_.add(upload, [stored](const std::exception_ptr& failure) {
      failure ? stored->set_exception(failure) : stored->set_value();
    });
    stored->get_future().get();
    return storedAnswer(upload->package);
  } catch (const std::exception& error) {
    return {503, error.what()};
  }
}

}  // namespace qel::collector
