#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace qel::benchmarks {

struct RawStoreResult {
  std::uint64_t rows = 0;
  double seconds = 0;  ///< spent in transactions, keys included
};

/// Adds at least `rows` rows to a store that the collector has made, with prepared statements of
/// SQLite's C interface: the same rows, key, schema and journal, durable after each transaction of
/// `packages` packages. Making and parsing the packages does not count.
RawStoreResult fillRawStore(const std::filesystem::path& store, std::uint64_t rows,
                            std::size_t rowsOfPackage, std::size_t packages);

}  // namespace qel::benchmarks
