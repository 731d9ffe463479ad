#pragma once

#include <compare>
#include <optional>
#include <string>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::analytics::listeners::details {

/// Identifies an issue. Keys are compared member by member in the order of declaration. A missing
/// message comes first. The category of a message is not compared.
struct IssueKey {
  /// Copies the compared values of the issue.
  explicit IssueKey(const issue::IssueInstance& issue)
      : objectAttributes(issue.objectAttributes), description(issue.description), id(issue.id) {
    if (issue.message) {
      message = Message{issue.message->id, issue.message->action, issue.message->systemType,
                        issue.message->objectDescription};
    }
  }

  friend auto operator<=>(const IssueKey&, const IssueKey&) = default;

  /// The compared values of a message.
  struct Message {
    friend auto operator<=>(const Message&, const Message&) = default;

    /// Compared in this order.
    /// @{
    Guid id;
    std::string action;
    std::string systemType;
    std::string objectDescription;
    /// @}
  };

  /// Compared in this order.
  /// @{
  std::optional<Message> message;
  std::vector<issue::ObjectAttributes> objectAttributes;
  std::string description;
  Guid id;
  /// @}
};

}  // namespace qel::log::analytics::listeners::details
