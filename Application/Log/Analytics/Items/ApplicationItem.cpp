#include "Application/Log/Analytics/Items/ApplicationItem.h"

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "host/QelAssert/Assert.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 4> typeTexts{"Started", "Stopped", "Crashed", "Asserted"};

}  // namespace

// NOLINTBEGIN(modernize-pass-by-value): the exported signatures are fixed.
ApplicationItem::ApplicationItem(const std::string& event, const Type& type, int exceptionCode)
    : BaseEventItemWithDetail(typeid(ApplicationItem)), event_(event), type_(type) {
  addDetail("Exception Code", std::to_string(static_cast<std::uint32_t>(exceptionCode)));
}

ApplicationItem::ApplicationItem(const std::string& event, const assert::AssertInfo& info)
    : BaseEventItemWithDetail(typeid(ApplicationItem)), event_(event), type_(Type::Asserted) {
  const auto addUnlessEmpty = [this](const std::string& key, const std::string& value) {
    if (!value.empty()) {
      addDetail(key, value);
    }
  };
  addDetail("Type", assert::Assert::typeToString(info.type));
  addUnlessEmpty("Message", info.message);
  addUnlessEmpty("Function Name", info.function);
  addUnlessEmpty("Filename", info.file);
  addDetail("Line Number", std::to_string(info.line));
}
// NOLINTEND(modernize-pass-by-value)

std::string ApplicationItem::getCategory() const { return "Application"; }

std::string ApplicationItem::getSubCategory() const { return textOf(typeTexts, type_, ""); }

std::string ApplicationItem::getEvent() const { return event_; }

}  // namespace qel::log::analytics::items
