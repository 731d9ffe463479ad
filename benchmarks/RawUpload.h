#pragma once

#include <memory>
#include <string>

#include "benchmarks/ServerProcess.h"

namespace qel::benchmarks {

/// One handle of libcurl's, set up once and kept, that posts bodies as the client's packages are
/// posted. What fails ends the program.
class RawUpload {
 public:
  explicit RawUpload(const ServerProcess& server);

  void post(const std::string& body);

 private:
  struct Free {
    void operator()(void* handle) const;
  };
  struct FreeList {
    void operator()(void* list) const;
  };
  std::unique_ptr<void, FreeList> headers_;
  std::unique_ptr<void, FreeList> connectTo_;
  std::unique_ptr<void, Free> handle_;
};

}  // namespace qel::benchmarks
