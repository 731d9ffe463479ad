#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"
#include "tools/common/Program.h"
#include "tools/sample-host/Interruption.h"
#include "tools/sample-host/Options.h"
#include "tools/sample-host/SampleHost.h"
#include "tools/sample-host/SessionScript.h"
#include "tools/sample-host/SessionSummary.h"

namespace qel::samplehost {
namespace {

constexpr const char* programName = "qel-sample-host";

std::vector<Step> readScript(const std::string& file) {
  if (file == "-") {
    return readSessionScript(std::cin, "standard input");
  }
  const auto path = utilities::pathFromUtf8(file);
  std::ifstream script(path, std::ios::binary);
  if (!script.is_open() || std::filesystem::is_directory(path)) {
    throw tools::InputError("--session: cannot read " + file);
  }
  return readSessionScript(script, file);
}

int run(const tools::Arguments& arguments) {
  const auto options = readOptions(arguments);
  if (!options) {
    return 0;
  }
  if (options->onlyChecksConnection) {
    const auto check = SampleHost(*options).checkConnection();
    std::cout << check.text << '\n';
    return check.result == decltype(check)::Result::Accepted ? 0 : 1;
  }
  const auto script = readScript(options->session);
  catchInterruptions(options->exitDeadline);
  const auto summary = SampleHost(*options).play(script);
  print(summary, std::cout);
  const auto failures = storageFailures(summary);
  for (const auto& failure : failures) {
    std::cerr << programName << ": " << failure << '\n';
  }
  return failures.empty() ? 0 : 1;
}

}  // namespace
}  // namespace qel::samplehost

int main(int count, char** values) {
  using namespace qel;
  return tools::runProgram(samplehost::programName, count, values, samplehost::run);
}
