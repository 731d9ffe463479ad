#include "tools/sample-host/SessionScript.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "host/QelNotification/NotificationTable.h"
#include "tools/common/ByteOrderMark.h"
#include "tools/common/InputError.h"

namespace qel::samplehost {
namespace {

using notification::Fields;
using notification::NotificationError;
using tools::InputError;

using Action = decltype(Step::action);

/// A day, in seconds.
constexpr double longestWait = 86'400;

void expectTrue(Fields& fields, const std::string& name) {
  if (!fields.flag(name)) {
    throw NotificationError("field \"" + name + "\" must be true");
  }
}

Action wait(Fields& fields) {
  return Wait{std::chrono::duration<double>(fields.number("wait", 0, longestWait))};
}

Action join(Fields& fields) {
  expectTrue(fields, "join");
  return Join{};
}

Action startSending(Fields& fields) {
  expectTrue(fields, "startSending");
  return StartSending{};
}

Action stopSending(Fields& fields) {
  expectTrue(fields, "stopSending");
  return StopSending{};
}

Action webUpdate(Fields& fields) {
  return fields.object("webUpdate", [](Fields& counts) {
    return WebUpdate{counts.integer<std::uint64_t>("success"),
                     counts.integer<std::uint64_t>("corrupt")};
  });
}

Action notify(Fields& fields) { return notification::readNotification(fields); }

/// A kind of script line: the field that identifies it, and the function that reads it.
struct Kind {
  std::string_view field;
  Action (*read)(Fields&);
};

constexpr std::array kinds{
    Kind{"notify", notify},
    Kind{"wait", wait},
    Kind{"join", join},
    Kind{"startSending", startSending},
    Kind{"stopSending", stopSending},
    Kind{"webUpdate", webUpdate},
};

Action readLine(const std::string& line) {
  const auto json = notification::parseJson(line);
  Fields fields(json);
  const auto* const kind = std::find_if(kinds.begin(), kinds.end(), [&](const auto& known) {
    return fields.has(std::string(known.field));
  });
  if (kind == kinds.end()) {
    fields.expectAllRead();
    throw NotificationError("field \"notify\" is missing");
  }
  auto action = kind->read(fields);
  fields.expectAllRead();
  return action;
}

bool isBlank(const std::string& line) {
  return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

std::vector<Step> readSessionScript(std::istream& script, const std::string& name) {
  std::vector<Step> steps;
  std::string line;
  for (std::size_t number = 1; std::getline(script, line); ++number) {
    if (number == 1) {
      tools::removeByteOrderMark(line);
    }
    if (isBlank(line)) {
      continue;
    }
    try {
      steps.push_back({number, readLine(line)});
    } catch (const NotificationError& fault) {
      throw InputError(name + ":" + std::to_string(number) + ": " + fault.what());
    }
  }
  if (script.bad()) {
    throw InputError(name + ": cannot be read");
  }
  return steps;
}

}  // namespace qel::samplehost
