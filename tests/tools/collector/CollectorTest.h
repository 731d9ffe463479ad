#pragma once

#include <csignal>
#include <cstring>

#include <gmock/gmock.h>
#include <httplib.h>

#include "tests/support/Query.h"
#include "tests/support/TestCertificates.h"
#include "tests/tools/CommandTest.h"

namespace qel::collector {

inline const std::string path = "/authenticated/customer-care.php";
inline const std::string json = "application/json; charset=utf-8";
inline const std::string package = R"({"version": "3.1", "events": [{"Category":"canary"},bad]})";

/// The status of the answer, or -1 without one.
inline int statusOf(const httplib::Result& result) { return result ? result->status : -1; }

/// A running collector, and a client of it.
class CollectorTest : public test::CommandTest {
 protected:
  CollectorTest() {
    std::signal(SIGPIPE, SIG_IGN);  // the collector cuts connections that this client writes to
    setenv("CURL_CA_BUNDLE", certificates_.caFile().c_str(), 1);
    setenv("SERVER", ("localhost:" + std::to_string(port_)).c_str(), 1);
    setenv("COLLECTOR", std::to_string(collector_.id()).c_str(), 1);
    setenv("CERTIFICATE", identity_.c_str(), 1);
  }

  /// A client that verifies the collector's certificate and has valid credentials.
  httplib::Client newClient(int port) const {
    httplib::Client client("https://localhost:" + std::to_string(port));
    client.set_ca_cert_path(certificates_.caFile());
    client.set_tcp_nodelay(true);
    client.set_read_timeout(std::chrono::seconds(60));  // the largest bodies, under sanitizers
    client.set_basic_auth("ada", "open:sesame");
    return client;
  }

  static int portOf(test::Process& collector) {
    return std::stoi(collector.readUntil('\n').substr(strlen("listening on 127.0.0.1:")));
  }
  static std::filesystem::path forOwnerAlone(std::filesystem::path file) {
    using std::filesystem::perms;
    std::filesystem::permissions(file, perms::owner_read | perms::owner_write);
    return file;
  }
  std::vector<std::string> stored(const std::string& columns) const {
    return test::query(store_, "SELECT " + columns);
  }

  const std::filesystem::path store_ = file("store.db");
  const std::filesystem::path users_ =
      forOwnerAlone(test::write(file("users"), "# people\n\n \t\nada:open:sesame\r\nbob:#1\n"));
  test::TestCertificates certificates_;
  const std::string identity_ = certificates_.issue("localhost").string();
  const std::string command_ =
      "qel-collector --listen=127.0.0.1:0 --credentials=$DIR/users"
      " --store=$DIR/store.db --certificate=" +
      identity_ + " --key=" + identity_;
  test::Process collector_{command_};
  const int port_ = portOf(collector_);
  httplib::Client client_ = newClient(port_);
};

}  // namespace qel::collector
