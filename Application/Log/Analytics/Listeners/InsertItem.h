#pragma once

#include <memory>

#include "Application/Log/Analytics/Database/CipDatabases.h"

namespace qel::log::analytics::listeners {

/// Queues the item of an event for storage.
inline void insertItem(CipDatabases& databases, std::unique_ptr<qel::json::ToJsonInterface> item) {
  databases.insert(std::move(item), CipDatabaseClientInterface::Items);
}

}  // namespace qel::log::analytics::listeners
