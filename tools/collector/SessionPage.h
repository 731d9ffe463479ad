#pragma once

#include <string>
#include <vector>

#include "tools/collector/AdminPage.h"
#include "tools/collector/StoreReader.h"
#include "tools/records/SessionRecords.h"

namespace qel::collector {

/// Parses the texts of a session.
records::SessionRecords recordsOf(const std::string& id, const std::vector<StoredRecord>& stored);

/// The records of a session in the order in which they were written. The columns are those of the
/// figure "session".
ResultTable sessionTable(const records::SessionRecords& records);

/// The report of a session, as `qel-support report` writes it, with a link to the list of sessions.
/// Only its style may apply, and no script. `isShortened`: the report says that older records are
/// left out.
AdminPage sessionPage(const records::SessionRecords& records, bool isShortened);

/// A page that has only this sentence, and a link to the sessions that begin with `beginning`
/// unless it is empty.
AdminPage messagePage(int status, const std::string& sentence, const std::string& beginning = "");

}  // namespace qel::collector
