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

/// The pair of databases, and the one way for items to reach them.
///
/// Items are queued and written once a second, each rendered once, to the support database and then
/// to the sending database, as far as the host's permissions say so at that moment. What cannot be
/// written, or a queue that overflows, ends the storage for good, and `errorOccurred` stays true:
/// an item inserted well before `initialize` does that, too.
class QEL_ANALYTICS_EXPORT CipDatabases {
 public:
  /// Takes both clients, neither null, and starts the worker.
  CipDatabases(std::unique_ptr<CipDatabaseClientInterface> cipDatabase,
               std::unique_ptr<CipDatabaseClientInterface> supportDatabase);

  /// Opens both databases in the parameter's directory and takes over its permissions. Throws what
  /// opening throws.
  void initialize(const parameters::ActivateParameter& parameter);

  /// Queues the item for the table. Any thread; takes one lock and allocates nothing, but for the
  /// one call that finds the queue full, which writes the marker itself.
  void insert(std::unique_ptr<qel::json::ToJsonInterface> item,
              CipDatabaseClientInterface::Table table);

  /// The sending database.
  CipDatabaseClientInterface& getCipDatabase() { return *cipDatabase_; }

  /// Asks the host whether items may be written to the sending database. Throws
  /// `std::bad_function_call` when it has given no way to ask.
  bool getWriteToCipDatabaseFunc() const;

  /// Whether storage has ended for good. Any thread.
  bool errorOccurred() const;

  /// Waits until everything queued has been written. For the host, on the thread that initializes
  /// and destroys.
  void join();

 private:
  /// Shared with the threads that ask: the host is asked on this one object, which may have state.
  using Permission = std::shared_ptr<const std::function<bool()>>;
  /// What may be written to each of the databases.
  struct Permissions {
    Permission toSending;
    Permission toSupport;
  };

  void write(const std::vector<AccumulatingDispatcher::Entry>& batch);
  Permissions permissions() const;
  static bool isAllowed(const Permission& permission);

  const std::unique_ptr<CipDatabaseClientInterface> cipDatabase_;
  const std::unique_ptr<CipDatabaseClientInterface> supportDatabase_;
  mutable utilities::Mutex permissionMutex_;
  Permissions permissions_ QEL_GUARDED_BY(permissionMutex_);
  AccumulatingDispatcher dispatcher_;  ///< goes first, so that its worker finds the rest alive
};

}  // namespace qel::log::analytics
