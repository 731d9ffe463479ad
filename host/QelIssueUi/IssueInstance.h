#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/QelId/Guid.h"

namespace qel::log::issue {

/// The urgency of an issue.
enum class Priority : std::uint32_t { Low, Medium, High };

/// The kind of an issue's message. The numeric values do not increase with severity.
enum class MessageCategory : std::uint32_t { Info, Error, Warning };

/// The message of an issue, in the host's internal terms. Users read a text that the host's
/// information object makes from the message.
struct IssueMessage {
  /// Two messages are different if any of these members differs.
  /// @{
  Guid id;
  std::string action;
  std::string systemType;
  std::string objectDescription;
  /// @}
  MessageCategory category = MessageCategory::Info;  ///< ignored in comparisons
};

/// The attributes of one object of an issue, keyed by attribute number.
using ObjectAttributes = std::map<std::uint32_t, std::string>;

/// An object that can resolve an issue.
class IssueSolver {
 public:
  virtual ~IssueSolver() = default;
};

/// An error, a warning or a message about the model, from the host's issue list. Two instances
/// represent the same issue if they differ only in priority, time, solvers and the message's
/// category.
struct IssueInstance {
  Guid id;                                            ///< of the issue; the message has its own
  Priority priority = Priority::Low;                  ///< assigned by the host
  std::string description;                            ///< the text for users (UTF-8)
  double timestamp = 0;                               ///< in the host's own unit
  std::shared_ptr<const IssueMessage> message;        ///< may be null
  std::vector<ObjectAttributes> objectAttributes;     ///< only the first element is reported
  std::vector<std::shared_ptr<IssueSolver>> solvers;  ///< only whether there are any is used
};

}  // namespace qel::log::issue
