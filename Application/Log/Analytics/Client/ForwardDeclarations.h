#pragma once

#include "Application/Log/Analytics/Listeners/ForwardDeclarations.h"

/// Forward declarations of what a client owns, for its header.
namespace qel::log {

class LoggerInterface;

namespace analytics {

class CipDatabases;

namespace details {
class SendingState;
}
namespace items {
class EnvironmentItem;
}
namespace reports {
class MemoryUsageObserver;
}
namespace serverconnection {
class DbToServerConnection;
}

}  // namespace analytics

}  // namespace qel::log
