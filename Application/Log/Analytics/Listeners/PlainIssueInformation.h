#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"

namespace qel::log::analytics {

/// For hosts whose issues already have the texts that users see. Returns the texts unchanged. The
/// text of a missing attribute is empty.
class PlainIssueInformation : public IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string& action) const override { return action; }
  std::string getMessageSystemTypeText(const issue::IssueMessage& message) const override {
    return message.systemType;
  }
  std::string getMessageObjectDescriptionText(const issue::IssueMessage& message) const override {
    return message.objectDescription;
  }
  std::string getObjectAttributeText(std::uint32_t attribute,
                                     const issue::ObjectAttributes& record) const override {
    const auto found = record.find(attribute);
    return found == record.end() ? "" : found->second;
  }
};

}  // namespace qel::log::analytics
