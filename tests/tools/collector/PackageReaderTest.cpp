#include <gmock/gmock.h>

#include "tools/collector/PackageReader.h"

namespace qel::collector {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

/// What a body was read as: environments, events and refused texts, each with its count.
std::vector<std::string> reading(std::string_view body) {
  const Package package = readPackage(body);
  std::vector<std::string> lines;
  const auto add = [&](const auto& texts, const auto& kindOf) {
    for (const auto& read : texts) {
      lines.push_back(std::string(kindOf(read)) + ' ' + std::to_string(read.count) + ": " +
                      std::string(read.text));
    }
  };
  add(package.environments, [](const auto&) { return "environment"; });
  add(package.events, [](const auto&) { return "event"; });
  add(package.refused, [](const auto& refused) { return refused.reason; });
  return lines;
}

std::string nested(std::size_t depth) {
  return R"({"a":)" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + '}';
}

std::string withEvents(const std::string& rows) {
  return R"({"version": "3.1", "events": [)" + rows + "]}";
}

TEST(PackageReader, keepsRowsByteForByteAndRefusesPoisonRowsAlone) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> readings{
      {R"({"version": "3.1", "environments": [{"a":1},{"b":2}], "events": [{"c":[{}]}]})",
       {R"(environment 1: {"a":1})", R"(environment 1: {"b":2})", R"(event 1: {"c":[{}]})"}},
      {withEvents(R"({},bad,{"a":1},bad,[{}],{},"{}",{'a':1},{"a":1])"),
       {"event 2: {}", R"(event 1: {"a":1})", "row is no JSON object 2: bad",
        "row is no JSON object 1: [{}]", R"(row is no JSON object 1: "{}")",
        R"(row is no JSON object 1: {'a':1})", R"(row is no JSON object 1: {"a":1])"}},
      {withEvents("{\"\xff\":1},\xef\xbb\xbf{},{}\0x,{\"a\":\"\\ud800\"}"s),
       {"row is no JSON object 1: {\"\xff\":1}", "row is no JSON object 1: \xef\xbb\xbf{}",
        "row is no JSON object 1: {}\0x"s, R"(row is no JSON object 1: {"a":"\ud800"})"}},
      {withEvents(nested(64) + ',' + nested(65)),
       {"event 1: " + nested(64), "row nested too deeply 1: " + nested(65)}},
  };
  for (const auto& [body, expected] : readings) {
    EXPECT_EQ(reading(body), expected);
  }
}

TEST(PackageReader, refusesAsAWholeWhatIsNoPackage) {
  std::string rows = "{}";
  for (std::size_t row = 1; row < 100'000; ++row) {
    rows += ",{}";
  }
  EXPECT_THAT(reading(withEvents(rows)), ElementsAre("event 100000: {}"));
  const std::vector<std::string> bodies{
      withEvents(rows + ",{}"),
      R"({"version": "3.2", "events": [{}]})",
      R"({"version": "3.1", "events": [{}], "other": {"lost": [{}]}})",
      R"({"version": "3.1", "events": null, "environments": [{}], "events": [{"a":1}]})",
      R"({"version": "3.1", "events": [{}]} {})",
      R"({"version": "3.1"})" + "\0"s,
      withEvents(R"({},{"a":"broken)"),
      withEvents("{}]"),
      R"({"version": "3.1", "x": )" + std::string(500'000, '[') + std::string(500'000, ']') + '}',
  };
  for (const std::string& body : bodies) {
    EXPECT_THAT(reading(body), ElementsAre("no package 1: " + body));
  }
}

}  // namespace
}  // namespace qel::collector
