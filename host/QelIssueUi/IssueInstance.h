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

/// What an issue has to say, in the host's own terms; people read it in the words of an information
/// object.
struct IssueMessage {
  /// What tells one message from another.
  /// @{
  Guid id;
  std::string action;
  std::string systemType;
  std::string objectDescription;
  /// @}
  MessageCategory category = MessageCategory::Info;  ///< tells no messages apart
};

/// The attributes of one object that an issue is about, by their numbers.
using ObjectAttributes = std::map<std::uint32_t, std::string>;

/// Something that can mend an issue.
class IssueSolver {
 public:
  virtual ~IssueSolver() = default;
};

/// An error, a warning or a message about the model, as the host's issue list keeps it. Two that
/// differ in nothing but priority, time, solvers and the category of the message count as one.
struct IssueInstance {
  Guid id;                                            ///< of the issue; its message has another
  Priority priority = Priority::Low;                  ///< in the host's judgement
  std::string description;                            ///< as users read it (UTF-8)
  double timestamp = 0;                               ///< in the host's own unit
  std::shared_ptr<const IssueMessage> message;        ///< may be null
  std::vector<ObjectAttributes> objectAttributes;     ///< the first record is the one that is told
  std::vector<std::shared_ptr<IssueSolver>> solvers;  ///< what counts is whether there are any
};

}  // namespace qel::log::issue
