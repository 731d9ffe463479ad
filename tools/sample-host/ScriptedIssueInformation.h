#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"

namespace qel::samplehost {

/// Returns the texts of the script unchanged. The text of a missing attribute is empty.
class ScriptedIssueInformation : public log::analytics::IssueListInformationInterface {
 public:
  std::string getMessageActionText(const std::string& action) const override { return action; }
  std::string getMessageSystemTypeText(const log::issue::IssueMessage& message) const override {
    return message.systemType;
  }
  std::string getMessageObjectDescriptionText(
      const log::issue::IssueMessage& message) const override {
    return message.objectDescription;
  }
  std::string getObjectAttributeText(std::uint32_t attribute,
                                     const log::issue::ObjectAttributes& record) const override {
    const auto found = record.find(attribute);
    return found == record.end() ? "" : found->second;
  }
};

}  // namespace qel::samplehost
