#include "Application/Log/Analytics/Items/CommandItem.h"

#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 3> stateTexts{"Started", "Accepted", "Cancelled"};

}  // namespace

CommandItem::CommandItem(std::string command, State state,
                         std::map<std::string, std::string> details)
    : BaseEventItemWithDetail(typeid(CommandItem), std::move(details)),
      command_(std::move(command)),
      state_(state) {}

std::string CommandItem::getCategory() const { return "Command"; }

std::string CommandItem::getSubCategory() const { return textOf(stateTexts, state_, ""); }

std::string CommandItem::getEvent() const { return command_; }

}  // namespace qel::log::analytics::items
