#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "benchmarks/Activation.h"
#include "benchmarks/Figures.h"
#include "benchmarks/RawDatabase.h"
#include "benchmarks/Workload.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelLog/LogManager.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {
namespace {

using namespace log::analytics;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

class Longest {
 public:
  template <typename Call>
  void measure(Call call) {
    const auto begin = steady_clock::now();
    call();
    time_ = std::max(time_, steady_clock::now() - begin);
  }

  void print(const std::string& name) const {
    std::cout << name << ": " << std::chrono::duration<double, std::milli>(time_).count() << '\n';
  }

 private:
  steady_clock::duration time_{};
};

/// Keeps both databases of a client locked until `release` is called.
class Holder {
 public:
  explicit Holder(const std::filesystem::path& directory)
      : sending_(directory, RawDatabase::sending), support_(directory, RawDatabase::support) {
    sending_.run("BEGIN EXCLUSIVE");
    support_.run("BEGIN EXCLUSIVE");
  }

  void release() {
    support_.run("COMMIT");
    sending_.run("COMMIT");
  }

 private:
  RawDatabase sending_;
  RawDatabase support_;
};

void notifyListenerUntil(steady_clock::time_point end, Longest& listener) {
  while (steady_clock::now() < end) {
    listener.measure([] {
      broadcaster::ActionBroadcaster::getInstance().notify(
          &broadcaster::ActionListenerInterface::onHelpAction,
          broadcaster::event::HelpActionEvent{{"topic", {}}});
    });
    std::this_thread::sleep_for(1ms);
  }
}

void overflow(CipDatabases& databases, Longest& insert) {
  for (int number = 0; !databases.errorOccurred(); ++number) {
    auto item = makeItem(number);
    insert.measure([&] { databases.insert(std::move(item), CipDatabaseClientInterface::Items); });
  }
}

void silenceLog() {
  log::LogSettings silent;
  silent.standardError = false;
  log::LogManager::instance().configure(silent);
}

}  // namespace

void measureHostThread() {
  silenceLog();
  const test::TemporaryDirectory directory;
  const auto parameter = activation(directory.text(), true);
  CipDatabaseClient().initialize(directory.text());
  const auto support = std::make_shared<SupportDatabaseClient>(std::nullopt);
  support->initialize(directory.text());

  const auto end = steady_clock::now() + 20s;
  Holder holder(directory.path());
  auto owned = std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                              std::make_unique<SupportDatabaseClient>(1h));
  CipDatabases& databases = *owned;
  Client client(std::move(owned));
  Longest activate;
  Longest initialize;
  Longest listener;
  Longest insert;
  Longest exporting;
  activate.measure([&] { client.activate(parameter); });
  initialize.measure([&] { SupportDatabaseClient(1h).initialize(directory.text()); });
  exporting.measure(
      [&] { SupportDatabaseExporter(support).exportLastSessionToSqliteFile("S", support); });
  notifyListenerUntil(end - 10s, listener);
  overflow(databases, insert);
  notifyListenerUntil(end, listener);
  holder.release();

  activate.print("activate");
  initialize.print("initialize");
  listener.print("listener");
  insert.print("insert");
  exporting.print("export");
}

}  // namespace qel::benchmarks
