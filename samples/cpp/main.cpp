#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <future>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/SystemEnvironment/ThisMachine.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
#include "host/QelHttp/Settings.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/ExitDeadline.h"

using namespace qel::log::analytics;
using namespace qel::broadcaster;
using namespace std::chrono_literals;

namespace {

class NoWebUpdates : public reports::WebUpdateReporterInterface {
 public:
  bool isInformationAvailable() const override { return false; }
  void reset() override {}
  std::uint64_t getSuccessCount() const override { return 0; }
  std::uint64_t getCorruptPackageCount() const override { return 0; }
};

class LicenseBorrowed : public GeneralEventInterface {
 public:
  std::string getCategory() const override { return "License"; }
  std::string getSubCategory() const override { return "Network"; }
  std::string getEvent() const override { return "Borrowed"; }
  std::map<std::string, std::string> getDetails() const override { return {{"Days", "14"}}; }
};

std::unique_ptr<items::EnvironmentItem> describeMachine() {
  items::details::ApplicationInfo consumer;
  consumer.name = "Consumer";
  consumer.version = "1.0";
  return systemenvironment::describeThisMachine(consumer);
}

void receiveLog() {
  qel::log::LogSettings settings;
  settings.standardError = false;
  settings.receiver = [](int level, const std::string& logger, const std::string& message) {
    std::cerr << "received, level " << level << ", " << logger << ": " << message << '\n';
  };
  qel::log::LogManager::instance().configure(settings);
}

void recordCrash(CipDatabases& databases, const std::string& text, std::int32_t code) {
  qel::utilities::setExitDeadline(2s);
  ApplicationBroadcaster::getInstance().notify(&ApplicationListenerInterface::onApplicationCrashed,
                                               event::ApplicationCrashEvent{{text}, code});
  databases.join();
}

std::string textOfCurrentException() {
  try {
    if (const auto exception = std::current_exception()) {
      std::rethrow_exception(exception);
    }
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (...) {
    return "unknown exception";
  }
  return "terminate without an exception";
}

/// While it exists, an exception that nobody handles is recorded before the process ends.
class TerminateRecorder {
 public:
  explicit TerminateRecorder(CipDatabases& databases) {
    active = &databases;
    previous = std::set_terminate(onTerminate);
  }
  ~TerminateRecorder() {
    active = nullptr;
    std::set_terminate(previous);
  }
  TerminateRecorder(const TerminateRecorder&) = delete;
  TerminateRecorder& operator=(const TerminateRecorder&) = delete;

 private:
  [[noreturn]] static void onTerminate() {
    if (CipDatabases* const databases = active.exchange(nullptr)) {
      std::promise<void> stored;
      std::thread([&stored, databases, text = textOfCurrentException()] {
        recordCrash(*databases, text, 0);
        stored.set_value();
      }).detach();
      stored.get_future().wait_for(3s);
    } else {
      std::this_thread::sleep_for(3s);  // another thread records, or recording has crashed
    }
    if (const auto handler = previous.load()) {
      handler();  // the system's handler prints the exception, and aborts
    }
    std::abort();
  }

  static inline std::atomic<CipDatabases*> active{nullptr};
  static inline std::atomic<std::terminate_handler> previous{nullptr};
};

std::string firstLineOf(const char* file) {
  std::string line;
  std::getline(std::ifstream(file), line);
  return line;
}

void runProgram(bool crashes) {
  GeneralBroadcaster::getInstance().notify(&GeneralListenerInterface::onGeneralAction,
                                           std::make_shared<const LicenseBorrowed>());
  if (crashes) {
    std::thread([] { throw std::runtime_error("the license is gone"); }).join();
  }
}

void runSession(const std::string& directory, const std::string& secret, bool crashes) {
  NoWebUpdates webUpdates;
  auto pair = std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                             std::make_unique<SupportDatabaseClient>(720h));
  CipDatabases& databases = *pair;
  Client client(std::move(pair));
  client.activate({.webUpdateReporter = webUpdates,
                   .databasePath = directory,
                   .installationId = "consumer",
                   .sessionId = qel::Guid::create(),
                   .serverSecret = secret,
                   .serverUser = "consumer",
                   .createEnvironmentItem = describeMachine,
                   .isSendingAllowed = [] { return true; },
                   .databaseCallback = [] { return true; }});
  auto& broadcaster = ApplicationBroadcaster::getInstance();
  broadcaster.notify(&ApplicationListenerInterface::onApplicationStarted,
                     event::ApplicationStartEvent{{"Consumer 1.0"}});
  {
    const TerminateRecorder recorder(databases);
    runProgram(crashes);
  }
  broadcaster.notify(&ApplicationListenerInterface::onApplicationStopped,
                     event::ApplicationStopEvent{{"Consumer 1.0"}});
  qel::utilities::setExitDeadline(5s);
  databases.join();
}

}  // namespace

/// A host outside the repository: one session with one event, which is uploaded, or kept if the
/// server cannot be reached. With a sixth argument, the program crashes after the event.
int main(int argc, char** argv) {
  if (argc != 6 && argc != 7) {
    std::cerr << "usage: consumer DIRECTORY SERVER-NAME ADDRESS:PORT CA-FILE SECRET-FILE [crash]\n";
    return 2;
  }
  try {
    receiveLog();
    qel::protocol::https::Settings settings;
    settings.connectFor = argv[2];
    settings.connectTo = argv[3];
    settings.caBundle = argv[4];
    qel::protocol::https::setSettings(settings);
    runSession(argv[1], firstLineOf(argv[5]), argc == 7);
  } catch (const std::exception& failure) {
    std::cerr << "consumer: " << failure.what() << '\n';
    return 1;
  }
}
