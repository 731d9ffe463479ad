#include <future>

#include <gtest/gtest.h>
#include <netdb.h>

#include "host/QelHttp/Client.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/ScopeGuard.h"

static std::promise<void> lookUpBegan;
static std::promise<void> lookUpMayEnd;

/// Replaces the system's function: no test looks a name up, and one name takes forever.
extern "C" int getaddrinfo(const char* name, const char*, const addrinfo*, addrinfo**) {
  if (name != nullptr && std::string_view(name) == "slow.example") {
    lookUpBegan.set_value();
    lookUpMayEnd.get_future().wait();
  }
  return EAI_NONAME;
}

namespace qel::protocol::https {

TEST(NameServerTest, AnExitDeadlineEndsAWaitForANameServer) {
  const auto post = [] {
    try {
      Client().post({"slow.example", "/", "", "", "", "", false});
      return std::string();
    } catch (const Error& error) {
      return std::string(error.what());
    }
  };
  auto posting = std::async(std::launch::async, post);
  const ScopeGuard releasing([] { lookUpMayEnd.set_value(); });
  lookUpBegan.get_future().wait();
  utilities::setExitDeadline(std::chrono::milliseconds(50));
  // Far above what an ended transfer needs, far below every other limit.
  ASSERT_EQ(posting.wait_for(std::chrono::seconds(5)), std::future_status::ready);
  EXPECT_EQ(posting.get(), "posting to slow.example failed: the exit deadline has passed");
}

}  // namespace qel::protocol::https
