#include "Application/Log/Analytics/Items/ItemWrapper.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace qel::log::analytics::items {
namespace {

/// Reserves the memory once, because the list can be a megabyte long. The reserved memory also has
/// room for the text after the list.
void appendMerged(std::string& out, const std::vector<const std::string*>& list) {
  constexpr std::size_t rest = 64;
  std::size_t size = out.size() + rest;
  for (const std::string* text : list) {
    size += text != nullptr ? text->size() + 1 : 0;
  }
  out.reserve(size);
  bool isFirst = true;
  for (const std::string* text : list) {
    if (text == nullptr) {
      continue;
    }
    if (!std::exchange(isFirst, false)) {
      out.push_back(',');
    }
    out.append(*text);
  }
}

}  // namespace

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
  appendMerged(merged, list);
  out << merged;
}

std::string ItemWrapper::toJson() const {
  std::string text;
  writeTo(text);
  return text;
}

void ItemWrapper::writeTo(std::string& text) const {
  text.assign(R"({"version": ")").append(version_).push_back('"');
  const auto addList = [&](std::string_view name, const std::vector<const std::string*>* list) {
    if (list != nullptr && !list->empty()) {
      text.append(", \"").append(name).append("\": [");
      appendMerged(text, *list);
      text += ']';
    }
  };
  addList("environments", environments_);
  addList("events", events_);
  text += '}';
}

}  // namespace qel::log::analytics::items
