#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// Whether focus was gained or lost. The subcategory is the enumerator's name, or empty for any
/// other value.
enum class FocusKind : std::uint32_t { Focused, Unfocused };

/// An object that is edited in its own window gained or lost focus. Subclasses define the category.
/// The event is the name of the object. There are no details.
class QEL_ANALYTICS_EXPORT FocusItem : public BaseEventItem {
 public:
  /// `name` is the name of the object.
  FocusItem(std::string name, FocusKind kind);

  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  std::string name_;
  FocusKind kind_;
};

/// A BIM file gained or lost focus. Category "BimFile".
class QEL_ANALYTICS_EXPORT BimFileItem : public FocusItem {
 public:
  using FocusItem::FocusItem;

  std::string getCategory() const override;
};

/// A BIM model gained or lost focus. Category "BimModel".
class QEL_ANALYTICS_EXPORT BimModelItem : public FocusItem {
 public:
  using FocusItem::FocusItem;

  std::string getCategory() const override;
};

/// A presentation gained or lost focus. Category "Presentation".
class QEL_ANALYTICS_EXPORT PresentationItem : public FocusItem {
 public:
  using FocusItem::FocusItem;

  std::string getCategory() const override;
};

}  // namespace qel::log::analytics::items
