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

/// The support database and the sending database. Items reach them only through this class.
///
/// **Writing.** Items are queued. Once a second each queued item is rendered once and written to
/// the support database and then to the sending database. Each write needs the host's permission at
/// that moment.
///
/// **Errors.** A queue overflow, or an exception while items are rendered or written, ends storage
/// for good, and `errorOccurred` stays true. An item that is written before `initialize` has the
/// same effect, because there is no permission to ask.
class QEL_ANALYTICS_EXPORT CipDatabases {
 public:
  /// Takes both clients, which must not be null, and starts the worker.
  CipDatabases(std::unique_ptr<CipDatabaseClientInterface> cipDatabase,
               std::unique_ptr<CipDatabaseClientInterface> supportDatabase);

  /// Opens both databases in the directory of the parameter and copies its permissions. Throws what
  /// opening throws.
  void initialize(const parameters::ActivateParameter& parameter);

  /// Queues the item for the table. Any thread. Takes one lock and allocates nothing, except for
  /// the one call that finds the queue full and writes an information item itself.
  void insert(std::unique_ptr<qel::json::ToJsonInterface> item,
              CipDatabaseClientInterface::Table table);

  /// The sending database.
  CipDatabaseClientInterface& getCipDatabase() { return *cipDatabase_; }

  /// Asks the host whether items may be written to the sending database. Throws
  /// `std::bad_function_call` if the host has set no permission.
  bool getWriteToCipDatabaseFunc() const;

  /// Whether storage has ended for good. Any thread.
  bool errorOccurred() const;

  /// Waits until all queued items are written. The host calls it on the thread that initializes and
  /// destroys the object.
  void join();

 private:
  /// Shared by all threads that ask, because the host's function may have state.
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
  AccumulatingDispatcher dispatcher_;  ///< destroyed first: its worker uses the rest
};

}  // namespace qel::log::analytics
