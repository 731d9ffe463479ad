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

/// A record of the analytics client with its time, its installation and its session.
///
/// All items of the process share the installation ID and the session ID. Only one thread may set
/// them, and it should do so before other threads render items.
class QEL_ANALYTICS_EXPORT BaseItem : public ItemInterface, public json::ToJsonInterface {
 public:
  /// Sets the time stamp to the current time.
  BaseItem() { updateTimestamp(); }

  /// Each function keeps the first non-empty (non-null) value and ignores later calls.
  /// @{
  static void setInstallationId(const std::string& id);
  static void setSessionId(const Guid& id);
  /// @}

  /// Until they are set, the installation ID is empty and the session ID is the null GUID.
  /// @{
  const std::string& getInstallationId() const override;
  const Guid& getSessionId() const override;
  /// @}
  const datetime::DateTime& getTime() const override { return time_; }

  /// Sets the time stamp to the current time again.
  void updateTimestamp() { time_.vSetNow(); }

  /// The time stamp as it is rendered, such as "2026-11-21T09:30:05.123Z".
  std::string getDateTimeAsString() const;

 protected:
  /// Adds the members that every item has: "InstallationId", "SessionId" and "Timestamp".
  void addOrigin(json::JsonObject& json) const;

 private:
  datetime::DateTime time_;
};

}  // namespace qel::log::analytics::items
