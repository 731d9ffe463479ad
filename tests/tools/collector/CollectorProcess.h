#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <httplib.h>

namespace qel::collector {

/// The real program in a process and a temporary directory of its own, with a certificate for
/// 127.0.0.1 that the `openssl` command has made and the user `ada` with the secret `open:sesame`.
/// Its end kills the process and removes the directory.
class CollectorProcess {
 public:
  /// Starts it on a free port, or with `arguments` alone when there are any.
  explicit CollectorProcess(const std::vector<std::string>& arguments = {});
  ~CollectorProcess();
  CollectorProcess(const CollectorProcess&) = delete;
  CollectorProcess& operator=(const CollectorProcess&) = delete;

  int port() const { return port_; }
  std::filesystem::path store() const { return directory_ / "store.db"; }
  /// What it has written to standard error.
  std::string errors() const;
  /// A client that verifies the certificate and has valid credentials.
  httplib::SSLClient& client() { return *client_; }

  void terminate() const;
  /// Waits for its end and returns the exit status.
  int join();

 private:
  const std::filesystem::path directory_;
  int process_ = -1;
  int output_ = -1;
  int port_ = 0;
  std::unique_ptr<httplib::SSLClient> client_;
};

}  // namespace qel::collector
