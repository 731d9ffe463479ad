#pragma once

#include <string>

#include <sys/types.h>

namespace qel::benchmarks {

/// A web server that reads requests and answers 204, in a process of its own, so that its work and
/// its memory are not the measured process's. One at a time.
class ServerProcess {
 public:
  /// Starts it and lets what this process posts to `host` reach it.
  ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;
  ~ServerProcess();

  static constexpr const char* host = "analytics.qel.example";
  static constexpr const char* path = "/authenticated/customer-care.php";
  static constexpr const char* contentType = "application/json; charset=utf-8";

  const std::string& address() const { return address_; }
  /// The authority (PEM) that has certified it.
  static std::string caFile();

 private:
  int socket_ = -1;
  pid_t id_ = -1;
  std::string address_;
};

}  // namespace qel::benchmarks
