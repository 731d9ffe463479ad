#pragma once

#include <string>
#include <string_view>

namespace qel::support::html {

/// The text as it can stand in a page, in an element or a quoted attribute.
std::string escaped(std::string_view text);

/// `<name class="..">text</name>`, the text escaped; no class where `style` is empty.
std::string element(std::string_view name, std::string_view text, std::string_view style = "");

}  // namespace qel::support::html
