#pragma once

#include <compare>
#include <optional>
#include <string>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::analytics::listeners::details {

/// What tells one issue from another, ordered member by member as they stand here. A missing
/// message comes first; a message's category tells nothing apart.
struct IssueKey {
  /// Copies what it needs of the issue.
  explicit IssueKey(const issue::IssueInstance& issue)
      : objectAttributes(issue.objectAttributes), description(issue.description), id(issue.id) {
    if (issue.message) {
      message = Message{issue.message->id, issue.message->action, issue.message->systemType,
                        issue.message->objectDescription};
    }
  }

  friend auto operator<=>(const IssueKey&, const IssueKey&) = default;

  /// What counts of an issue's message.
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
