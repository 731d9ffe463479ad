#include <gmock/gmock.h>

#include "tools/common/CommandLine.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {
namespace {

/// An issue that is added, with these fields at its end.
std::string issueWith(const std::string& fields) {
  return R"({"notify": "issueAdded", "issue": {"id": "00000000-0000-4000-8000-000000000001",)"
         R"( "priority": 0, "description": "", "timestamp": 0, )" +
         fields + "}}";
}

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
      {R"({"notify": "onCommandStarted", "id": "", "text": "", "location": 4294967296})",
       "field \"location\" must be a whole number from -2147483648 to 4294967295"},
      {R"({"notify": "onFilterStateChanged", "changedType": 0, "changedStatus": true,)"
       R"( "states": [true, true, 1, true]})",
       "field \"states[2]\" must be true or false"},
      {issueWith(R"("message": {"action": ""})"), "field \"issue.message.id\" is missing"},
      {issueWith(R"("message": null, "attributes": [{"01": ""}])"),
       "field \"issue.attributes[0].01\" must be named by a decimal number"},
      {R"({"wait": -1})", "field \"wait\" must be a number from 0 to 86400"},
      {R"({"webUpdate": {"success": -1, "corrupt": 0}})",
       "field \"webUpdate.success\" must be a whole number from 0 to 18446744073709551615"},
  };
  for (const auto& [line, fault] : faults) {
    std::istringstream script("{\"wait\": 0.25}\r\n \t\r\n" + line);
    EXPECT_THAT([&] { readSessionScript(script, "a.jsonl"); },
                testing::ThrowsMessage<tools::InputError>("a.jsonl:3: " + fault));
  }
}

}  // namespace
}  // namespace qel::samplehost
