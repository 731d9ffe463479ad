#include <atomic>
#include <chrono>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "benchmarks/Activation.h"
#include "benchmarks/Figures.h"
#include "benchmarks/RawDatabase.h"
#include "benchmarks/ServerProcess.h"
#include "benchmarks/Workload.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {
namespace {

using namespace log::analytics;

/// A value of `/proc/self/status`, in bytes.
long statusValue(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    if (word == name + ":") {
      long kilobytes = 0;
      status >> kilobytes;
      return kilobytes * 1024;
    }
  }
  throw std::runtime_error("the process's status lacks " + name);
}

/// Resets the peak of the resident size that the system has recorded.
void forgetPeak() { std::ofstream("/proc/self/clear_refs") << 5; }

/// Runs the work in a child process, so that the memory of this process does not change.
template <typename Work>
void elsewhere(Work work) {
  const pid_t child = ::fork();
  if (child == 0) {
    work();
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
}

/// A database client that sets `passed` after the vacuum that ends a sending pass.
class WatchedDatabaseClient : public CipDatabaseClient {
 public:
  explicit WatchedDatabaseClient(std::atomic<bool>& passed) : passed_(passed) {}
  void vacuum() override {
    CipDatabaseClient::vacuum();
    passed_ = true;
    passed_.notify_all();
  }

 private:
  std::atomic<bool>& passed_;
};

}  // namespace

void measurePassMemory() {
  const test::TemporaryDirectory directory;
  const auto sizeFile = directory.path() / "size";
  elsewhere([&] {
    makeDatabase(directory.path(), rowsOfFullDatabase);
    std::size_t size = 0;
    for (const auto& [id, json] :
         RawDatabase(directory.path(), RawDatabase::sending).rows("Items")) {
      size += json.size();
    }
    std::ofstream(sizeFile) << size;
  });
  long size = 0;
  std::ifstream(sizeFile) >> size;
  const ServerProcess server;

  std::atomic<bool> passed = false;
  Client client(
      std::make_unique<CipDatabases>(std::make_unique<WatchedDatabaseClient>(passed),
                                     std::make_unique<SupportDatabaseClient>(std::nullopt)));
  client.activate(activation(directory.text(), false));
  std::this_thread::sleep_for(std::chrono::seconds(2));  // until the dispatcher has run
  forgetPeak();
  const long idle = statusValue("VmRSS");
  client.startSendingItems();
  passed.wait(false);
  std::cout << statusValue("VmHWM") - idle << ' ' << size << '\n';
}

}  // namespace qel::benchmarks
