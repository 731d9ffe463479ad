#include <ctime>

#include <gmock/gmock.h>
#include <openssl/evp.h>

#include "tests/support/Tally.h"
#include "tools/collector/Users.h"

namespace qel::collector {
namespace {

using namespace testing;
using namespace std::chrono_literals;

// Printed by mkpasswd for the secret "sesame".
const std::string yescrypt =
    "$y$j9T$1w2oWEl7xE1yAcaPsm9DA1$LLayWIVK1hU0lDPguM/dqbOhFWgbRyURLRzyyYUSOM4";
const std::string bcrypt = "$2b$05$JwpkP73EQPdWcLGhktoGfOu/UmlIwQF97mVMzsi977HdB3VLECQTS";

std::shared_ptr<Users> usersOf(const std::string& text, const UserLimits& limits = {}) {
  std::istringstream lines(text);
  return std::make_shared<Users>(lines, "users", limits);
}

std::string basic(const std::string& text) {
  std::string code(text.size() * 2 + 4, '\0');
  code.resize(static_cast<std::size_t>(EVP_EncodeBlock(
      reinterpret_cast<unsigned char*>(code.data()),
      reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()))));
  return "Basic " + code;
}

std::string identity(Users& users, const std::string& authorization) {
  return users.checkHash(authorization).value_or("");
}

TEST(UsersTest, RemembersAcceptedSecretsOfHashesAlsoAcrossAReload) {
  const auto atOnce = [](const Users& users, const std::string& text) {
    const auto decided = users.checkAtOnce(basic(text));
    return decided ? decided->value_or("refused") : "undecided";
  };
  const auto users = usersOf("ada:plain\nyes:" + yescrypt + "\nblow:" + bcrypt);
  EXPECT_EQ(atOnce(*users, "yes:sesame"), "undecided");
  EXPECT_EQ(identity(*users, basic("yes:wrong")), "");
  EXPECT_EQ(atOnce(*users, "yes:wrong"), "undecided");
  EXPECT_EQ(atOnce(*users, "ada:wrong"), "undecided") << "shows that ada's secret is plain";
  EXPECT_EQ(identity(*users, basic("yes:sesame")), "yes");
  EXPECT_EQ(atOnce(*users, "yes:sesame"), "yes");
  EXPECT_EQ(identity(*users, basic("blow:sesame")), "blow");

  const auto reloaded = usersOf("ada:other\nyes:" + yescrypt + "\nblow:" + yescrypt);
  reloaded->continueFrom(*users);
  EXPECT_EQ(atOnce(*reloaded, "yes:sesame"), "yes");
  EXPECT_EQ(atOnce(*reloaded, "ada:plain"), "undecided");
  EXPECT_EQ(atOnce(*reloaded, "blow:sesame"), "undecided") << "its hash has changed";
  EXPECT_EQ(atOnce(*usersOf("ada:a"), "yes:sesame"), "refused");
}

TEST(UsersTest, TakesAsLongForUnknownUsers) {
  const auto users = usersOf("ada:plain\nyes:" + yescrypt);
  const auto shortest = [&](const std::string& text) {
    std::clock_t time = CLOCKS_PER_SEC;
    for (int i = 0; i < 5; ++i) {
      const std::clock_t begin = std::clock();
      identity(*users, basic(text));
      time = std::min(time, std::clock() - begin);
    }
    return static_cast<double>(time) / CLOCKS_PER_SEC;
  };
  const double wrong = shortest("yes:wrong");
  EXPECT_GT(wrong, 1e-3);
  for (const char* const text : {"mallory:wrong", "ada:wrong"}) {
    EXPECT_THAT(shortest(text) / wrong, AllOf(Gt(0.5), Lt(2))) << text;
  }
}

TEST(UsersTest, LimitsTheRequestsAndBytesOfEachUser) {
  const auto users = usersOf("ada:a\nbob:b", {2, 1000, 10s});  // at once: 20 requests, 10,000 bytes
  const std::chrono::steady_clock::time_point begin{1h};
  struct Step {
    std::string user;
    std::uint64_t bytes;
    std::chrono::milliseconds time;
    std::chrono::seconds delay;
  };
  for (int i = 0; i < 21; ++i) {
    EXPECT_EQ(users->admit("ada", begin), 0s) << i;
  }
  for (const auto& [user, bytes, time, delay] : std::vector<Step>{
           {"ada", 1, 0ms, 1s},
           {"ada", 1, 400ms, 1s},
           {"bob", 1'000'000, 400ms, 0s},
           {"bob", 1, 400ms, 990s},
           {"ada", 1, 500ms, 0s},
           {"ada", 1, 500ms, 1s},
           {"bob", 1, 990'000ms, 1s},
           {"bob", 1, 990'400ms, 0s},
           {"removed", 1, 0ms, 0s},
       }) {
    EXPECT_EQ(users->admit(user, begin + time), delay) << user << ' ' << time.count();
    users->charge(user, delay == 0s ? bytes : 0, begin + time);
  }
}

}  // namespace
}  // namespace qel::collector
