#include <gmock/gmock.h>

#include "tools/common/CommandLine.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {
namespace {

TEST(SessionScriptTest, NamesFileLineAndFieldOfAFault) {
  const std::map<std::string, std::string> faults{
      {R"({"wait": 1} {})", "not JSON"},
      {std::string("{\"wait\": 0}\0 ", 14), "not JSON"},
      {"{}", "field \"notify\" is missing"},
      {R"({"notify": "onTea\n"})", R"(field "notify": unknown notification "onTea\n")"},
      {R"({"notify": "onApplicationCrashed", "text": "", "code": 2147483648})",
       "field \"code\" must be a whole number from -2147483648 to 2147483647"},
      {R"({"notify": "onApplicationAsserted", "text": "", "assert": {"message": "",)"
       R"( "function": "", "file": "", "line": 1, "type": 0, "column": 2}})",
       "unknown field \"assert.column\""},
      {R"({"notify": "onFilterStateChanged", "changedType": 0, "changedStatus": true,)"
       R"( "states": [true, true, 1, true]})",
       "field \"states[2]\" must be true or false"},
      {R"({"notify": "issueAdded", "issue": {"id": "00000000-0000-4000-8000-000000000001",)"
       R"( "priority": 0, "description": "", "timestamp": 0, "message": {"action": ""}}})",
       "field \"issue.message.id\" is missing"},
      {R"({"wait": -1})", "field \"wait\" must be a number from 0 to 86400"},
  };
  for (const auto& [line, fault] : faults) {
    std::istringstream script("{\"wait\": 0.25}\r\n \t\r\n" + line);
    EXPECT_THAT([&] { readSessionScript(script, "a.jsonl"); },
                testing::ThrowsMessage<tools::InputError>("a.jsonl:3: " + fault));
  }
}

}  // namespace
}  // namespace qel::samplehost
