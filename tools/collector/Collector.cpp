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
#include "tools/collector/Metrics.h"
#include "tools/collector/Page.h"
#include "tools/collector/Reload.h"
#include "tools/collector/Server.h"
#include "tools/collector/Stopping.h"
#include "tools/common/InputError.h"

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
    settings.idleTime = std::chrono::seconds(10);
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
  Collector(const CollectorOptions& options, Store& store, OpenReader openReader)
      : options_(options),
        openReader_(std::move(openReader)),
        listen_(tools::parseEndpoint("--listen", options.listen, 0)),
        users_(readUsers(options.credentials)),
        readers_(options.readers.empty() ? nullptr : readUsers(options.readers)),
        store_(store),
        tls_(readTls()),
        writer_(store_, writerSettings(options)),
        server_({listen_, options.behind}, users_, tls_, writer_, metrics_),
        admin_(options.admin.empty() ? nullptr : newAdminServer()) {
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
  std::shared_ptr<Users> readUsers(const std::string& file) const {
    return Users::fromFile(pathFromUtf8(file), options_.userLimits);
  }

  std::unique_ptr<AdminServer> newAdminServer() {
    return std::make_unique<AdminServer>(
        tools::parseEndpoint("--admin", options_.admin, 0),
        adminPages([this] { return obstacle(); }, [this] { return toText(metrics()); }),
        readerAccess());
  }

  std::unique_ptr<ReaderAccess> readerAccess() {
    if (!readers_) {
      return nullptr;
    }
    auto page = std::make_unique<Page>(openReader_, [this] { return toTable(metrics()); });
    return std::make_unique<ReaderAccess>(std::move(page), readers_, tls_);
  }

  TlsContext readTls() {
    auto context = makeTlsContext(pathFromUtf8(options_.certificate), pathFromUtf8(options_.key));
    certificateEnd_ = certificateEnd(*context);
    return context;
  }

  void loadTls() {
    const auto context = readTls();
    server_.use(context);
    if (admin_) {
      admin_->use(context);
    }
  }

  /// Reads a file of users again, and hands them to the server. Keeps what is remembered of them.
  template <typename Listener>
  void loadUsers(const std::string& file, std::shared_ptr<Users>& users, Listener& server) {
    const auto fresh = readUsers(file);
    fresh->continueFrom(*users);
    users = fresh;
    server.use(fresh);
  }

  std::vector<ReloadedFiles> reloadedFiles() {
    std::vector<ReloadedFiles> files{
        {"certificate and key",
         {pathFromUtf8(options_.certificate), pathFromUtf8(options_.key)},
         [this] { loadTls(); }},
        {"users", {pathFromUtf8(options_.credentials)}, [this] {
           loadUsers(options_.credentials, users_, server_);
         }}};
    if (readers_) {
      files.push_back({"readers", {pathFromUtf8(options_.readers)}, [this] {
                         loadUsers(options_.readers, readers_, *admin_);
                       }});
    }
    return files;
  }

  /// Why the collector cannot take packages, in one word; empty if it can.
  std::string obstacle() const {
    return isStopping_ ? "stopping" : writer_.isReady() ? "" : "store";
  }

  std::vector<Metric> metrics() const {
    return metrics_.all({.isReady = obstacle().empty(),
                         .connections = server_.connections(),
                         .queuedPackages = writer_.queued(),
                         .bytesInFlight = server_.bytesInFlight(),
                         .store = store_.size(),
                         .certificateEnd = certificateEnd_,
                         .droppedLogMessages = log::LogManager::instance().dropped()});
  }

  const CollectorOptions& options_;
  const OpenReader openReader_;
  tools::Endpoint listen_;
  std::atomic<std::chrono::system_clock::time_point> certificateEnd_{};
  std::atomic<bool> isStopping_ = false;
  /// @{
  /// After construction used only by the thread of `reload_`.
  std::shared_ptr<Users> users_;
  std::shared_ptr<Users> readers_;  ///< null: no page
  /// @}
  Store& store_;
  const TlsContext tls_;
  Metrics metrics_;
  StoreWriter writer_;
  Server server_;
  const std::unique_ptr<AdminServer> admin_;  ///< null: none
  Reload reload_{reloadedFiles()};
};

}  // namespace

void collect(const CollectorOptions& options) {
  if (!options.readers.empty() && options.admin.empty()) {
    throw tools::InputError("--readers needs --admin");
  }
  // Only the owner may read what customers send.
  ::umask(S_IRWXG | S_IRWXO);
  log::LogSettings logging;
  logging.lowestLevel = log::Level::Info;
  log::LogManager::instance().configure(logging);
  Signals signals;
  const auto access = clickHouseAccess(options.store);
  // May upgrade the store for minutes. What ends it earlier loses nothing.
  auto store = openStore(options.store, access);
  signals.blockStop();
  std::optional<StopDeadline> deadline;
  {
    Collector collector(options, *store, [&] { return openReader(options.store, access); });
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
