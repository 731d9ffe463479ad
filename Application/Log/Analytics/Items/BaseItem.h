#pragma once

#include <string>

#include "Application/Log/Analytics/Items/ItemInterface.h"
#include "QelAnalyticsExport.h"
#include "host/QelDateTime/DateTime.h"
#include "host/QelId/Guid.h"
#include "host/QelJson/ToJsonInterface.h"

namespace qel::json {
class JsonObject;
}

namespace qel::log::analytics::items {

/// A record of the analytics client: its time, and the installation and session that it belongs to.
///
/// The two ids are the process's, shared by all items. They are set once, on one thread, before
/// items are rendered on others; rendering only reads.
class QEL_ANALYTICS_EXPORT BaseItem : public ItemInterface, public json::ToJsonInterface {
 public:
  /// Stamped with the current time.
  BaseItem() { updateTimestamp(); }

  /// Each takes the first value that is not empty (not null); later calls are ignored.
  /// @{
  static void setInstallationId(const std::string& id);
  static void setSessionId(const Guid& id);
  /// @}

  /// Empty, and the null GUID, until they are set.
  /// @{
  const std::string& getInstallationId() const override;
  const Guid& getSessionId() const override;
  /// @}
  const datetime::DateTime& getTime() const override { return time_; }

  /// Stamps the item with the current time again.
  void updateTimestamp() { time_.vSetNow(); }

  /// The time stamp as items carry it, "2026-11-21T09:30:05.123Z".
  std::string getDateTimeAsString() const;

 protected:
  /// Adds the members that every item has: "InstallationId", "SessionId" and "Timestamp".
  void addOrigin(json::JsonObject& json) const;

 private:
  datetime::DateTime time_;
};

}  // namespace qel::log::analytics::items
