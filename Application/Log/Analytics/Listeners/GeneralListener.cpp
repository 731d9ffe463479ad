#include "Application/Log/Analytics/Listeners/GeneralListener.h"

#include <utility>

#include "Application/Log/Analytics/Items/GeneralEventItem.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"

namespace qel::log::analytics::listeners {

void GeneralListener::onGeneralAction(
    std::shared_ptr<const qel::broadcaster::event::GeneralEventInterface> event) {
  insertItem(databases_, std::make_unique<items::GeneralEventItem>(std::move(event)));
}

}  // namespace qel::log::analytics::listeners
