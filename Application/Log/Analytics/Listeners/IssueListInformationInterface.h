#pragma once

#include <cstdint>
#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::analytics {

/// Puts issues into the words that the host shows its users. Implemented by the host; called on the
/// thread that tells of stored issues. What it throws, derived from `std::exception`, keeps the
/// issue from being recorded and goes no further.
class QEL_ANALYTICS_EXPORT IssueListInformationInterface {
 public:
  virtual ~IssueListInformationInterface() = default;

  /// Asked in this order about each added issue that has a message, for the details
  /// "MessageAction", "MessageSystemType" and "MessageObjectDescription".
  /// @{
  virtual std::string getMessageActionText(const std::string& action) const = 0;
  virtual std::string getMessageSystemTypeText(const issue::IssueMessage& message) const = 0;
  virtual std::string getMessageObjectDescriptionText(const issue::IssueMessage& message) const = 0;
  /// @}
  /// Asked about each record of an added issue, of which only the first one's texts are used, for
  /// the attributes 0 (message type), 1 (profession), 2 (description), 4 (model), 6 (medium), 7
  /// (system) and 8 (time stamp).
  virtual std::string getObjectAttributeText(std::uint32_t attribute,
                                             const issue::ObjectAttributes& record) const = 0;
};

}  // namespace qel::log::analytics
