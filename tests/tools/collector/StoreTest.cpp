#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/collector/Store.h"

namespace qel::collector {
namespace {

using namespace std::string_literals;
using namespace testing;

std::string nested(std::size_t depth) {
  return R"({"a":)" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + '}';
}

std::string withEvents(const std::string& rows) {
  return R"({"version": "3.1", "events": [)" + rows + "]}";
}

class StoreTest : public testing::Test {
 protected:
  void add(const std::string& body) const { Store(file_).add(readPackage(body)); }
  std::vector<std::string> query(const std::string& columns) const {
    return test::query(file_, "SELECT " + columns);
  }

  /// What the store has of a body alone: table, or why it was refused, count and text.
  std::vector<std::string> storedOf(const std::string& body) const {
    std::filesystem::remove(file_);
    add(body);
    return query(
        "'environment', count, text FROM environments UNION ALL"
        " SELECT 'event', count, text FROM events UNION ALL"
        " SELECT reason, count, text FROM refused");
  }

  const test::TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "störe.db";
};

TEST_F(StoreTest, KeepsRowsByteForByteAndRefusesPoisonRowsAlone) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
      {R"({"version": "3.1", "environments": [{"a":1},{"b":2}], "events": [{"c":[{}]}]})",
       {R"(environment|1|{"a":1})", R"(environment|1|{"b":2})", R"(event|1|{"c":[{}]})"}},
      {withEvents(R"({},bad,{"a":1},bad,[{}],{},"{}",{'a':1},{"a":1])"),
       {"event|2|{}", R"(event|1|{"a":1})", "row is no JSON object|2|bad",
        "row is no JSON object|1|[{}]", R"(row is no JSON object|1|"{}")",
        R"(row is no JSON object|1|{'a':1})", R"(row is no JSON object|1|{"a":1])"}},
      {withEvents("{\"\xff\":1},\xef\xbb\xbf{},{}\0x,{\"a\":\"\\ud800\"}"s),
       {"row is no JSON object|1|{\"\xff\":1}", "row is no JSON object|1|\xef\xbb\xbf{}",
        "row is no JSON object|1|{}\0x"s, R"(row is no JSON object|1|{"a":"\ud800"})"}},
      {withEvents(nested(64) + ',' + nested(65)),
       {"event|1|" + nested(64), "row nested too deeply|1|" + nested(65)}},
  };
  for (const auto& [body, rows] : cases) {
    EXPECT_THAT(storedOf(body), ElementsAreArray(rows));
  }
}

TEST_F(StoreTest, RefusesAsAWholeWhatIsNoPackage) {
  std::string rows = "{}";
  for (std::size_t row = 1; row < 100'000; ++row) {
    rows += ",{}";
  }
  EXPECT_THAT(storedOf(withEvents(rows)), ElementsAre("event|100000|{}"));
  for (const std::string& body : {
           withEvents(rows + ",{}"),
           R"({"version": "3.2", "events": [{}]})"s,
           R"({"version": "3.1", "events": [{}], "other": {"lost": [{}]}})"s,
           R"({"version": "3.1", "events": null, "environments": [{}], "events": [{"a":1}]})"s,
           R"({"version": "3.1", "events": [{}]} {})"s,
           R"({"version": "3.1"})" + "\0\xff'"s,
           withEvents(R"({},{"a":"broken)"),
           withEvents("{}]"),
           R"({"version": "3.1", "x": )" + std::string(500'000, '[') + std::string(500'000, ']') +
               '}',
       }) {
    EXPECT_THAT(storedOf(body), ElementsAre("no package|1|" + body));
  }
}

TEST_F(StoreTest, CountsATextAsOftenAsThePackageThatHoldsItMost) {
  const std::string twice = withEvents(R"({"a":1},bad,{"a":1})");
  const std::string once = R"({"version": "3.1", "events": [{"a":1}], "environments": [{"a":1}]})";
  add(once);
  const auto first = query("id, received, text FROM events");
  for (const auto& package : {twice, twice, once}) {
    add(package);
  }
  EXPECT_EQ(query("id, received, text FROM events"), first);
  EXPECT_THAT(query("count, text FROM events"), ElementsAre(R"(2|{"a":1})"));
  EXPECT_THAT(query("count, text FROM environments"), ElementsAre(R"(1|{"a":1})"));
  EXPECT_THAT(query("count, text FROM refused"), ElementsAre("1|bad"));
}

TEST_F(StoreTest, FillsTheColumnsFromTheMembersOfATextAndLeavesTheTextAlone) {
  const std::string hostile = R"({"Category": "'); DROP TABLE events; --\u0000\n", "Event": 5,
      "Details": {"Timestamp": "inner"}, "Category": "second", "SessionId": null, "x": ")" +
                              std::string(1'000'000, 'x') + "\"}";
  const std::string common = R"({"InstallationId":"i","SessionId":"id","Timestamp":"t")";
  const std::string named = common + R"(,"Category":"c","Subcategory":"s","Event":"e"})";
  add(R"({"version": "3.1", "events": [)" + hostile + "," + named + R"(], "environments": [)" +
      common + R"(,"OS":{}}]})");
  EXPECT_THAT(
      query("category, subcategory, event, installation, session, time, text FROM events"),
      ElementsAre("'); DROP TABLE events; --\0\n||||||"s + hostile, "c|s|e|i|id|t|" + named));
  EXPECT_THAT(query("installation, session, time, text FROM environments"),
              ElementsAre("i|id|t|" + common + R"(,"OS":{}})"));
}

}  // namespace
}  // namespace qel::collector
