#include <gmock/gmock.h>

#include "tools/collector/Credentials.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

TEST(Credentials, letInTheUsersOfTheFileAlone) {
  std::istringstream lines("# people\n\n \t\nada:open:sesame\r\nbob:#1\n");
  const Credentials credentials(lines, "users");
  // The tokens were made with the `base64` command.
  const std::map<std::string, bool> verdicts{
      {"Basic YWRhOm9wZW46c2VzYW1l", true},
      {"Basic Ym9iOiMx", true},
      {"Basic Ym9iOiMy", false},
      {"Basic YWRhOg==", false},
      {"Basic IyBwZW9wbGU=", false},
      {"Basic YWRhOm9wZW46c2VzYW1lDQ==", false},
      {"Bearer YWRhOm9wZW46c2VzYW1l", false},
      {"", false},
  };
  for (const auto& [authorization, accepted] : verdicts) {
    EXPECT_EQ(credentials.accept(authorization), accepted) << authorization;
  }
}

TEST(Credentials, nameTheLineThatIsWrong) {
  const std::map<std::string, std::string> complaints{
      {"# only this\n", "users: holds no user"},
      {"ada:1\nbob\n", "users:2: is not of the form user:secret"},
      {"bob:\n", "users:1: is not of the form user:secret"},
      {"bob:1\n\nbob:2\n", "users:3: names a user for the second time"},
  };
  for (const auto& [text, complaint] : complaints) {
    std::istringstream lines(text);
    EXPECT_THAT([&] { Credentials(lines, "users"); },
                testing::ThrowsMessage<tools::InputError>(complaint));
  }
}

}  // namespace
}  // namespace qel::collector
