#pragma once

#include <string>

#include "tools/collector/AdminPage.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// The table as JSON: `{"figure": …, "columns": […], "rows": [[…], …]}`. Invalid UTF-8 is replaced.
AdminPage jsonPage(const std::string& figure, const ResultTable& table);

/// The table as CSV (RFC 4180) with a line of titles. A text that a spreadsheet could take for a
/// formula gets an apostrophe in front of it.
AdminPage csvPage(const std::string& figure, const ResultTable& table);

/// The JSON object `{"error": reason}`.
AdminPage errorPage(int status, const std::string& reason);

}  // namespace qel::collector
