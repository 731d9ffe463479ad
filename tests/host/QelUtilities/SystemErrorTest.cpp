#include <cerrno>

#include <gmock/gmock.h>

#include "host/QelUtilities/SystemError.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace qel::utilities {

std::error_code errorOfSystem(int code) { return {code, std::system_category()}; }

TEST(SystemErrorTest, HasATextForEachErrorWithoutALineEnd) {
  errno = ENOENT;
#ifdef _WIN32
  SetLastError(ERROR_FILE_NOT_FOUND);
#endif
  const auto missing = lastSystemError();
  EXPECT_EQ(missing, std::errc::no_such_file_or_directory);
  for (const auto& error : {missing, errorOfSystem(5), errorOfSystem(112),
                            std::make_error_code(std::errc::permission_denied)}) {
    const auto text = systemMessage(error);
    ASSERT_FALSE(text.empty());
    EXPECT_TRUE(std::isalpha(text.back())) << text;
  }
  EXPECT_THAT(systemMessage(errorOfSystem(7654321)), testing::EndsWith("7654321"));
}

TEST(SystemErrorTest, MessagesOfLibrariesBecomeUtf8) {
  for (const std::string text : {"", "plain", "gr\xc3\xbcn"}) {
    EXPECT_EQ(utf8FromMessage(text), text);
  }
#ifdef _WIN32
  if (GetACP() == 1252) {
    EXPECT_EQ(utf8FromMessage("gr\xfcn"), "gr\xc3\xbcn");
  }
  EXPECT_EQ(utf8FromMessage("\xff: failed").substr(2), ": failed");
#endif
}

}  // namespace qel::utilities
