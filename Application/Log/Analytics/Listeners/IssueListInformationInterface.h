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

  virtual std::string getMessageActionText(const std::string& action) const = 0;
  virtual std::string getMessageSystemTypeText(const issue::IssueMessage& message) const = 0;
  virtual std::string getMessageObjectDescriptionText(const issue::IssueMessage& message) const = 0;
  virtual std::string getObjectAttributeText(std::uint32_t attribute,
                                             const issue::ObjectAttributes& record) const = 0;
};

}  // namespace qel::log::analytics
