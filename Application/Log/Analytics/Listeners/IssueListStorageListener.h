#pragma once

#include <map>
#include <memory>
#include <vector>

#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"
#include "Application/Log/Analytics/Listeners/IssueKey.h"
#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"
#include "QelAnalyticsExport.h"
#include "host/QelIssueUi/StorageListenerInterface.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records the issues that are added to the issue list of the host and removed from it.
///
/// **Cache.** The listener keeps the item of each added issue. It records each addition only once,
/// and records the removal with the details of the addition. `issuesRemoveAll` does not clear the
/// cache. A later removal of a cached issue is still recorded, and a repeated addition is not. If
/// there is no information object, no additions are recorded.
///
/// **Threads.** Not thread-safe. The host must notify on one thread at a time.
class QEL_ANALYTICS_EXPORT IssueListStorageListener
    : public qel::log::issue::StorageListenerInterface {
 public:
  /// The databases must outlive the listener. `information` may be null.
  IssueListStorageListener(CipDatabases& databases,
                           std::unique_ptr<IssueListInformationInterface> information);

  /// Records the issue unless it is null, `flag` is set, or it is already recorded. Reports an
  /// assertion failure if there is no information object or if the information object throws.
  void issueAdded(const std::shared_ptr<issue::IssueInstance>& issue, bool flag) override;
  /// Records the removal of each recorded issue with the current time, and removes the issue from
  /// the cache. Reports an assertion failure for each issue that was not recorded. Null issues are
  /// skipped.
  void issuesRemoved(const std::vector<std::shared_ptr<issue::IssueInstance>>& issues) override;
  /// Records that the list was emptied, without details.
  void issuesRemoveAll() override;
  /// Records nothing.
  void issueReadStateChanged(
      const std::vector<std::shared_ptr<issue::IssueInstance>>& issues) override;

 private:
  std::unique_ptr<items::IssueListStorageEvent> createStorageItem(
      const issue::IssueInstance& issue) const;
  void addMessageDetails(const issue::IssueInstance& issue,
                         items::IssueListStorageEvent& item) const;
  void addObjectAttributes(const issue::IssueInstance& issue,
                           items::IssueListStorageEvent& item) const;

  CipDatabases& databases_;
  const std::unique_ptr<IssueListInformationInterface> information_;
  std::map<details::IssueKey, items::IssueListStorageEvent> recorded_;
};

}  // namespace qel::log::analytics::listeners
