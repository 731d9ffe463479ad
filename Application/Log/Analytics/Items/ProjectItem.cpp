#include "Application/Log/Analytics/Items/ProjectItem.h"

#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 3> eventTexts{"Opened", "Closed", "Restored"};

}  // namespace

ProjectItem::ProjectItem(Event event, std::string project)
    : BaseEventItemWithDetail(typeid(ProjectItem)), event_(event), project_(std::move(project)) {}

std::string ProjectItem::getCategory() const { return "Project"; }

std::string ProjectItem::getSubCategory() const { return textOf(eventTexts, event_, ""); }

std::string ProjectItem::getEvent() const { return project_; }

}  // namespace qel::log::analytics::items
