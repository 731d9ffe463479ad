#pragma once

#include <string>

#include <sys/types.h>

namespace qel::benchmarks {

/// A web server that reads requests and answers 204. It runs in its own process, so that its work
/// and memory are not measured. Only one object may exist at a time.
class ServerProcess {
 public:
  /// Starts the server and directs this process's requests for `host` to it.
  ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;
  ~ServerProcess();

  static constexpr const char* host = "analytics.qel.example";
  static constexpr const char* path = "/authenticated/customer-care.php";
  static constexpr const char* contentType = "application/json; charset=utf-8";

  const std::string& address() const { return address_; }
  /// The PEM file with the certificate of the authority that issued the server's certificate.
  static std::string caFile();

 private:
  int socket_ = -1;
  pid_t id_ = -1;
  std::string address_;
};

}  // namespace qel::benchmarks
