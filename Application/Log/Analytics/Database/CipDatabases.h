#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"
#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::log::analytics {

namespace parameters {
struct ActivateParameter;
}

/// The support database and the sending database. Items reach the databases only through this
/// class.
///
/// **Writing.** Items are queued. Every second, the queued items are taken. Each is rendered once
/// and written to the support database and then to the sending database. Before each of the two
/// writes, the host is asked for its permission.
///
/// **Errors.** A queue overflow, or an exception while items are rendered or written, ends storage
/// for good, and `errorOccurred` stays true. Writing an item before `initialize` has the same
/// effect, because there is no permission function yet.
class QEL_ANALYTICS_EXPORT CipDatabases {
 public:
  /// Takes ownership of both clients, which must not be null, and starts the worker.
  CipDatabases(std::unique_ptr<CipDatabaseClientInterface> cipDatabase,
               std::unique_ptr<CipDatabaseClientInterface> supportDatabase);

  /// Opens both databases in the directory that `parameter` names, and copies its permission
  /// functions. Passes on exceptions from opening the databases.
  void initialize(const parameters::ActivateParameter& parameter);

  /// Queues the item for the table. Thread-safe. Locks one mutex and allocates no memory. Only the
  /// call that finds the queue full does more: it also writes an information item.
  void insert(std::unique_ptr<qel::json::ToJsonInterface> item,
              CipDatabaseClientInterface::Table table);

  /// The sending database. `close`, and so `Client::withdraw`, destroys it.
  CipDatabaseClientInterface& getCipDatabase() { return *cipDatabase_; }

  /// Asks the host whether items may be written to the sending database. Throws
  /// `std::bad_function_call` if the host has set no permission function.
  bool getWriteToCipDatabaseFunc() const;

  /// Whether storage has ended for good. Thread-safe.
  bool errorOccurred() const;

  /// Waits until all queued items are written, or lost after a failure (see `errorOccurred`). May
  /// be called on any thread of the host, also to record a crash, but not concurrently with `join`,
  /// `close` or the destructor.
  void join();

  /// For a customer who withdraws the consent. Discards queued items, drops later ones silently and
  /// closes both databases, which destroys the two clients. `join` then does nothing. The sending
  /// database must not be in use on another thread. Must not be called concurrently with
  /// `initialize`, `join`, `close` or the destructor.
  void close();

 private:
  /// All threads share one function object, because the host's function may have state.
  using Permission = std::shared_ptr<const std::function<bool()>>;
  /// The permissions to write to each of the databases.
  struct Permissions {
    Permission toSending;
    Permission toSupport;
  };

  void write(const std::vector<AccumulatingDispatcher::Entry>& batch);
  Permissions permissions() const;
  static bool isAllowed(const Permission& permission);

  std::unique_ptr<CipDatabaseClientInterface> cipDatabase_;      ///< replaced only by `close`
  std::unique_ptr<CipDatabaseClientInterface> supportDatabase_;  ///< replaced only by `close`
  mutable utilities::Mutex permissionMutex_;
  Permissions permissions_ QEL_GUARDED_BY(permissionMutex_);
  AccumulatingDispatcher dispatcher_;  ///< destroyed first, because its worker uses the rest
};

}  // namespace qel::log::analytics
