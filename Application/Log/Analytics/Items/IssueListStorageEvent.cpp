#include "Application/Log/Analytics/Items/IssueListStorageEvent.h"

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 3> changeTexts{"Added", "Removed", "RemovedAll"};

}  // namespace

IssueListStorageEvent::IssueListStorageEvent(Change change)
    : BaseEventItemWithDetail(typeid(IssueListStorageEvent)), change_(change) {}

std::string IssueListStorageEvent::getCategory() const { return "IssueListStorage"; }

std::string IssueListStorageEvent::getSubCategory() const { return "Issue"; }

std::string IssueListStorageEvent::getEvent() const {
  return textOf(changeTexts, change_, "Unknown");
}

}  // namespace qel::log::analytics::items
