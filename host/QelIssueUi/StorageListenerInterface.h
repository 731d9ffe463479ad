#pragma once

#include <memory>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::issue {

/// Is notified of changes to the issues that the host stores. The host must send one notification
/// at a time. Null issues are ignored.
class StorageListenerInterface {
 public:
  virtual ~StorageListenerInterface() = default;

  /// An issue was added. It is not reported if `flag` is true.
  virtual void issueAdded(const std::shared_ptr<IssueInstance>& issue, bool flag) = 0;
  /// Issues were removed. They are matched by value, not by address (see `IssueInstance`).
  virtual void issuesRemoved(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
  /// All issues were removed. The notification does not list them.
  virtual void issuesRemoveAll() = 0;
  /// The user read these issues, or marked them as unread.
  virtual void issueReadStateChanged(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
};

}  // namespace qel::log::issue
