#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/QelJson/JsonObject.h"

namespace qel::json {
namespace {

using namespace std::string_literals;

TEST(JsonObjectTest, WritesOneLineInTheOrderOfAddition) {
  JsonObject nested;
  nested.addString("Name{", "{");
  JsonObject json;
  json.addString("Zebra", "last first")
      .addBool("Yes", true)
      .addBool("No", false)
      .addDouble("Whole", 96)
      .addDouble("Number", -0.1)
      .addDouble("Infinite", -HUGE_VAL)
      .addStringMap("Map", {{"b", "2"}, {"a", "1"}})
      .addStringMap("Empty map", {})
      .addStringVector("Texts", {"a", "b"})
      .addStringVector("No texts", {})
      .addJsonObject("Object", nested)
      .addJsonObject("Empty object", {})
      .addJsonObjectVector("Objects", {nested, {}})
      .addString("Zebra", "again");
  const std::string expected =
      R"({"Zebra": "last first", "Yes": true, "No": false, "Whole": 96.0, "Number": -0.1, )"
      R"("Infinite": null, "Map": {"a": "1", "b": "2"}, "Empty map": {}, "Texts": ["a", "b"], )"
      R"("No texts": [], "Object": {"Name{": "{"}, "Empty object": {}, )"
      R"("Objects": [{"Name{": "{"}, {}], "Zebra": "again"})";
  EXPECT_EQ(json.toString(), expected);
  EXPECT_EQ(std::move(json).toString(), expected);
}

TEST(JsonObjectTest, EscapesAndRepairsTexts) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"(C:\plans\"A")", R"(C:\\plans\\\"A\")"},
      {"\b\f\n\r\t", R"(\b\f\n\r\t)"},
      {"a\0b\x01\x1F"s, R"(a\u0000b\u0001\u001f)"},
      {"\x7F/", "\x7F/"},
      {"ä \xE2\x80\xA8 \xF4\x8F\xBF\xBF", "ä \xE2\x80\xA8 \xF4\x8F\xBF\xBF"},
      {"Geb\xE4ude", "Geb\uFFFDude"},          // Latin-1
      {"\xF0\x9F\x8F\"", "\uFFFD\\\""},        // the quote is kept
      {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // surrogate
  };
  for (const auto& [text, written] : cases) {
    const std::string quoted = '"' + written + '"';
    EXPECT_EQ(JsonObject().addStringMap(text, {{text, text}}).toString(),
              "{" + quoted + ": {" + quoted + ": " + quoted + "}}");
  }
}

}  // namespace
}  // namespace qel::json
