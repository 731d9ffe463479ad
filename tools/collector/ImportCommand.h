#pragma once

#include <string>

#include "tools/collector/OpenStore.h"

namespace CLI {
class App;
}

namespace qel::collector {

struct ImportOptions {
  std::string file;
  StoreOptions store;
};

/// Adds the command `import` to a program.
void addImportCommand(CLI::App& program, ImportOptions& options);

/// Copies all rows of an SQLite store into ClickHouse, and prints how many. Only reads the SQLite
/// file. Rows that ClickHouse has already stay as they are, so an import can be repeated, also
/// while collectors use both stores.
///
/// Returns the exit status. Throws `tools::InputError` if the options are wrong, `qel::exception`
/// if the file cannot be read, and `StoreError` if ClickHouse cannot be used.
int importStore(const ImportOptions& options);

}  // namespace qel::collector
