#include <gmock/gmock.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::utilities {

TEST(PathTextTest, RemovesAPrefixThatChangesNothing) {
#ifdef _WIN32
  const std::pair<std::string, std::string> paths[] = {
      {R"(\\?\C:\Bürö b\c)", R"(C:\Bürö b\c)"},
      {R"(\\?\unc\server\share\a)", R"(\\server\share\a)"},
      {R"(\\?\C:\a.)", R"(\\?\C:\a.)"},
      {R"(\\?\Volume{0}\a)", R"(\\?\Volume{0}\a)"},
      {R"(\\server\share)", R"(\\server\share)"},
      {R"(a\..\b)", R"(a\..\b)"},
  };
  EXPECT_EQ(utf8FromPath(L"a\xD800.db"), "a\uFFFD.db");
#else
  const std::pair<std::string, std::string> paths[] = {{R"(\\?\C:\a)", R"(\\?\C:\a)"}};
#endif
  for (const auto& [path, plain] : paths) {
    EXPECT_EQ(utf8FromPath(pathFromUtf8(path)), plain);
  }
  EXPECT_THROW(absolutePath({}), qel::exception);
}

}  // namespace qel::utilities
