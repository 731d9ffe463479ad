#include <gtest/gtest.h>

#include "host/QelC/qel_analytics.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/Tally.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

struct Host {
  std::atomic<bool> blocks = false;
  Tally asked, allowed;
  static std::int32_t isAllowed(void* context) {
    auto& host = *static_cast<Host*>(context);
    if (host.blocks) {
      host.asked.add();
      host.allowed.reaches(1);
    }
    return 1;
  }
};

/// Another thread joins, and the server accepts the first of two packages slowly.
TEST(ConcurrentWithdrawalTest, EndsSendingBeforeItWaits) {
  const TemporaryDirectory directory;
  TestCertificates certificates;
  Tally withdrawn;
  const HttpsTestServer server(
      {.identity = certificates.issue("staging.qel.example"), .answer = [&](const Request&) {
         withdrawn.reaches(1);
         std::this_thread::sleep_for(300ms);
         return Reply{};
       }});
  Host host;
  const auto path = directory.text(), authority = certificates.caFile(), address = server.address();
  qel_analytics_parameters parameters{};
  parameters.struct_size = sizeof(parameters);
  parameters.directory = path.c_str();
  parameters.installation_id = "test";
  parameters.server_host = "staging.qel.example";
  parameters.connect_to = address.c_str();
  parameters.ca_file = authority.c_str();
  parameters.context = &host;
  parameters.is_sending_allowed = [](void*) { return 1; };
  parameters.is_support_allowed = Host::isAllowed;
  parameters.environment = [](void*) { return "{}"; };
  qel_analytics_handle client = 0;
  ASSERT_EQ(qel_analytics_create(&parameters, &client), 0) << qel_analytics_last_error();
  qel_analytics_application_started(client, "");
  qel_analytics_join(client);
  qel_analytics_stop_sending(client);  // after one more pass
  EXPECT_TRUE(server.waitFor(1));
  host.blocks = true;
  qel_analytics_application_started(client, "");
  std::thread joining([&] { qel_analytics_join(client); });
  EXPECT_TRUE(host.asked.reaches(1));
  std::thread withdrawing([&] {
    withdrawn.add();
    EXPECT_EQ(qel_analytics_withdraw(client), 0) << qel_analytics_last_error();
  });
  std::this_thread::sleep_for(1s);
  host.blocks = false;
  host.allowed.add();
  joining.join();
  withdrawing.join();
  EXPECT_EQ(server.requests().size(), 1);
}

}  // namespace qel::test
