#pragma once

#include <string>

#include "tools/collector/OpenStore.h"

namespace CLI {
class App;
}

namespace qel::collector {

struct EraseOptions {
  StoreOptions store;
  std::string installation;  ///< empty: erases what `user` sent
  std::string user;
  bool isConfirmed = false;
};

/// Adds the command `erase` to a program.
void addEraseCommand(CLI::App& program, EraseOptions& options);

/// Prints how many rows belong to an installation or were first sent by a user, asks on the
/// terminal unless confirmed, and deletes them. Collectors can use the store at the same time. In
/// an SQLite file the deleted bytes are overwritten, and the log is emptied.
///
/// A refused text belongs to an installation if it contains the installation's ID in quotation
/// marks.
///
/// Returns the exit status. Throws `tools::InputError` if the options are wrong or nobody can be
/// asked, and `StoreError` if the store cannot be used or a reader still needs the deleted rows.
int erase(const EraseOptions& options);

}  // namespace qel::collector
