#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/QelId/Guid.h"

namespace qel::log::issue {

/// How urgent an issue is.
enum class Priority : std::uint32_t { Low, Medium, High };

/// The kind of an issue's message. The numbers do not rise with severity.
enum class MessageCategory : std::uint32_t { Info, Error, Warning };

/// The message of an issue, in the host's own terms. Users read the text of an information object
/// instead.
struct IssueMessage {
  /// Two messages differ if one of these differs.
  /// @{
  Guid id;
  std::string action;
  std::string systemType;
  std::string objectDescription;
  /// @}
  MessageCategory category = MessageCategory::Info;  ///< not compared
};

/// The attributes of one object of an issue, by their numbers.
using ObjectAttributes = std::map<std::uint32_t, std::string>;

/// Can resolve an issue.
class IssueSolver {
 public:
  virtual ~IssueSolver() = default;
};

/// An error, a warning or a message about the model, from the host's issue list. Two count as one
/// if they differ only in priority, time, solvers and the category of the message.
struct IssueInstance {
  Guid id;                                            ///< of the issue; its message has another
  Priority priority = Priority::Low;                  ///< the host's assessment
  std::string description;                            ///< the text for users (UTF-8)
  double timestamp = 0;                               ///< in the host's own unit
  std::shared_ptr<const IssueMessage> message;        ///< may be null
  std::vector<ObjectAttributes> objectAttributes;     ///< only the first record is reported
  std::vector<std::shared_ptr<IssueSolver>> solvers;  ///< only their existence counts
};

}  // namespace qel::log::issue
