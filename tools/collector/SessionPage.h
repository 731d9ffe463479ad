#pragma once

#include <string>
#include <vector>

#include "tools/collector/AdminPage.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// The records of a session in the order in which they were written. The columns are those of the
/// figure "session".
ResultTable sessionTable(const std::string& id, const std::vector<StoredRecord>& records);

/// The report of a session, as `qel-support report` writes it. Only its style may apply, and no
/// script.
AdminPage sessionPage(const std::string& id, const std::vector<StoredRecord>& records);

/// A page that has only this sentence.
AdminPage messagePage(int status, const std::string& sentence);

}  // namespace qel::collector
