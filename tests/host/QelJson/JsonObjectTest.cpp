#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/QelJson/JsonObject.h"

namespace qel::json {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

std::string textWith(std::string_view value) {
  return JsonObject().addString("k", value).toString();
}

TEST(JsonObjectTest, WritesOneLineInTheOrderOfAddition) {
  EXPECT_EQ(JsonObject().toString(), "{}");

  JsonObject nested;
  nested.addString("Name", "");
  JsonObject json;
  json.addString("Zebra", "last first")
      .addBool("Yes", true)
      .addBool("No", false)
      .addDouble("Number", 96)
      .addStringMap("Map", {{"b", "2"}, {"a", "1"}})
      .addStringMap("Empty map", {})
      .addStringVector("Texts", {"a", "b"})
      .addStringVector("No texts", {})
      .addJsonObject("Object", nested)
      .addJsonObject("Empty object", {})
      .addJsonObjectVector("Objects", {nested, {}})
      .addJsonObjectVector("No objects", {})
      .addString("Zebra", "again");
  const std::string expected =
      R"({"Zebra": "last first", "Yes": true, "No": false, "Number": 96.0, )"
      R"("Map": {"a": "1", "b": "2"}, "Empty map": {}, "Texts": ["a", "b"], "No texts": [], )"
      R"("Object": {"Name": ""}, "Empty object": {}, "Objects": [{"Name": ""}, {}], )"
      R"("No objects": [], "Zebra": "again"})";
  EXPECT_EQ(json.toString(), expected);
  EXPECT_EQ(std::move(json).toString(), expected);
}

TEST(JsonObjectTest, TextThatEndsInABraceIsNoOpeningOfAnObject) {
  EXPECT_EQ(JsonObject().addString("a{", "b{").addString("c", "{").toString(),
            R"({"a{": "b{", "c": "{"})");
}

TEST(JsonObjectTest, EscapesAndRepairsTexts) {
  struct Case {
    std::string_view value;
    std::string_view written;
  };
  const std::vector<Case> cases = {
      {R"(C:\plans\"A")", R"(C:\\plans\\\"A\")"},
      {"\b\f\n\r\t", R"(\b\f\n\r\t)"},
      {"a\0b\x01\x1F"sv, R"(a\u0000b\u0001\u001f)"},
      {"\x7F/", "\x7F/"},
      {"Geb\xC3\xA4ude \xE2\x80\xA8 \xF0\x9F\x8F\xA0",
       "Geb\xC3\xA4ude \xE2\x80\xA8 \xF0\x9F\x8F\xA0"},
      {"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},                  // the last code point
      {"Geb\xE4ude", "Geb\xEF\xBF\xBDude"},                      // Latin-1
      {"\xE2\x82", "\xEF\xBF\xBD"},                              // cut off at the end
      {"\xE2\x82z", "\xEF\xBF\xBDz"},                            // cut off, one invalid part
      {"\xF0\x9F\x8F\"", "\xEF\xBF\xBD\\\""},                    // the quote is kept
      {"\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD"},                  // no lead
      {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},                  // overlong
      {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // surrogate
      {"\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // too large
      {"\xFF", "\xEF\xBF\xBD"},
  };
  for (const auto& [value, written] : cases) {
    const std::string expected = R"({"k": ")" + std::string(written) + R"("})";
    EXPECT_EQ(textWith(value), expected);
    EXPECT_TRUE(nlohmann::json::accept(expected)) << expected;
  }
}

TEST(JsonObjectTest, KeysAndElementsAreEscapedToo) {
  const std::string hostile = "q\"\\\n\0\xFF"s;
  const std::string repaired = "q\"\\\n\0\xEF\xBF\xBD"s;
  const auto json = nlohmann::json::parse(JsonObject()
                                              .addString(hostile, "")
                                              .addStringMap("map", {{hostile, hostile}})
                                              .addStringVector("texts", {hostile})
                                              .toString());
  EXPECT_TRUE(json.contains(repaired));
  EXPECT_EQ(json["map"].at(repaired), repaired);
  EXPECT_EQ(json["texts"].at(0), repaired);
}

TEST(JsonObjectTest, AnyBytesYieldTextThatParses) {
  std::mt19937 random(20261121);  // the same texts each time
  // Leads, continuations and what must be escaped, so that most texts are nearly valid.
  constexpr std::string_view bytes = "az\"\\\n\x1B\x7F\x80\x8F\xBF\xC2\xE0\xE2\xED\xF0\xF4\xFF"sv;
  std::uniform_int_distribution<std::size_t> pick(0, bytes.size() - 1);
  for (std::size_t round = 0; round < 20'000; ++round) {
    std::string value(round % 9, '\0');
    for (char& byte : value) {
      byte = bytes[pick(random)];
    }
    ASSERT_TRUE(nlohmann::json::accept(textWith(value))) << textWith(value);
  }
}

TEST(JsonObjectTest, WritesNumbersThatReadBack) {
  struct Case {
    double value;
    std::string_view written;
  };
  const std::vector<Case> cases = {{96, "96.0"},
                                   {0.1, "0.1"},
                                   {-2.5, "-2.5"},
                                   {1e300, "1e+300"},
                                   {std::numeric_limits<double>::infinity(), "null"},
                                   {std::numeric_limits<double>::quiet_NaN(), "null"}};
  for (const auto& [value, written] : cases) {
    EXPECT_EQ(JsonObject().addDouble("n", value).toString(),
              "{\"n\": " + std::string(written) + "}");
  }
}

}  // namespace
}  // namespace qel::json
