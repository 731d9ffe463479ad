#include "tools/collector/Answer.h"

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

namespace http = boost::beast::http;

constexpr unsigned httpVersion = 11;

log::LoggerInterface& logger() {
  static const auto logger = log::LogManager::instance().getLogger("qel.collector");
  return *logger;
}

template <typename Texts>
std::string total(const Texts& texts) {
  std::size_t sum = 0;
  for (const auto& text : texts) {
    sum += text.count;
  }
  return std::to_string(sum);
}

}  // namespace

Answer storedAnswer(const Package& package) {
  return {204, "events " + total(package.events) + ", environments " + total(package.environments) +
                   ", refused texts " + total(package.refused)};
}

Response toResponse(const Answer& answer, bool keepsConnection) {
  Response response(static_cast<http::status>(answer.status), httpVersion);
  if (answer.status == 401) {
    response.set(http::field::www_authenticate, R"(Basic realm="analytics", charset="UTF-8")");
  } else if (answer.status == 405) {
    response.set(http::field::allow, "POST");
  } else if (answer.status == 429 || answer.status == 503) {
    response.set(http::field::retry_after, std::to_string(answer.retryAfter.count()));
  }
  if (answer.status >= 400 && answer.status < 500) {
    response.set(http::field::content_type, "text/plain");
    response.body() = answer.text + '\n';
  }
  if (!keepsConnection) {
    response.set(http::field::connection, "close");
  }
  if (answer.status != 204) {  // which has no body and must have no length
    response.prepare_payload();
  }
  return response;
}

void logAnswer(const Answer& answer, const std::string& peer,
               std::chrono::steady_clock::duration duration) {
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
  const int level = answer.status < 400   ? log::Level::Info
                    : answer.status < 500 ? log::Level::Warning
                                          : log::Level::Error;
  logger().log(level, std::to_string(answer.status) + ": " + answer.text + ", " +
                          std::to_string(milliseconds) + " ms, from " + peer);
}

void logCut(const std::string& reason, const std::string& peer) {
  logger().log(log::Level::Warning, reason + ", from " + peer);
}

}  // namespace qel::collector
