#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"

namespace qel::samplehost {

/// Tells of issues what the script says, in its own words; an attribute that it leaves out has an
/// empty text.
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
