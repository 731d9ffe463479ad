#pragma once

#include <string>

#include "tools/sample-host/Fields.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {

/// Creates the broadcast of the listener operation `name` from its fields. Throws `InputError` if
/// the operation is unknown, or a field is missing or mistyped.
Broadcast readNotification(const std::string& name, Fields& fields);

}  // namespace qel::samplehost
