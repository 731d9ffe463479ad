#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/ItemWrapper.h"

namespace qel::log::analytics::items {
namespace {

using Table = CipDatabaseClientInterface::Table;
using Rows = std::vector<const std::string*>;

TEST(ItemWrapperTest, JoinsTheRowsOfATable) {
  const std::string a = R"({"a":1})";
  const std::string b = R"({"b":2})";
  struct Case {
    Rows rows;
    const char* text;
    std::uint32_t table;
    bool isNullOrEmpty;
  };
  const std::vector<Case> cases = {
      {{&a, &b}, R"({"version": "3.1", "events": [{"a":1},{"b":2}]})", 1, false},
      {{&a, &b}, R"({"version": "3.1", "environments": [{"a":1},{"b":2}]})", 0, false},
      {{nullptr, &a, nullptr, nullptr, &b, nullptr},
       R"({"version": "3.1", "events": [{"a":1},{"b":2}]})",
       1,
       false},
      {{nullptr, nullptr}, R"({"version": "3.1", "events": []})", 1, false},
      {{}, R"({"version": "3.1"})", 1, true},
      {{}, R"({"version": "3.1"})", 0, true},
      {{&a}, R"({"version": "3.1"})", 2, false},
  };
  for (const auto& [rows, text, table, isNullOrEmpty] : cases) {
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
  EXPECT_FALSE(target.isNullOrEmpty());
}

}  // namespace
}  // namespace qel::log::analytics::items
