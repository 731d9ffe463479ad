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

/// Records the issues that the host's issue list gains and loses.
///
/// What was recorded of an issue is kept, so that it is recorded as added only once, and that its
/// removal is told with the same details. Removing all issues forgets nothing: a later removal of
/// one of them is still told, a later addition is not. Without an information object no additions
/// are recorded. Takes no lock: the host notifies one at a time.
class QEL_ANALYTICS_EXPORT IssueListStorageListener
    : public qel::log::issue::StorageListenerInterface {
 public:
  /// The databases outlive the listener. `information` may be null.
  IssueListStorageListener(CipDatabases& databases,
                           std::unique_ptr<IssueListInformationInterface> information);

  /// Records the issue unless it is null, `flag` is set or it is recorded already. An assertion
  /// reports that there is no information object, or that it threw.
  void issueAdded(const std::shared_ptr<issue::IssueInstance>& issue, bool flag) override;
  /// Tells the removal of those that are recorded, with the current time, and forgets them. An
  /// assertion reports each of the others; null ones are passed over.
  void issuesRemoved(const std::vector<std::shared_ptr<issue::IssueInstance>>& issues) override;
  /// Tells that the list was emptied, without details.
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
