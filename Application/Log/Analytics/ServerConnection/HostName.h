#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::serverconnection {

/// Whether the text is a part of a host name between two dots.
constexpr bool isHostNameLabel(std::string_view label) {
  constexpr std::size_t longest = 63;
  constexpr std::string_view characters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";
  return !label.empty() && label.size() <= longest && label.front() != '-' && label.back() != '-' &&
         label.find_first_not_of(characters) == std::string_view::npos;
}

/// Whether the text is the host name of a server: labels of ASCII letters, digits and hyphens,
/// joined by dots, at most 253 characters. The last label begins with a letter, so an IP address is
/// not a host name.
constexpr bool isHostName(std::string_view name) {
  constexpr std::size_t longest = 253;
  if (name.size() > longest) {
    return false;
  }
  for (;;) {
    const auto end = std::min(name.find('.'), name.size());
    if (!isHostNameLabel(name.substr(0, end))) {
      return false;
    }
    if (end == name.size()) {
      return name.front() > '9';  // a letter
    }
    name.remove_prefix(end + 1);
  }
}

/// An error message, which contains the name; empty if it is a host name.
inline std::string complaintAboutHostName(const std::string& name) {
  return isHostName(name) ? "" : '"' + name + "\" is not a host name";
}

/// Throws `qel::exception`, which contains the name, if the name is neither empty nor a host name.
QEL_ANALYTICS_EXPORT void requireHostName(const std::string& serverHost);

}  // namespace qel::log::analytics::serverconnection
