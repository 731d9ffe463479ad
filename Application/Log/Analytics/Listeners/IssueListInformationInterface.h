#pragma once

#include <cstdint>
#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::analytics {

/// Provides the texts that the host shows its users for issues.
///
/// The host implements this interface. Its operations are called on the thread that announces
/// stored issues. If one throws an exception derived from `std::exception`, the issue is not
/// recorded, and the exception is not passed on.
class QEL_ANALYTICS_EXPORT IssueListInformationInterface {
 public:
  virtual ~IssueListInformationInterface() = default;

  /// Called in this order for each added issue that has a message. The results are the details
  /// "MessageAction", "MessageSystemType" and "MessageObjectDescription".
  /// @{
  virtual std::string getMessageActionText(const std::string& action) const = 0;
  virtual std::string getMessageSystemTypeText(const issue::IssueMessage& message) const = 0;
  virtual std::string getMessageObjectDescriptionText(const issue::IssueMessage& message) const = 0;
  /// @}
  /// Called for each attribute record of an added issue. Only the texts of the first record are
  /// used. The values of `attribute` are 0 (message type), 1 (profession), 2 (description), 4
  /// (model), 6 (medium), 7 (system) and 8 (time stamp).
  virtual std::string getObjectAttributeText(std::uint32_t attribute,
                                             const issue::ObjectAttributes& record) const = 0;
};

}  // namespace qel::log::analytics
