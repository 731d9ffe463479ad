#include "Application/Log/Analytics/Items/IssueListUserActionEvent.h"

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 2> listTexts{"Issue", "Collision"};
constexpr std::array<std::string_view, 5> controlTexts{
    "ContextMenu", "UnreadIssuesNavigator", "SearchFilter", "FilterState", "NotificationDialog"};

}  // namespace

IssueListUserActionEvent::IssueListUserActionEvent(List list, Control control)
    : BaseEventItemWithDetail(typeid(IssueListUserActionEvent)), list_(list), control_(control) {}

std::string IssueListUserActionEvent::getCategory() const { return "IssueListAction"; }

std::string IssueListUserActionEvent::getSubCategory() const {
  return textOf(listTexts, list_, "Unknown");
}

std::string IssueListUserActionEvent::getEvent() const {
  return textOf(controlTexts, control_, "Unknown");
}

}  // namespace qel::log::analytics::items
