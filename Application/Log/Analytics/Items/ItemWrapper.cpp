#include "Application/Log/Analytics/Items/ItemWrapper.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace qel::log::analytics::items {

ItemWrapper::ItemWrapper(const std::vector<const std::string*>& rows,
                         CipDatabaseClientInterface::Table table) {
  if (table == CipDatabaseClientInterface::Environments) {
    environments_ = &rows;
  } else if (table == CipDatabaseClientInterface::Items) {
    events_ = &rows;
  }
}

bool ItemWrapper::isNullOrEmpty() const {
  if (environments_ == nullptr && events_ == nullptr) {
    return false;
  }
  return (environments_ == nullptr || environments_->empty()) &&
         (events_ == nullptr || events_->empty());
}

void ItemWrapper::mergeList(const std::vector<const std::string*>& list,
                            std::ostringstream& out) const {
  std::string merged;
  std::string_view prefix;
  for (const std::string* text : list) {
    if (text != nullptr) {
      merged += std::exchange(prefix, ",");
      merged += *text;
    }
  }
  out << merged;
}

std::string ItemWrapper::toJson() const {
  std::ostringstream out;
  out.exceptions(std::ios::badbit);  // Without memory it would cut the package short in silence.
  const auto writeList = [&](std::string_view name, const std::vector<const std::string*>* list) {
    if (list != nullptr && !list->empty()) {
      out << ", \"" << name << "\": [";
      mergeList(*list, out);
      out << ']';
    }
  };
  out << R"({"version": ")" << version_ << '"';
  writeList("environments", environments_);
  writeList("events", events_);
  out << '}';
  return std::move(out).str();
}

}  // namespace qel::log::analytics::items
