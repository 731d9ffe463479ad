#pragma once

#include <string>

#include "Application/Log/Analytics/Client/ActivateParameter.h"

namespace qel::benchmarks {

/// The activation parameter of a client that may store rows for support. If `isSendingAllowed` is
/// true, the client may also store rows for sending, and starts to send when it is activated.
log::analytics::parameters::ActivateParameter activation(const std::string& directory,
                                                         bool isSendingAllowed);

}  // namespace qel::benchmarks
