#include <gtest/gtest.h>

#include "host/QelJson/JsonObject.h"

namespace qel::json {

using namespace std::string_literals;

TEST(JsonObjectTest, EscapesAndRepairsTexts) {
  const std::pair<std::string, std::string> cases[] = {
      {R"(C:\plans\"A")", R"(C:\\plans\\\"A\")"},
      {"\b\f\n\r\t", R"(\b\f\n\r\t)"},
      {"a\0b\x01\x1F"s, R"(a\u0000b\u0001\u001f)"},
      {R"("A"/)", R"(\"A\"/)"},
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

}  // namespace qel::json
