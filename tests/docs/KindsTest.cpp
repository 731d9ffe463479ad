#include <gtest/gtest.h>

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Items/ApplicationItem.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Items/FocusItems.h"
#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"
#include "Application/Log/Analytics/Items/IssueListUserActionEvent.h"
#include "Application/Log/Analytics/Items/MemoryUsageItem.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "tests/support/Files.h"
#include "tests/support/StoredEvent.h"

namespace {

using namespace qel::log::analytics::items;

/// Every kind, the first without a name included, of the classes with kinds that nothing makes
/// today. The numbers that the enumerators stand for are part of what a host is compiled against.
TEST(KindsTest, HaveTheirNumbersAndTexts) {
  std::string events;
  const auto note = [&](const auto& makeItem) {
    for (std::uint32_t kind = 0; kind < 6; ++kind) {
      events += qel::test::summaryOf(makeItem(kind).toJson()) + '\n';
    }
  };
  note([](auto kind) { return ActionItem(ActionArea{kind}, "e", {}); });
  note([](auto kind) { return ApplicationItem("e", ApplicationItem::Type{kind}, 1); });
  note([](auto kind) { return BimFileItem("e", FocusKind{kind}); });
  note([](auto kind) { return BimModelItem("e", FocusKind{kind}); });
  note([](auto kind) { return PresentationItem("e", FocusKind{kind}); });
  note([](auto kind) { return CommandItem("e", CommandItem::State{kind}, {}); });
  note([](auto kind) { return ProjectItem(ProjectItem::Event{kind}, "e"); });
  note([](auto kind) { return IssueListStorageEvent(IssueListStorageEvent::Change{kind}); });
  using Action = IssueListUserActionEvent;
  using Memory = MemoryUsageItem;
  using Info = CipInfoItem;
  for (std::uint32_t kind = 0; kind < 6; ++kind) {
    note([=](auto other) { return Action(Action::List{kind}, Action::Control{other}); });
    note([=](auto other) { return Memory(Memory::Scope{kind}, Memory::Phase{other}); });
    note([=](auto other) {
      return Info(Info::Area{kind}, Info::Severity{other}, other < 5 ? "m" : "");
    });
  }
  EXPECT_EQ(events, qel::test::contentOf(QEL_SOURCE_DIR "/tests/docs/kinds.items"));
}

}  // namespace
