#include "tools/collector/Collector.h"

#include <atomic>
#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include <sys/stat.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"
#include "tools/collector/AdminServer.h"
#include "tools/collector/Reload.h"
#include "tools/collector/Server.h"
#include "tools/collector/Stopping.h"

namespace qel::collector {
namespace {

using tools::toText;
using utilities::pathFromUtf8;

void logLine(const std::string& message) {
  log::LogManager::instance().getLogger("qel.collector")->log(log::Level::Info, message);
}

void print(const std::string& line) { std::cout << line << '\n' << std::flush; }

WriterSettings writerSettings(const CollectorOptions& options) {
  WriterSettings settings;
  if (parseClickHouse("--store", options.store.store)) {
    settings.batchTime = std::chrono::milliseconds(options.batchMilliseconds.value_or(500));
    settings.batchRows = options.batchRows.value_or(30'000);
  } else {
    rejectForFile("--batch-time", options.batchMilliseconds.has_value());
    rejectForFile("--batch-rows", options.batchRows.has_value());
  }
  if (options.retentionDays > 0) {
    settings.retention = std::chrono::hours(24) * options.retentionDays;
  }
  return settings;
}

/// The parts of a running collector.
class Collector {
 public:
  Collector(const CollectorOptions& options, Store& store)
      : options_(options),
        listen_(tools::parseEndpoint("--listen", options.listen, 0)),
        users_(readUsers()),
        store_(store),
        tls_(readTls()),
        writer_(store_, writerSettings(options)),
        server_({listen_, options.behind}, users_, tls_, writer_, metrics_) {
    if (!options.admin.empty()) {
      admin_.emplace(tools::parseEndpoint("--admin", options.admin, 0),
                     adminPages([this] { return obstacle(); }, [this] { return figures(); }));
    }
    listen_.port = server_.port();
    print("listening on " + toText(listen_));
    logLine("started, listening on " + toText(listen_));
    if (admin_) {
      print("admin on " + toText(admin_->endpoint()));
    }
  }

  void reload() { reload_.now(); }

  void stop() {
    isStopping_ = true;
    server_.stop();
  }

 private:
  std::shared_ptr<Users> readUsers() const {
    return Users::fromFile(pathFromUtf8(options_.credentials), options_.userLimits);
  }

  TlsContext readTls() {
    auto context = makeTlsContext(pathFromUtf8(options_.certificate), pathFromUtf8(options_.key));
    certificateEnd_ = certificateEnd(*context);
    return context;
  }

  void loadUsers() {
    auto fresh = readUsers();
    fresh->continueFrom(*users_);
    users_ = fresh;
    server_.use(std::move(fresh));
  }

  /// Why the collector cannot take packages, in one word; empty if it can.
  std::string obstacle() const {
    return isStopping_ ? "stopping" : writer_.isReady() ? "" : "store";
  }

  std::string figures() const {
    return metrics_.text({.connections = server_.connections(),
                          .queuedPackages = writer_.queued(),
                          .bytesInFlight = server_.bytesInFlight(),
                          .store = store_.size(),
                          .certificateEnd = certificateEnd_,
                          .droppedLogMessages = log::LogManager::instance().dropped()});
  }

  const CollectorOptions& options_;
  tools::Endpoint listen_;
  std::atomic<std::chrono::system_clock::time_point> certificateEnd_{};
  std::atomic<bool> isStopping_ = false;
  std::shared_ptr<Users> users_;  ///< after construction used only by the thread of `reload_`
  Store& store_;
  const TlsContext tls_;
  Metrics metrics_;
  StoreWriter writer_;
  Server server_;
  std::optional<AdminServer> admin_;
  Reload reload_{{{"certificate and key",
                   {pathFromUtf8(options_.certificate), pathFromUtf8(options_.key)},
                   [this] { server_.use(readTls()); }},
                  {"users", {pathFromUtf8(options_.credentials)}, [this] { loadUsers(); }}}};
};

}  // namespace

void collect(const CollectorOptions& options) {
  // Only the owner may read what customers send.
  ::umask(S_IRWXG | S_IRWXO);
  log::LogSettings logging;
  logging.lowestLevel = log::Level::Info;
  log::LogManager::instance().configure(logging);
  Signals signals;
  // May upgrade the store for minutes. What ends it earlier loses nothing.
  auto store = openStore(options.store);
  signals.blockStop();
  std::optional<StopDeadline> deadline;
  {
    Collector collector(options, *store);
    while (signals.wait() == SIGHUP) {
      collector.reload();
    }
    logLine("stopping");
    deadline.emplace();
    collector.stop();
  }
  store.reset();
  logLine("stopped");
}

}  // namespace qel::collector
