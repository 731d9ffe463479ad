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

/// An issue that is added, with these fields at its end.
std::string issueWith(const std::string& fields) {
  return R"({"notify": "issueAdded", "issue": {"id": "00000000-0000-4000-8000-000000000001",)"
         R"( "priority": 0, "description": "", "timestamp": 0, )" +
         fields + "}}";
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
    std::string line;
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
      {R"({"notify": "onCommandStarted", "id": "", "text": "", "location": 4294967296})",
       "field \"location\" must be a whole number from -2147483648 to 4294967295"},
      {R"({"notify": "onCommandStopped", "id": "", "text": "", "cancelled": true, "details": null})",
       "field \"details\" must be an object"},
      {R"({"notify": "onFilterStateChanged", "changedType": 0, "changedStatus": true,
           "states": [true, true, true]})",
       "field \"states\" must be a list of 4"},
      {R"({"notify": "onFilterStateChanged", "changedType": 0, "changedStatus": true,
           "states": [true, true, 1, true]})",
       "field \"states[2]\" must be true or false"},
      {R"({"notify": "issueAdded", "issue": {"id": "12"}})", "field \"issue.id\" must be a GUID"},
      {R"({"notify": "issueAdded", "issue": {"priority": 1}})", "field \"issue.id\" is missing"},
      {issueWith(R"("message": {"action": ""})"), "field \"issue.message.id\" is missing"},
      {issueWith(R"("message": [])"), "field \"issue.message\" must be an object"},
      {issueWith(R"("message": null, "attributes": {})"),
       "field \"issue.attributes\" must be a list"},
      {issueWith(R"("message": null, "attributes": [{}, 1])"),
       "field \"issue.attributes[1]\" must be an object"},
      {issueWith(R"("message": null, "attributes": [{"x": ""}])"),
       "field \"issue.attributes[0].x\" must be named by a decimal number"},
      {issueWith(R"("message": null, "attributes": [{"01": ""}])"),
       "field \"issue.attributes[0].01\" must be named by a decimal number"},
      {issueWith(R"("message": null, "attributes": [{"4": 1}])"),
       "field \"issue.attributes[0].4\" must be a text"},
      {issueWith(R"("message": null, "attributes": [], "solvers": -1)"),
       "field \"issue.solvers\" must be a whole number from 0 to 65535"},
      {issueWith(R"("message": null, "attributes": [], "solvers": 0, "read": true)"),
       "unknown field \"issue.read\""},
      {R"({"notify": "issuesRemoved", "issues": [{"id": null}]})",
       "field \"issues[0].id\" must be a text"},
      {R"({"notify": "issuesRemoveAll", "issues": []})", "unknown field \"issues\""},
      {R"({"wait": -1})", "field \"wait\" must be a number from 0 to 86400"},
      {R"({"wait": true})", "field \"wait\" must be a number from 0 to 86400"},
      {R"({"join": false})", "field \"join\" must be true"},
      {R"({"stopSending": 1})", "field \"stopSending\" must be true or false"},
      {R"({"webUpdate": {"success": -1, "corrupt": 0}})",
       "field \"webUpdate.success\" must be a whole number from 0 to 18446744073709551615"},
  };
  for (const auto& [line, fault] : cases) {
    auto oneLine = line;
    std::erase(oneLine, '\n');
    EXPECT_EQ(faultOf("{\"wait\": 1}\n\n" + oneLine + "\n"), std::string("a.jsonl:3: ") + fault);
  }
}

}  // namespace
}  // namespace qel::samplehost
