#include <map>
#include <string>

#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/MemoryUsageItem.h"

namespace qel::log::analytics::items {
namespace {

using datetime::DateTime;
using Details = std::map<std::string, std::string>;

MemoryUsageItem makeItem() {
  return {MemoryUsageItem::Scope::Total, MemoryUsageItem::Phase::Runtime};
}

TEST(MemoryUsageItemTest, WithoutReadingsAndFiguresHasNoDetails) {
  EXPECT_EQ(makeItem().toJson().find("Details"), std::string::npos);
}

TEST(MemoryUsageItemTest, NamesReadingsByTheirSecond) {
  auto item = makeItem();
  item.addDetailedMemoryUsage({{DateTime(45000.25), 100},
                               {DateTime(45000.75), 200},
                               {DateTime(45001.9999999), 300},  // is printed as 45002.000000
                               {DateTime(45002.5), 400},
                               {DateTime(999), 0},
                               {DateTime(-0.25), 500},
                               {DateTime(-1.5), 18446744073709551615U},
                               {DateTime(1e22), 600}});
  EXPECT_EQ(item.getDetails(), (Details{{"45000", "100"},
                                        {"45002", "300"},
                                        {"999", "0"},
                                        {"-0", "500"},
                                        {"-1", "18446744073709551615"},
                                        {"10000000000000000000000", "600"}}));
}

TEST(MemoryUsageItemTest, KeepsTheFirstReadingOfATime) {
  auto item = makeItem();
  item.addDetailedMemoryUsage({{DateTime(45000), 1}});
  item.addDetailedMemoryUsage({{DateTime(45000), 2}, {DateTime(45010), 3}});
  EXPECT_EQ(item.getDetails(), (Details{{"45000", "1"}, {"45010", "3"}}));
}

TEST(MemoryUsageItemTest, RendersFiguresAndReadingsTogetherInTextOrder) {
  auto item = makeItem();
  item.addDetail("Min", "7");
  item.addDetail("Max", "9");
  item.addDetailedMemoryUsage({{DateTime(999), 7}, {DateTime(1000), 9}});
  const std::string end = R"(, "Details": {"1000": "9", "999": "7", "Max": "9", "Min": "7"}})";
  EXPECT_TRUE(item.toJson().ends_with(end)) << item.toJson();
}

}  // namespace
}  // namespace qel::log::analytics::items
