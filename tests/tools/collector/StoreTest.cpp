#include <gmock/gmock.h>

#include "tests/support/Query.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/collector/Store.h"

namespace qel::collector {
namespace {

using test::query;
using testing::ElementsAre;

class StoreTest : public testing::Test {
 protected:
  const test::TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "störe.db";
};

TEST_F(StoreTest, countsATextAsOftenAsThePackageThatHoldsItMost) {
  const std::string twice = R"({"version": "3.1", "events": [{"a":1},bad,{"a":1}]})";
  const std::string once = R"({"version": "3.1", "events": [{"a":1}], "environments": [{"a":1}]})";
  Store(file_).add(readPackage(once));
  const auto first = query(file_, "SELECT id, received, text FROM events");
  for (const auto& package : {twice, twice, once}) {
    Store(file_).add(readPackage(package));
  }
  EXPECT_EQ(query(file_, "SELECT id, received, text FROM events"), first);
  EXPECT_THAT(query(file_, "SELECT count, text FROM events"), ElementsAre(R"(2|{"a":1})"));
  EXPECT_THAT(query(file_, "SELECT count, text FROM environments"), ElementsAre(R"(1|{"a":1})"));
  EXPECT_THAT(query(file_, "SELECT count, reason, text FROM refused"),
              ElementsAre("1|row is no JSON object|bad"));
}

TEST_F(StoreTest, keepsTextsAsTheyCameAndTheirColumns) {
  const std::string hostile = R"({"Category": "'); DROP TABLE events; --\u0000\n", "Event": 5,
      "Details": {"Timestamp": "inner"}, "Category": "second", "SessionId": null, "x": ")" +
                              std::string(1'000'000, 'x') + "\"}";
  const std::string common = R"({"InstallationId":"i","SessionId":"id","Timestamp":"t")";
  Store store(file_);
  store.add(readPackage(R"({"version": "3.1", "events": [)" + hostile + "," + common +
                        R"(,"Category":"c","Subcategory":"s","Event":"e"}], "environments": [)" +
                        common + R"(,"OS":{}}]})"));
  store.add(readPackage(std::string("\0\xff'", 3)));
  EXPECT_THAT(
      query(file_,
            "SELECT category, subcategory, event, installation, session, time, text FROM events"),
      ElementsAre(std::string("'); DROP TABLE events; --\0\n||||||", 33) + hostile,
                  "c|s|e|i|id|t|" + common + R"(,"Category":"c","Subcategory":"s","Event":"e"})"));
  EXPECT_THAT(query(file_, "SELECT installation, session, time, text FROM environments"),
              ElementsAre("i|id|t|" + common + R"(,"OS":{}})"));
  EXPECT_THAT(query(file_, "SELECT reason, hex(text) FROM refused"),
              ElementsAre("no package|00FF27"));
}

}  // namespace
}  // namespace qel::collector
