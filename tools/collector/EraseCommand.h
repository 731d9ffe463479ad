#pragma once

#include <string>

namespace CLI {
class App;
}

namespace qel::collector {

struct EraseOptions {
  std::string store;
  std::string installation;  ///< empty: erases what `user` sent
  std::string user;
  bool isConfirmed = false;
};

/// Adds the command `erase` to a program.
void addEraseCommand(CLI::App& program, EraseOptions& options);

/// Prints how many rows belong to an installation or were first sent by a user, asks on the
/// terminal unless confirmed, and deletes them. Works in small transactions, so a collector can use
/// the store at the same time. Deleted bytes are overwritten, and the log is emptied.
///
/// A refused text belongs to an installation if it contains the installation's ID in quotation
/// marks.
///
/// Returns the exit status. Throws `tools::InputError` if the options are wrong or nobody can be
/// asked, and `StoreError` if the store cannot be used or a reader still needs the deleted rows.
int erase(const EraseOptions& options);

}  // namespace qel::collector
