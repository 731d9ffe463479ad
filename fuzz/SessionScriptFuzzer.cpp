// A script is read to its end, or refused with one line that names the place. Nothing of it is
// broadcast.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "fuzz/Check.h"
#include "tools/common/CommandLine.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {
namespace {

using fuzz::check;

constexpr std::string_view scriptName = "script.jsonl";

void checkFault(std::string_view message, std::size_t lines) {
  check(message.starts_with(scriptName), "a fault names its file");
  message.remove_prefix(scriptName.size());
  check(message.starts_with(':'), "a fault names its line");
  std::size_t line = 0;
  const auto [end, error] =
      std::from_chars(message.data() + 1, message.data() + message.size(), line);
  check(error == std::errc() && 1 <= line && line <= lines, "a fault's line is one of the script");
  message.remove_prefix(static_cast<std::size_t>(end - message.data()));
  check(message.starts_with(": ") && message.size() > 2, "a fault says what it is");
  check(message.find('\n') == std::string_view::npos, "a fault is one line");
}

void checkSteps(const std::vector<Step>& steps, std::size_t lines) {
  std::size_t last = 0;
  for (const Step& step : steps) {
    check(last < step.line && step.line <= lines, "steps stand in the order of their lines");
    last = step.line;
    if (const auto* wait = std::get_if<Wait>(&step.action)) {
      check(0 <= wait->time.count() && wait->time.count() <= 86'400, "a wait is a day at most");
    }
    if (const auto* broadcast = std::get_if<Broadcast>(&step.action)) {
      check(static_cast<bool>(*broadcast), "a notification can be broadcast");
    }
  }
}

}  // namespace
}  // namespace qel::samplehost

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qel::samplehost;
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto lines = 1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  std::istringstream script(text);
  try {
    checkSteps(readSessionScript(script, std::string(scriptName)), lines);
  } catch (const qel::tools::InputError& fault) {
    checkFault(fault.what(), lines);
  }
  return 0;
}
