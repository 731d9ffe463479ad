#include "Application/Log/Analytics/Listeners/ActionListener.h"

#include "Application/Log/Analytics/Items/ActionItem.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"

namespace qel::log::analytics::listeners {
namespace {

using items::ActionArea;
using items::ActionItem;
using namespace qel::broadcaster::event;

void insertAction(CipDatabases& databases, ActionArea area, const ActionEvent& event) {
  insertItem(databases, std::make_unique<ActionItem>(area, event.name, event.details));
}

}  // namespace

void ActionListener::onBcfAction(const BcfActionEvent& event) {
  insertAction(databases_, ActionArea::Bcf, event);
}

void ActionListener::onHelpAction(const HelpActionEvent& event) {
  insertAction(databases_, ActionArea::Help, event);
}

void ActionListener::onProjectManagerAction(const ProjectManagerEvent& event) {
  insertAction(databases_, ActionArea::ProjectManager, event);
}

void ActionListener::onGraphicAction(const GraphicActionEvent& event) {
  insertAction(databases_, ActionArea::Graphic, event);
}

}  // namespace qel::log::analytics::listeners
