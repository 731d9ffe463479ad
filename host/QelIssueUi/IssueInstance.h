#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/QelId/Guid.h"

namespace qel::log::issue {

enum class Priority : std::uint32_t { Low, Medium, High };

enum class MessageCategory : std::uint32_t { Info, Error, Warning };

/// What an issue has to say, in the host's own terms; people read it in the words of an information
/// object.
struct IssueMessage {
  Guid id;
  std::string action;
  std::string systemType;
  std::string objectDescription;
  MessageCategory category = MessageCategory::Info;
};

/// The attributes of one object that an issue is about, by their numbers.
using ObjectAttributes = std::map<std::uint32_t, std::string>;

/// Something that can mend an issue.
class IssueSolver {
 public:
  virtual ~IssueSolver() = default;
};

/// An error, a warning or a message about the model, as the host's issue list keeps it.
struct IssueInstance {
  Guid id;
  Priority priority = Priority::Low;
  std::string description;
  double timestamp = 0;                         ///< in the host's own unit
  std::shared_ptr<const IssueMessage> message;  ///< may be null
  std::vector<ObjectAttributes> objectAttributes;
  std::vector<std::shared_ptr<IssueSolver>> solvers;
};

}  // namespace qel::log::issue
