#include "Application/Log/Analytics/Listeners/ProjectListener.h"

#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "Application/Log/Analytics/Items/FocusItems.h"
#include "Application/Log/Analytics/Items/ProjectItem.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"

namespace qel::log::analytics::listeners {
namespace {

using items::FocusKind;
using items::ProjectItem;
using namespace qel::broadcaster::event;

constexpr std::array<std::string_view, 2> restoreAnswerTexts{"Yes", "No"};

template <typename Item>
void insertFocus(CipDatabases& databases, const FocusEvent& event, FocusKind kind) {
  insertItem(databases, std::make_unique<Item>(event.name, kind));
}

}  // namespace

void ProjectListener::onProjectOpened(const ProjectOpenEvent& event) {
  auto item = std::make_unique<ProjectItem>(ProjectItem::Event::Opened, event.project);
  if (!event.information.empty()) {
    item->addDetail("Info", event.information);
  }
  insertItem(databases_, std::move(item));
}

void ProjectListener::onProjectClosed(const ProjectCloseEvent& event) {
  insertItem(databases_, std::make_unique<ProjectItem>(ProjectItem::Event::Closed, event.project));
}

void ProjectListener::onProjectRestored(const ProjectRestoreDialogEvent& event) {
  auto item = std::make_unique<ProjectItem>(ProjectItem::Event::Restored, event.project);
  item->addDetail("LastSave", event.lastSave);
  item->addDetail("ProjectFile", event.projectFile);
  item->addDetail("UserAction", items::textOf(restoreAnswerTexts, event.answer, "Unknown"));
  insertItem(databases_, std::move(item));
}

void ProjectListener::onBimFileFocused(const BimFileFocusEvent& event) {
  insertFocus<items::BimFileItem>(databases_, event, FocusKind::Focused);
}

void ProjectListener::onBimFileUnfocused(const BimFileUnfocusEvent& event) {
  insertFocus<items::BimFileItem>(databases_, event, FocusKind::Unfocused);
}

void ProjectListener::onBimModelFocused(const BimModelFocusEvent& event) {
  insertFocus<items::BimModelItem>(databases_, event, FocusKind::Focused);
}

void ProjectListener::onBimModelUnfocused(const BimModelUnfocusEvent& event) {
  insertFocus<items::BimModelItem>(databases_, event, FocusKind::Unfocused);
}

void ProjectListener::onPresentationFocused(const PresentationFocusEvent& event) {
  insertFocus<items::PresentationItem>(databases_, event, FocusKind::Focused);
}

void ProjectListener::onPresentationUnfocused(const PresentationUnfocusEvent& event) {
  insertFocus<items::PresentationItem>(databases_, event, FocusKind::Unfocused);
}

}  // namespace qel::log::analytics::listeners
