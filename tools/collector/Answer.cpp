#include "tools/collector/Answer.h"

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

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

void give(httplib::Response& response, const Answer& answer) {
  response.status = answer.status;
  if (answer.status == 401) {
    response.set_header("WWW-Authenticate", R"(Basic realm="analytics", charset="UTF-8")");
  } else if (answer.status == 405) {
    response.set_header("Allow", "POST");
  }
  const bool clientAtFault = answer.status >= 400 && answer.status < 500;
  response.set_content(clientAtFault ? answer.text + '\n' : "", "text/plain");
}

void logAnswer(const Answer& answer, const std::string& peer,
               std::chrono::steady_clock::duration duration) {
  static const auto logger = log::LogManager::instance().getLogger("qel.collector");
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
  const int level = answer.status < 400   ? log::Level::Info
                    : answer.status < 500 ? log::Level::Warning
                                          : log::Level::Error;
  logger->log(level, std::to_string(answer.status) + ": " + answer.text + ", " +
                         std::to_string(milliseconds) + " ms, from " + peer);
}

}  // namespace qel::collector
