#include "Application/Log/Analytics/Listeners/CommandListener.h"

#include <array>
#include <map>
#include <string_view>
#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "Application/Log/Analytics/Items/CommandItem.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"

namespace qel::log::analytics::listeners {
namespace {

using items::CommandItem;
using qel::broadcaster::CommandLocation;
using namespace qel::broadcaster::event;

// These names are in lower case, unlike those of all other enumerations.
constexpr std::array<std::string_view, 11> locationTexts{
    "code",          "grip",  "command line", "accel table", "menu",        "context toolbar",
    "fixed toolbar", "popup", "object popup", "status bar",  "view toolbar"};

template <typename Event>
std::unique_ptr<CommandItem> itemFrom(const Event& event, CommandItem::State state) {
  auto item = std::make_unique<CommandItem>(
      event.text, state, event.details.value_or(std::map<std::string, std::string>()));
  item->addDetail("ID", event.id);
  return item;
}

}  // namespace

void CommandListener::onCommandStarted(const CommandStartEvent& event) {
  auto item = itemFrom(event, CommandItem::State::Started);
  item->addDetail("Location", toString(event.location));
  insertItem(databases_, std::move(item));
}

void CommandListener::onCommandStopped(const CommandStopEvent& event) {
  insertItem(databases_, itemFrom(event, event.cancelled ? CommandItem::State::Cancelled
                                                         : CommandItem::State::Accepted));
}

std::string CommandListener::toString(const CommandLocation& location) const {
  return items::textOf(locationTexts, location, "unknown");
}

}  // namespace qel::log::analytics::listeners
