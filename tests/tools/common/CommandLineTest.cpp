#include <sstream>

#include <gmock/gmock.h>

#include "tools/common/CommandLine.h"

namespace qel::tools {
namespace {

using testing::StartsWith;

const ProgramDescription program{"greeter",
                                 "Greets people.",
                                 {{"name", "TEXT", "who is greeted", Option::Presence::Required},
                                  {"times", "N", "how often", Option::Presence::Optional, "3"},
                                  {"at", "HOST:PORT", "where"},
                                  {"loud", "", "shouts"}}};

/// What a run with these arguments says: its values, what it printed, or its complaint.
std::string outcome(const std::vector<std::string>& arguments) {
  std::ostringstream output;
  try {
    const auto parsed = parseCommandLine(program, arguments, output);
    if (!parsed) {
      return output.str();
    }
    output << parsed->text("name") << ' ' << parsed->integer("times", 1, 10);
    if (parsed->has("loud")) {
      output << " loud";
    }
    if (parsed->has("at")) {
      const Endpoint at = parsed->endpoint("at", 1);
      output << ' ' << at.host << ' ' << toText(at);
    }
    return output.str();
  } catch (const InputError& error) {
    return error.what();
  }
}

TEST(CommandLine, takesItsOptionsAndRefusesAllElse) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{"--name", "Ada"}, "Ada 3"},
      {{"--times=10", "--loud", "--name=--Ada=x"}, "--Ada=x 10 loud"},
      {{"--name", "-", "--at", "[::1]:443"}, "- 3 ::1 [::1]:443"},
      {{"--name=A", "--at=localhost:65535"}, "A 3 localhost localhost:65535"},
      {{}, "--name TEXT is required"},
      {{"--name"}, "--name needs a value: --name TEXT"},
      {{"--name", "--loud"}, "--name needs a value: --name TEXT"},
      {{"--name="}, "--name needs a value: --name TEXT"},
      {{"--loud=yes"}, "--loud takes no value"},
      {{"--nam", "Ada"}, "unknown option --nam (--help lists the options)"},
      {{"--"}, "unknown option -- (--help lists the options)"},
      {{"-n", "Ada"}, "unexpected argument \"-n\" (--help lists the options)"},
      {{"--name", "A", "B"}, "unexpected argument \"B\" (--help lists the options)"},
      {{"--name", "A", "--name", "A"}, "--name is given twice"},
      {{"--name=A", "--times=11"}, "--times: \"11\" is not a whole number from 1 to 10"},
      {{"--name=A", "--times=2x"}, "--times: \"2x\" is not a whole number from 1 to 10"},
      {{"--name=A", "--at=443"}, "--at: \"443\" is not of the form HOST:PORT"},
      {{"--name=A", "--at=:443"}, "--at: \":443\" is not of the form HOST:PORT"},
      {{"--name=A", "--at=::1:443"}, "--at: \"::1:443\" is not of the form HOST:PORT"},
      {{"--name=A", "--at=h:0"}, "--at: \"0\" is not a port from 1 to 65535"},
      {{"--name=A", "--at=h:65536"}, "--at: \"65536\" is not a port from 1 to 65535"},
  };
  for (const auto& [arguments, expected] : cases) {
    EXPECT_EQ(outcome(arguments), expected) << testing::PrintToString(arguments);
  }
}

TEST(CommandLine, readsNumbersWithinTheirRangeOnly) {
  const Arguments arguments({{"half", "0.5"}, {"none", "nan"}, {"huge", "1e999"}});
  EXPECT_EQ(arguments.number("half", 0, 1), 0.5);
  for (const char* name : {"none", "huge", "absent"}) {
    EXPECT_THROW(arguments.number(name, 0, 1), InputError) << name;
  }
  EXPECT_THROW(arguments.number("half", 1, 2), InputError);
}

TEST(CommandLine, printsHelpAndVersionWithoutAskingForMore) {
  EXPECT_EQ(outcome({"--help"}),
            "Usage: greeter [options]\n"
            "Greets people.\n"
            "\n"
            "  --name TEXT     who is greeted (required)\n"
            "  --times N       how often (default: 3)\n"
            "  --at HOST:PORT  where\n"
            "  --loud          shouts\n"
            "  --help          prints this text\n"
            "  --version       prints the program's version\n");
  EXPECT_THAT(outcome({"--loud", "--version"}), StartsWith("greeter 0."));
}

TEST(RunProgram, turnsExceptionsIntoALineAndAStatus) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(runProgram("greeter", [] { return 7; }), 7);
  EXPECT_EQ(runProgram("greeter", []() -> int { throw InputError("names.txt:3: no name"); }), 2);
  EXPECT_EQ(runProgram("greeter", []() -> int { throw std::bad_alloc(); }), 1);
  EXPECT_EQ(runProgram("greeter", []() -> int { throw 1; }), 1);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              StartsWith("greeter: names.txt:3: no name\ngreeter: "));
}

}  // namespace
}  // namespace qel::tools
