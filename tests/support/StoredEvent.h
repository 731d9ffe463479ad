#pragma once

#include <nlohmann/json.hpp>

namespace qel::test {

/// A stored event in one line: "Category|Subcategory|Event|key=value;key=value".
inline std::string summaryOf(const std::string& stored) {
  const auto event = nlohmann::ordered_json::parse(stored);
  std::string summary = event.at("Category").get<std::string>() + "|" +
                        event.value("Subcategory", "") + "|" + event.value("Event", "") + "|";
  const auto details = event.value("Details", nlohmann::ordered_json::object());
  std::string separator;
  for (const auto& [key, value] : details.items()) {
    summary += separator + key + "=" + value.get<std::string>();
    separator = ";";
  }
  return summary;
}

}  // namespace qel::test
