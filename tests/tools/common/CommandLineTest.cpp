#include <gmock/gmock.h>

#include "tools/common/CommandLine.h"

namespace qel::tools {
namespace {

const ProgramDescription program{"greeter",
                                 "Greets people.",
                                 {{"name", "TEXT", "who is greeted", Option::Presence::Required},
                                  {"times", "N", "how often", Option::Presence::Optional, "3"},
                                  {"at", "HOST:PORT", "where", Option::Presence::Optional, "h:1"},
                                  {"loud", "", "shouts"}}};

/// What a run with these arguments says: its values, what it printed, or its complaint.
std::string outcome(const std::vector<std::string>& commandLine) {
  std::ostringstream output;
  try {
    if (const auto arguments = parseCommandLine(program, commandLine, output)) {
      output << arguments->text("name") << ' ' << arguments->number("times", 1, 10)
             << (arguments->has("loud") ? " loud " : " ") << arguments->endpoint("at", 1).host
             << ' ' << toText(arguments->endpoint("at", 1));
    }
  } catch (const InputError& error) {
    return error.what();
  }
  return output.str();
}

TEST(CommandLine, takesItsOptionsAndRefusesAllElse) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> outcomes{
      {{"--name", "Ada"}, "Ada 3 h h:1"},
      {{"--times=9.5", "--loud", "--name=--Ada=x"}, "--Ada=x 9.5 loud h h:1"},
      {{"--name", "-", "--at", "[::1]:65535"}, "- 3 ::1 [::1]:65535"},
      {{}, "--name TEXT is required"},
      {{"--name", "--loud"}, "--name needs a value: --name TEXT"},
      {{"--loud=yes"}, "--loud takes no value"},
      {{"--nam", "Ada"}, "unknown option --nam (--help lists the options)"},
      {{"Ada"}, "unexpected argument \"Ada\" (--help lists the options)"},
      {{"--name", "A", "--name", "A"}, "--name is given twice"},
      {{"--name=A", "--times=11"}, "--times: \"11\" is not a number from 1 to 10"},
      {{"--name=A", "--times=nan"}, "--times: \"nan\" is not a number from 1 to 10"},
      {{"--name=A", "--at=443"}, "--at: \"443\" is not of the form HOST:PORT"},
      {{"--name=A", "--at=::1:443"}, "--at: \"::1:443\" is not of the form HOST:PORT"},
      {{"--name=A", "--at=h:65536"}, "--at: \"65536\" is not a port from 1 to 65535"},
      {{"--help"}, R"(Usage: greeter [options]
Greets people.

  --name TEXT     who is greeted (required)
  --times N       how often (default: 3)
  --at HOST:PORT  where (default: h:1)
  --loud          shouts
  --help          prints this text
  --version       prints the program's version
)"},
  };
  for (const auto& [commandLine, expected] : outcomes) {
    EXPECT_EQ(outcome(commandLine), expected);
  }
}

}  // namespace
}  // namespace qel::tools
