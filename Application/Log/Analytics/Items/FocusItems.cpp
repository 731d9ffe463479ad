#include "Application/Log/Analytics/Items/FocusItems.h"

#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 2> kindTexts{"Focused", "Unfocused"};

}  // namespace

FocusItem::FocusItem(std::string name, FocusKind kind) : name_(std::move(name)), kind_(kind) {}

std::string FocusItem::getSubCategory() const { return textOf(kindTexts, kind_, ""); }

std::string FocusItem::getEvent() const { return name_; }

std::map<std::string, std::string> FocusItem::getDetails() const { return {}; }

std::string BimFileItem::getCategory() const { return "BimFile"; }

std::string BimModelItem::getCategory() const { return "BimModel"; }

std::string PresentationItem::getCategory() const { return "Presentation"; }

}  // namespace qel::log::analytics::items
