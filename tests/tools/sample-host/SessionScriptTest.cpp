#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>

#include "tools/common/CommandLine.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {
namespace {

using testing::SizeIs;

std::vector<Step> read(const std::string& text) {
  std::istringstream script(text);
  return readSessionScript(script, "a.jsonl");
}

std::string faultOf(const std::string& text) {
  try {
    read(text);
  } catch (const tools::InputError& fault) {
    return fault.what();
  }
  return "no fault";
}

TEST(SessionScriptTest, ReadsControlLinesAndSkipsBlankOnes) {
  const auto steps = read(
      "\n"
      "  \t\r\n"
      "{\"wait\": 0.25}\r\n"
      "{\"join\": true}\n"
      "{\"startSending\": true}\n"
      "\n"
      "{\"stopSending\": true}\n"
      R"({"webUpdate": {"success": 18446744073709551615, "corrupt": 0}})");
  ASSERT_THAT(steps, SizeIs(5));
  EXPECT_EQ(steps[0].line, 3U);
  EXPECT_EQ(std::get<Wait>(steps[0].action).time.count(), 0.25);
  EXPECT_TRUE(std::holds_alternative<Join>(steps[1].action));
  EXPECT_TRUE(std::holds_alternative<StartSending>(steps[2].action));
  EXPECT_TRUE(std::holds_alternative<StopSending>(steps[3].action));
  EXPECT_EQ(steps[4].line, 8U);
  EXPECT_EQ(std::get<WebUpdate>(steps[4].action).success, 18446744073709551615U);
}

TEST(SessionScriptTest, NamesFileLineAndFieldOfAFault) {
  struct Case {
    const char* line;
    const char* fault;
  };
  const std::vector<Case> cases{
      {"{\"wait\": 1", "not JSON"},
      {"{\"wait\": 1} {}", "not JSON"},
      {"{\"wait\": \"\xFF\"}", "not JSON"},
      {"[]", "not a JSON object"},
      {"{}", "field \"notify\" is missing"},
      {R"({"name": "x"})", "unknown field \"name\""},
      {R"({"notify": 3})", "field \"notify\" must be a text"},
      {R"({"notify": "onTea\n"})", R"(field "notify": unknown notification "onTea\n")"},
      {R"({"notify": "onBcfAction", "details": {}})", "field \"name\" is missing"},
      {R"({"notify": "onBcfAction", "name": null, "details": {}})",
       "field \"name\" must be a text"},
      {R"({"notify": "onHelpAction", "name": "x"})", "field \"details\" is missing"},
      {R"({"notify": "onHelpAction", "name": "x", "details": []})",
       "field \"details\" must be an object"},
      {R"({"notify": "onHelpAction", "name": "x", "details": {"a": 1}})",
       "field \"details.a\" must be a text"},
      {R"({"notify": "onHelpAction", "name": "x", "details": {}, "wait": 1})",
       "unknown field \"wait\""},
      {R"({"notify": "onApplicationStarted"})", "field \"text\" is missing"},
      {R"({"notify": "onApplicationCrashed", "text": "", "code": 1.5})",
       "field \"code\" must be a whole number from -2147483648 to 2147483647"},
      {R"({"notify": "onApplicationCrashed", "text": "", "code": 2147483648})",
       "field \"code\" must be a whole number from -2147483648 to 2147483647"},
      {R"({"notify": "onApplicationAsserted", "text": "", "assert": 1})",
       "field \"assert\" must be an object"},
      {R"({"notify": "onApplicationAsserted", "text": "", "assert":
           {"type": 0, "message": "", "function": "", "file": ""}})",
       "field \"assert.line\" is missing"},
      {R"({"notify": "onApplicationAsserted", "text": "", "assert":
           {"type": 0, "message": "", "function": "", "file": "", "line": 1, "column": 2}})",
       "unknown field \"assert.column\""},
      {R"({"notify": "onGeneralAction", "category": "", "subcategory": "", "details": {}})",
       "field \"event\" is missing"},
      {R"({"wait": -1})", "field \"wait\" must be a number from 0 to 86400"},
      {R"({"wait": true})", "field \"wait\" must be a number from 0 to 86400"},
      {R"({"join": false})", "field \"join\" must be true"},
      {R"({"stopSending": 1})", "field \"stopSending\" must be true or false"},
      {R"({"webUpdate": {"success": -1, "corrupt": 0}})",
       "field \"webUpdate.success\" must be a whole number from 0 to 18446744073709551615"},
  };
  for (const auto& [line, fault] : cases) {
    std::string oneLine(line);
    std::erase(oneLine, '\n');
    EXPECT_EQ(faultOf("{\"wait\": 1}\n\n" + oneLine + "\n"), std::string("a.jsonl:3: ") + fault);
  }
}

}  // namespace
}  // namespace qel::samplehost
