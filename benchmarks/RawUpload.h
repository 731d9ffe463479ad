#pragma once

#include <memory>
#include <string>

#include "benchmarks/ServerProcess.h"

namespace qel::benchmarks {

/// One libcurl handle that is reused to post bodies as the client posts its packages. A failure
/// ends the program.
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
