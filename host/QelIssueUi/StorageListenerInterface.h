#pragma once

#include <memory>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::issue {

/// Told of what happens to the issues that the host stores, one notification at a time. Null issues
/// are passed over.
class StorageListenerInterface {
 public:
  virtual ~StorageListenerInterface() = default;

  /// `flag` is set for an issue that is not to be told about.
  virtual void issueAdded(const std::shared_ptr<IssueInstance>& issue, bool flag) = 0;
  /// They are found again by what tells issues apart (see `IssueInstance`).
  virtual void issuesRemoved(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
  /// The list was emptied; which issues it held is not told.
  virtual void issuesRemoveAll() = 0;
  /// The user has read these issues, or marked them as unread.
  virtual void issueReadStateChanged(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
};

}  // namespace qel::log::issue
