#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/GeneralEventItem.h"
#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"

namespace qel::log::analytics::items {
namespace {

using Details = std::map<std::string, std::string>;

class HostEvent : public GeneralEventItem::HostEvent {
 public:
  std::string getCategory() const override { return "Render"; }
  std::string getSubCategory() const override { return "Frame"; }
  std::string getEvent() const override { return "Slow"; }
  Details getDetails() const override { return {{"ms", "41"}}; }
};

TEST(GeneralEventItemTest, KeepsTheHostsEventAndForwardsToIt) {
  auto event = std::make_shared<const HostEvent>();
  const std::weak_ptr<const HostEvent> observed = event;
  {
    const GeneralEventItem item(std::move(event));
    EXPECT_FALSE(observed.expired());
    EXPECT_EQ(item.getCategory(), "Render");
    EXPECT_EQ(item.getSubCategory(), "Frame");
    EXPECT_EQ(item.getEvent(), "Slow");
    EXPECT_EQ(item.getDetails(), (Details{{"ms", "41"}}));
  }
  EXPECT_TRUE(observed.expired());
}

TEST(GeneralEventItemTest, WithoutAnEventHasAnEmptyCategoryAndNothingElse) {
  const GeneralEventItem item(nullptr);
  EXPECT_EQ(item.toJson(),
            R"({"Category": "", "InstallationId": "", )"
            R"("SessionId": "00000000-0000-0000-0000-000000000000", "Timestamp": ")" +
                item.getDateTimeAsString() + "\"}");
}

TEST(BaseEventItemWithDetailTest, KeepsTheFirstValueOfAKey) {
  CommandItem item("Wall", CommandItem::State::Started, {{"ID", "from the host"}});
  item.addDetail("ID", "second");
  item.addDetail("Location", "menu");
  item.addDetail("Location", "popup");
  EXPECT_EQ(item.getDetails(), (Details{{"ID", "from the host"}, {"Location", "menu"}}));
}

TEST(IssueListStorageEventTest, ACopyReportsALaterChangeWithTheSameDetails) {
  IssueListStorageEvent added(IssueListStorageEvent::Change::Added);
  added.addDetail("Priority", "2");
  IssueListStorageEvent removed = added;
  removed.setChange(IssueListStorageEvent::Change::Removed);
  EXPECT_EQ(removed.getEvent(), "Removed");
  EXPECT_EQ(removed.getDetails(), (Details{{"Priority", "2"}}));
  EXPECT_EQ(added.getEvent(), "Added");
}

}  // namespace
}  // namespace qel::log::analytics::items
