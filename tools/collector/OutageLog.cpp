#include "tools/collector/OutageLog.h"

#include <string>

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

void log(int level, const std::string& message) {
  log::LogManager::instance().getLogger("qel.collector")->log(level, message);
}

std::string reasonOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "unknown error";
  }
}

}  // namespace

void OutageLog::add(const std::exception_ptr& failure, bool hasPackages) {
  const auto now = std::chrono::steady_clock::now();
  if (failure) {
    hasCheckFailed_ = !hasPackages;
    if (!begin_) {
      begin_ = now;
      log(log::Level::Warning, "the store takes no packages: " + reasonOf(failure));
    }
  } else if (begin_ && (hasPackages || hasCheckFailed_)) {
    const auto time = std::chrono::round<std::chrono::seconds>(now - *begin_);
    begin_ = std::nullopt;
    log(log::Level::Info,
        "the store takes packages again, after " + std::to_string(time.count()) + " s");
  }
}

}  // namespace qel::collector
