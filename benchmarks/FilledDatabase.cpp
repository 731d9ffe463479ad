#include "benchmarks/FilledDatabase.h"

#include <stdexcept>

namespace qel::benchmarks {

FilledDatabase::FilledDatabase(int rows) : FilledDirectory(rows) {
  const auto size = file_size(directory.path() / RawDatabase::sending);
  client.initialize(directory.text());
  if (client.getDatabaseFileSize() != size) {
    throw std::logic_error("the client does not accept the database as its own");
  }
}

}  // namespace qel::benchmarks
