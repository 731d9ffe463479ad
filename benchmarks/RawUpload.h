#pragma once

#include <memory>
#include <string>

#include "benchmarks/ServerProcess.h"

namespace qel::benchmarks {

/// One libcurl handle, which posts all bodies in the way in which the client posts packages. A
/// failure terminates the program.
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
