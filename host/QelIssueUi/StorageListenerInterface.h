#pragma once

#include <memory>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::issue {

/// Told of what happens to the issues that the host stores, one notification at a time.
class StorageListenerInterface {
 public:
  virtual ~StorageListenerInterface() = default;

  /// `flag` is set for an issue that is not to be told about.
  virtual void issueAdded(const std::shared_ptr<IssueInstance>& issue, bool flag) = 0;
  virtual void issuesRemoved(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
  virtual void issuesRemoveAll() = 0;
  virtual void issueReadStateChanged(const std::vector<std::shared_ptr<IssueInstance>>& issues) = 0;
};

}  // namespace qel::log::issue
