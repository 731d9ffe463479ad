#pragma once

#include <compare>
#include <optional>
#include <string>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::analytics::listeners::details {

/// Identifies an issue. Keys are compared member by member in the order of declaration. A missing
/// message sorts first. The category of a message is not compared.
struct IssueKey {
  /// Copies the values of the issue that are compared.
  explicit IssueKey(const issue::IssueInstance& issue)
      : objectAttributes(issue.objectAttributes), description(issue.description), id(issue.id) {
    if (issue.message) {
      message = Message{issue.message->id, issue.message->action, issue.message->systemType,
                        issue.message->objectDescription};
    }
  }

  friend auto operator<=>(const IssueKey&, const IssueKey&) = default;

  /// The values of a message that are compared.
  struct Message {
    friend auto operator<=>(const Message&, const Message&) = default;

    /// The members are compared in this order.
    /// @{
    Guid id;
    std::string action;
    std::string systemType;
    std::string objectDescription;
    /// @}
  };

  /// The members are compared in this order.
  /// @{
  std::optional<Message> message;
  std::vector<issue::ObjectAttributes> objectAttributes;
  std::string description;
  Guid id;
  /// @}
};

}  // namespace qel::log::analytics::listeners::details
