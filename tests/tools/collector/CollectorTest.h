#pragma once

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <httplib.h>

#include "tests/support/Process.h"
#include "tests/support/TestCertificates.h"

namespace qel::collector {

inline constexpr const char* path = "/authenticated/customer-care.php";
inline constexpr const char* json = "application/json; charset=utf-8";
inline constexpr const char* package =
    R"({"version": "3.1", "events": [{"Category":"canary"},bad]})";

/// The status of the answer, or -1 without one.
inline int statusOf(const httplib::Result& result) { return result ? result->status : -1; }

/// A running collector, and a client that verifies its certificate and has valid credentials.
class CollectorTest : public testing::Test {
 protected:
  CollectorTest() {
    std::signal(SIGPIPE, SIG_IGN);  // the collector cuts connections that this client writes to
    client_.set_ca_cert_path(certificates_.caFile());
    client_.set_tcp_nodelay(true);
    client_.set_read_timeout(std::chrono::seconds(60));  // the largest bodies, under sanitizers
    client_.set_basic_auth("ada", "open:sesame");
  }

  const test::TemporaryDirectory directory_;
  const std::filesystem::path users_ =
      test::write(directory_.path() / "users", "ada:open:sesame\n");
  const std::filesystem::path store_ = directory_.path() / "store.db";
  test::TestCertificates certificates_;
  const test::ServerIdentity identity_ = certificates_.issue("localhost");
  test::Process collector_{
      COLLECTOR_PROGRAM " --listen=127.0.0.1:0 --credentials=" + users_.string() +
      " --store=" + store_.string() + " --certificate=" + identity_.certificate.string() +
      " --key=" + identity_.key.string()};
  const int port_ = std::stoi(collector_.readUntil('\n').substr(strlen("listening on 127.0.0.1:")));
  httplib::SSLClient client_{"localhost", port_};
};

}  // namespace qel::collector
