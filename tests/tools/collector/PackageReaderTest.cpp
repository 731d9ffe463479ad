#include <gmock/gmock.h>

#include "tools/collector/PackageReader.h"

namespace qel::collector {
namespace {

using testing::ElementsAre;
using testing::Eq;
using testing::Optional;
using namespace std::string_literals;

/// What a body was read as: `E` environment, `e` event, `r` refused; each with its count and text.
std::vector<std::string> reading(std::string_view body) {
  const Package package = readPackage(body);
  std::vector<std::string> lines;
  const auto add = [&](const std::string& kind, const auto& texts) {
    for (const auto& each : texts) {
      lines.push_back(kind + std::to_string(each.count) + ' ' + std::string(each.text));
    }
  };
  add("E", package.environments);
  add("e", package.events);
  add("r", package.refused);
  return lines;
}

std::string nested(std::size_t depth) {
  return R"({"a":)"s + std::string(depth - 1, '[') + std::string(depth - 1, ']') + '}';
}

std::string withEvents(const std::string& rows) {
  return R"({"version": "3.1", "events": [)" + rows + "]}";
}

TEST(PackageReader, keepsRowsByteForByteAndRefusesPoisonRowsAlone) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
      {R"({"version": "3.1", "environments": [{"a":1},{"b":2}], "events": [{"c":[{}]}]})",
       {R"(E1 {"a":1})", R"(E1 {"b":2})", R"(e1 {"c":[{}]})"}},
      {" {\"events\" :[\n{ \"a\" : 1.0e1 } ,\t{}\r\n] , \"version\":\"3.1\"}\n",
       {R"(e1 { "a" : 1.0e1 })", "e1 {}"}},
      {R"({"version": "3.1"})", {}},
      {withEvents(""), {}},
      {withEvents(",{},,"), {"e1 {}"}},
      {withEvents(R"({},{"a":1},{},{})"), {"e3 {}", R"(e1 {"a":1})"}},
      {withEvents(R"({"a":"]},[{\\\"\\"},{"\"}]":[[],{}]})"),
       {R"(e1 {"a":"]},[{\\\"\\"})", R"(e1 {"\"}]":[[],{}]})"}},
      {withEvents(R"({},bad,{"a":1},bad,[{}],7,"{}",{'a':1},{"a":1])"),
       {"e1 {}", R"(e1 {"a":1})", "r2 bad", "r1 [{}]", "r1 7", R"(r1 "{}")", "r1 {'a':1}",
        R"(r1 {"a":1])"}},
      {withEvents("{},{\"a\":\"\xff\"},\xef\xbb\xbf{},{}\0x,{\"a\":\"\\ud800\"}"s),
       {"e1 {}", "r1 {\"a\":\"\xff\"}", "r1 \xef\xbb\xbf{}", "r1 {}\0x"s, R"(r1 {"a":"\ud800"})"}},
      {withEvents(nested(64) + ',' + nested(65)), {"e1 "s + nested(64), "r1 "s + nested(65)}},
  };
  for (const auto& [body, expected] : cases) {
    EXPECT_THAT(reading(body), Eq(expected)) << body;
  }
}

TEST(PackageReader, refusesAsAWholeWhatIsNoPackage) {
  const std::vector<std::string> bodies{
      "",
      "no JSON",
      "[]",
      "{}",
      R"({"version": "3.2", "events": [{}]})",
      R"({"version": 3.1, "events": [{}]})",
      R"({"version": "3.1", "others": [{}]})",
      R"({"version": "3.1", "events": [{}], "events": [{"a":1}]})",
      R"({"version": "3.1", "events": [{}], "events": 1})",
      R"({"version": "3.1", "events": [{}})",
      R"({"version": "3.1", "events": [{}]} {})",
      "\xef\xbb\xbf"s + R"({"version": "3.1"} x)",
      R"({"version": "3.1"})" + "\0"s,
      withEvents(R"({},{"a":"broken)"),
      withEvents(R"({}},{})"),
      withEvents(R"({},{"a":{})"),
      withEvents("{}]"),
      std::string(1'000'000, '['),
      R"({"version": "3.1", "x": )"s + std::string(5000, '[') + std::string(5000, ']') + '}',
  };
  for (const std::string& body : bodies) {
    EXPECT_THAT(reading(body), ElementsAre("r1 "s + body));
  }
  std::string rows = "{}";
  for (std::size_t row = 1; row < mostRows; ++row) {
    rows += ",{}";
  }
  EXPECT_THAT(reading(withEvents(rows)), ElementsAre("e100000 {}"));
  EXPECT_THAT(reading(withEvents(rows + ",{}")), ElementsAre("r1 "s + withEvents(rows + ",{}")));
}

TEST(PackageReader, saysWhyATextIsRefused) {
  const std::string body = withEvents("bad,"s + nested(65));
  const Package package = readPackage(body);
  ASSERT_EQ(package.refused.size(), 2);
  EXPECT_EQ(package.refused[0].reason, "row is no JSON object");
  EXPECT_EQ(package.refused[1].reason, "row nested too deeply");
  EXPECT_EQ(readPackage("x").refused.at(0).reason, "no package");
}

TEST(RowReader, takesTextsOfTheRowItselfAsColumns) {
  const auto [verdict, columns] = readRow(
      R"({"Details": {"Category": "inner"}, "Category": "Übersicht\u0000\n", "Category": "second",
          "Event": 5, "Subcategory": ["x"], "SessionId": null, "Timestamp": "t", "Extra": "e"})");
  EXPECT_EQ(verdict, RowVerdict::Sound);
  EXPECT_THAT(columns, ElementsAre(std::nullopt, std::nullopt, Optional("t"s),
                                   Optional("Übersicht\0\n"s), std::nullopt, std::nullopt));
}

}  // namespace
}  // namespace qel::collector
