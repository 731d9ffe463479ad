#include <chrono>
#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <syncstream>

#include "host/QelLog/LogManager.h"

// The embedding program's own implementation of host/QelLog.
namespace qel::log {
namespace {

class OwnLogger : public LoggerInterface {
 public:
  void log(int level, const std::string& message) override {
    std::osyncstream(std::cerr) << "own log, level " << level << ": " << message << '\n';
  }
};

}  // namespace

class LogManager::Implementation {};

LogManager::LogManager() = default;
LogManager::~LogManager() = default;

LogManager& LogManager::instance() {
  static auto* const manager = new LogManager;
  return *manager;
}

std::shared_ptr<LoggerInterface> LogManager::getLogger(const std::string&) {
  return std::make_shared<OwnLogger>();
}

void LogManager::configure(const LogSettings&) {}

bool LogManager::flush(std::chrono::milliseconds) {
  return true;  // Nothing waits to be written.
}

std::size_t LogManager::dropped() const { return 0; }

}  // namespace qel::log
