#pragma once

#include <memory>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::issue {

/// Receives changes of the issues that the host stores, one notification at a time. Null issues are
/// ignored.
class StorageListenerInterface {
 public:
  virtual ~StorageListenerInterface() = default;

  /// `flag` is set for an issue that is not to be reported.
  virtual void issueAdded(const std::shared_ptr<IssueInstance>& issue, bool flag) = 0;
  /// Issues are found by comparison (see `IssueInstance`).
  virtual void issuesRemoved(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
  /// The list was emptied. Its issues are not named.
  virtual void issuesRemoveAll() = 0;
  /// The user read these issues, or marked them as unread.
  virtual void issueReadStateChanged(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
};

}  // namespace qel::log::issue
