#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/QelUtilities/Exception.h"
#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// The store cannot be used at present. The message may be logged.
class StoreError : public qel::exception {
 public:
  using qel::exception::exception;
};

/// The database rejects rows of these packages. Other packages can still be stored.
class UploadError : public StoreError {
 public:
  using StoreError::StoreError;
};

/// A package as it arrived. `package` has views into `body`, so an upload is never moved or copied.
struct Upload {
  Upload(std::string bodyOfRequest, std::string nameOfUser)
      : body(std::move(bodyOfRequest)), user(std::move(nameOfUser)), package(readPackage(body)) {}
  Upload(const Upload&) = delete;
  Upload& operator=(const Upload&) = delete;

  /// The memory of the body and of its rows in bytes, at most.
  std::size_t size() const { return body.size() + memoryOfRows(body); }

  const std::string body;
  const std::string user;  ///< who sent it
  const Package package;
};

using Uploads = std::vector<std::shared_ptr<const Upload>>;

/// In bytes.
struct StoreSize {
  std::uint64_t file = 0;
  std::uint64_t log = 0;  ///< changes that are not yet in the file
};

/// Where received packages are kept. A text that is sent again, at any time and to any collector of
/// this store, is stored once. Used by one thread at a time, except `size`.
class Store {
 public:
  virtual ~Store() = default;

  /// Stores all packages at once. When it returns, all are stored. Throws `StoreError` if that
  /// fails or takes longer than until the deadline. Then nothing is stored, or, in a store without
  /// transactions, any part of them. No packages: checks whether the store takes some.
  virtual void add(const Uploads& uploads, std::chrono::steady_clock::time_point deadline) = 0;

  /// Deletes some of the rows that were received before this time. Returns whether there may be
  /// more of them. Throws `StoreError`.
  virtual bool removeSome(std::chrono::system_clock::time_point before) = 0;

  /// Thread-safe.
  virtual StoreSize size() const = 0;
};

}  // namespace qel::collector
