// A script is read to its end, or refused with one line that names the place. Nothing of it is
// broadcast.

#include <cstdint>
#include <regex>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "fuzz/Check.h"
#include "tools/common/InputError.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {
namespace {

using fuzz::check;

void checkFault(const std::string& message, std::size_t lines) {
  static const std::regex form(R"(script\.jsonl:([1-9][0-9]{0,8}): .)");
  std::smatch match;
  check(std::regex_search(message, match, form, std::regex_constants::match_continuous),
        "a fault names its file and line and says what it is");
  check(std::stoul(match[1]) <= lines, "a fault's line is one of the script");
  check(message.find('\n') == std::string::npos, "a fault is one line");
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream script(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(script, line);) {
    lines.push_back(line);
  }
  return lines;
}

bool isJsonObject(const std::string& line) {
  // The parser takes NUL for the end of the text.
  return line.find('\0') == std::string::npos && nlohmann::json::parse(line).is_object();
}

void checkSteps(const std::vector<Step>& steps, const std::vector<std::string>& lines) {
  std::size_t last = 0;
  for (const Step& step : steps) {
    check(last < step.line && step.line <= lines.size(), "steps stand in their lines' order");
    check(isJsonObject(lines[step.line - 1]), "a step's line is a JSON object");
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
  const auto lines = linesOf(text);
  std::istringstream script(text);
  try {
    checkSteps(readSessionScript(script, "script.jsonl"), lines);
  } catch (const qel::tools::InputError& fault) {
    checkFault(fault.what(), lines.size());
  }
  return 0;
}
