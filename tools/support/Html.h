#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qel::support::html {

/// The text as it can stand in an element. No page should be slow because of one text: of a long
/// one there are the first 2000 bytes, down to a whole character, and an ellipsis.
std::string content(std::string_view text);

using Attributes = std::vector<std::pair<std::string_view, std::string>>;

/// `<name key="value">`, the values escaped.
std::string tag(std::string_view name, const Attributes& attributes);

/// `<name key="value">text</name>`, the values escaped, the text as `content`.
std::string element(std::string_view name, std::string_view text, const Attributes& attributes);

/// `<name class="style">text</name>`, the text as `content`; no class where `style` is empty.
std::string element(std::string_view name, std::string_view text, std::string_view style = "");

}  // namespace qel::support::html
