#include <gtest/gtest.h>

#include "host/QelC/qel_analytics.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::c {

std::int32_t refuseByException(void* calls) {
  ++*static_cast<std::atomic<int>*>(calls);
  throw std::runtime_error("refused");
}

TEST(ThrowingCallbacksTest, CountAsDefaults) {
  const test::TemporaryDirectory directory;
  std::atomic<int> calls = 0;
  qel_analytics_parameters parameters{};
  parameters.struct_size = sizeof(parameters);
  const auto path = directory.text();
  parameters.directory = path.c_str();
  parameters.installation_id = "test";
  parameters.context = &calls;
  parameters.log_level = QEL_ANALYTICS_LOG_DEBUG;
  parameters.is_sending_allowed = refuseByException;
  parameters.is_support_allowed = refuseByException;
  parameters.environment = [](void*) -> const char* { throw 1; };
  parameters.log = [](void* counted, std::int32_t, const char*, const char*) {
    refuseByException(counted);
  };
  qel_analytics_handle client = 0;
  ASSERT_EQ(qel_analytics_create(&parameters, &client), QEL_ANALYTICS_OK)
      << qel_analytics_last_error();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(qel_analytics_application_started(client, ""), QEL_ANALYTICS_OK);
  EXPECT_EQ(qel_analytics_join(client), QEL_ANALYTICS_OK) << "storage must not end";
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(qel_analytics_stop_sending(client), QEL_ANALYTICS_OK);  // logs that nothing was started
  EXPECT_EQ(qel_analytics_release(client), QEL_ANALYTICS_OK);
  EXPECT_GT(calls, 3);
}

}  // namespace qel::c
