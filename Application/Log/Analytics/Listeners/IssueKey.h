#pragma once

#include <compare>
#include <optional>
#include <string>
#include <vector>

#include "host/QelIssueUi/IssueInstance.h"

namespace qel::log::analytics::listeners {

/// What tells one issue from another, ordered member by member as they stand here. A missing
/// message comes first; a message's category tells nothing apart.
struct IssueKey {
  explicit IssueKey(const issue::IssueInstance& issue)
      : objectAttributes(issue.objectAttributes), description(issue.description), id(issue.id) {
    if (issue.message) {
      message = Message{issue.message->id, issue.message->action, issue.message->systemType,
                        issue.message->objectDescription};
    }
  }

  friend auto operator<=>(const IssueKey&, const IssueKey&) = default;

  struct Message {
    friend auto operator<=>(const Message&, const Message&) = default;

    Guid id;
    std::string action;
    std::string systemType;
    std::string objectDescription;
  };

  std::optional<Message> message;
  std::vector<issue::ObjectAttributes> objectAttributes;
  std::string description;
  Guid id;
};

}  // namespace qel::log::analytics::listeners
