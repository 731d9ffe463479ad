#pragma once

#include <optional>
#include <string>

#include "tools/common/Endpoint.h"

namespace qel::collector {

/// A database of ClickHouse, and who uses it.
struct ClickHouseAccess {
  bool isEncrypted = false;  ///< TLS
  tools::Endpoint server;    ///< its HTTP interface
  std::string database;
  std::string user = "default";
  std::string password;
};

/// The address as the user wrote it, without the credentials.
std::string toText(const ClickHouseAccess& access);

/// Parses the value of `option`: `clickhouse://HOST:PORT/DATABASE`, or `clickhouses://` for TLS.
/// Null if it is the path of a file. Throws `InputError` for a malformed or another address. The
/// message does not quote the address, because somebody may have written a password into it.
std::optional<ClickHouseAccess> parseClickHouse(const std::string& option, const std::string& text);

/// Reads user and password from a file with one line `user:password`. Logs a warning if any user of
/// the machine may open the file. Throws `InputError`.
void readCredentials(const std::string& file, ClickHouseAccess& access);

}  // namespace qel::collector
