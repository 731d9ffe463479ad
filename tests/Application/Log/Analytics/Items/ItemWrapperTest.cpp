#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/ItemWrapper.h"

namespace qel::log::analytics::items {
namespace {

using Table = CipDatabaseClientInterface::Table;
using Rows = std::vector<const std::string*>;

TEST(ItemWrapperTest, JoinsTheRowsOfATable) {
  const std::string a = R"({"a":1})";
  const std::string b = R"({"b":2})";
  const struct {
    Rows rows;
    int table;
    std::string text;
    bool isNullOrEmpty;
  } cases[] = {
      {{&a, &b}, 1, R"({"version": "3.1", "events": [{"a":1},{"b":2}]})", false},
      {{&a, &b}, 0, R"({"version": "3.1", "environments": [{"a":1},{"b":2}]})", false},
      {{nullptr, &a, nullptr, &b}, 1, R"({"version": "3.1", "events": [{"a":1},{"b":2}]})", false},
      {{nullptr, nullptr}, 1, R"({"version": "3.1", "events": []})", false},
      {{}, 1, R"({"version": "3.1"})", true},
      {{}, 0, R"({"version": "3.1"})", true},
      {{&a}, 2, R"({"version": "3.1"})", false},
  };
  for (const auto& [rows, table, text, isNullOrEmpty] : cases) {
    const ItemWrapper package(rows, static_cast<Table>(table));
    EXPECT_EQ(package.toJson(), text);
    EXPECT_EQ(package.isNullOrEmpty(), isNullOrEmpty) << text;
  }
}

TEST(ItemWrapperTest, AssignmentLeavesTheTargetAsItWas) {
  const std::string a = R"({"a":1})";
  const Rows some{&a};
  const Rows none;
  ItemWrapper target(some, Table::Items);
  const ItemWrapper other(none, Table::Environments);
  target = other;
  EXPECT_EQ(target.toJson(), R"({"version": "3.1", "events": [{"a":1}]})");
}

}  // namespace
}  // namespace qel::log::analytics::items
