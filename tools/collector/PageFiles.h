#pragma once

#include <optional>
#include <string_view>

#include "tools/collector/AdminPage.h"

namespace qel::collector {

/// The file of the page that is served at this path, "/" or "/static/page.css" for example. The
/// build embeds the files of the folder "page" and the library for charts.
std::optional<AdminPage> pageFile(std::string_view path);

/// The template of a page with one sentence.
extern const std::string_view messageTemplate;

}  // namespace qel::collector
