#include <gmock/gmock.h>
#include <openssl/evp.h>

#include "tests/support/Logged.h"
#include "tests/support/Tally.h"
#include "tools/collector/Users.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

using namespace testing;
using namespace std::chrono_literals;

// Printed by mkpasswd for the secret "sesame".
const std::string yescrypt =
    "$y$j9T$1w2oWEl7xE1yAcaPsm9DA1$LLayWIVK1hU0lDPguM/dqbOhFWgbRyURLRzyyYUSOM4";
const std::string bcrypt = "$2b$05$JwpkP73EQPdWcLGhktoGfOu/UmlIwQF97mVMzsi977HdB3VLECQTS";
const std::string sha512 =
    "$6$Xbd/2l9j1cNHAF9L$GpMQChe2ZykR6/q/"
    "6zaGdpY0WR6B8qYyaueFYU9vcvSSNFBZeEjz6LVrIbEPwumIW0DpTeUIMTQ"
    "lOjr.dL1zO0";

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

TEST(UsersTest, AcceptsOnlyUsersWithTheirSecrets) {
  const auto users = usersOf(
      "\xEF\xBB\xBF"
      "ada:open:sesame \t\r\n\n# people\n \t\nbob:#1\neve:$x\n"
      "yes:" +
      yescrypt + "\nblow:" + bcrypt + " \nsha:" + sha512 + '\n');
  const std::vector<std::pair<std::string, std::string>> cases{
      {basic("ada:open:sesame"), "ada"},
      {"bAsIC  YWRhOm9wZW46c2VzYW1l", "ada"},
      {basic("bob:#1"), "bob"},
      {basic("eve:$x"), "eve"},
      {basic("yes:sesame"), "yes"},
      {basic("blow:sesame"), "blow"},
      {basic("sha:sesame"), "sha"},
      {basic("yes:Sesame"), ""},
      {basic("yes:" + yescrypt), ""},
      {basic(std::string("yes:sesame\0x", 12)), ""},
      {basic("yes:" + std::string(600, 'x')), ""},
      {basic("ada:open"), ""},
      {basic("ada:open:sesame "), ""},
      {basic("mallory:sesame"), ""},
      {basic("yes"), ""},
      {basic(""), ""},
      {"", ""},
      {"Basic", ""},
      {"Bearer YWRhOm9wZW46c2VzYW1l", ""},
      {"Basic YWRhOm9wZW46c2VzYW1l=", ""},
      {"Basic YWRhOm9wZW46c2VzYW1l ", ""},
      {"Basic Ym9iOiMx", "bob"},
      {"Basic ZXZlOiR4", "eve"},
      {"Basic ====", ""},
      {"Basic YWRhOm9wZW4\n", ""},
  };
  for (const auto& [authorization, expected] : cases) {
    EXPECT_EQ(identity(*users, authorization), expected) << authorization;
  }
}

TEST(UsersTest, NamesTheLineThatItRefuses) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", "users: holds no user"},
      {"ada:a\nbob", "users:2: is not of the form user:secret"},
      {"ada:  ", "users:1: is not of the form user:secret"},
      {":a", "users:1: is not of the form user:secret"},
      {"ada:a\n\nada:b", "users:3: names a user for the second time"},
      {"ada:$argon2id$v=19$m=1$a$b", "users:1: has a hash of a method that is not supported"},
      {"ada:$1$KAmNIp10$phP/Pt2N7eazwzvS0tGA8/",
       "users:1: has a hash of a method that is not supported"},
      {"ada:" + yescrypt.substr(0, yescrypt.size() - 1), "users:1: has a malformed hash"},
      {"ada:$y$" + std::string(43, 'a'), "users:1: has a malformed hash"},
      {"ada:$y$zzzz$abcdefgh$" + std::string(43, 'a'), "users:1: has a malformed hash"},
      {"ada:" + bcrypt + "x", "users:1: has a malformed hash"},
      {"ada:$2b$99$" + std::string(53, 'a'), "users:1: has a malformed hash"},
      {"ada:$6$ab cd$" + std::string(86, 'a'), "users:1: has a malformed hash"},
  };
  for (const auto& [text, message] : cases) {
    try {
      usersOf(text);
      ADD_FAILURE() << text;
    } catch (const tools::InputError& error) {
      EXPECT_EQ(error.what(), message);
    }
  }
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

  const auto reloaded = usersOf("ada:other\nyes:" + yescrypt + "\nblow:" + sha512);
  reloaded->continueFrom(*users);
  EXPECT_EQ(atOnce(*reloaded, "yes:sesame"), "yes");
  EXPECT_EQ(atOnce(*reloaded, "ada:plain"), "undecided");
  EXPECT_EQ(atOnce(*reloaded, "blow:sesame"), "undecided") << "its hash has changed";
  EXPECT_EQ(atOnce(*usersOf("ada:a"), "yes:sesame"), "refused");
}

TEST(UsersTest, TakesAsLongForUnknownUsers) {
  const auto users = usersOf("ada:plain\nyes:" + yescrypt);
  const auto shortest = [&](const std::string& text) {
    auto time = test::steady_clock::duration::max();
    for (int i = 0; i < 5; ++i) {
      time = std::min(time, test::timeOf([&] { identity(*users, basic(text)); }));
    }
    return std::chrono::duration<double>(time).count();
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
    EXPECT_EQ(users->admit("ada", 1, begin), 0s) << i;
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
    EXPECT_EQ(users->admit(user, bytes, begin + time), delay) << user << ' ' << time.count();
  }
}

TEST(UsersTest, WarnsOfAFileThatOthersCanRead) {
  const test::TemporaryDirectory directory;
  const auto file = test::write(directory.path() / "users", "ada:a\n");
  using std::filesystem::perms;
  for (const perms rights : {perms(0600), perms(0640), perms(0644)}) {
    std::filesystem::permissions(file, rights);
    const test::CapturedLog log;
    EXPECT_EQ(identity(*Users::fromFile(file), basic("ada:a")), "ada");
    const bool warned = log.text().find("other users of this machine may open " + file.string()) !=
                        std::string::npos;
    EXPECT_EQ(warned, rights == perms(0644));
  }
}

}  // namespace
}  // namespace qel::collector
