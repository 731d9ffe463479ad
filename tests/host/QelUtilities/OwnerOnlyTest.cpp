#include <gmock/gmock.h>

#include "host/QelUtilities/OwnerOnly.h"
#include "tests/support/FileRights.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::utilities {

namespace fs = std::filesystem;

TEST(OwnerOnlyTest, CreatesWhatIsMissingForItsOwnerAndChangesNothingThatExists) {
  const test::TemporaryDirectory temporary;
  const fs::path shared = temporary.path() / "shared";
  fs::create_directory(shared);
  fs::permissions(shared, fs::perms::all);
  for (const auto create : {&createForOwnerAlone, &createDirectoryForOwnerAlone}) {
    const bool isDirectory = create == &createDirectoryForOwnerAlone;
    const fs::path made = shared / (isDirectory ? "directory" : "file");
    std::error_code error = std::make_error_code(std::errc::io_error);
    EXPECT_TRUE(create(made, error));
    EXPECT_FALSE(error);
    EXPECT_EQ(isDirectory, fs::is_directory(made));
    EXPECT_TRUE(test::isForOwnerAlone(made)) << made;
    test::write(isDirectory ? made / "inside" : made, "x");
    EXPECT_FALSE(create(made, error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(create(shared / "missing" / "file", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  }
  EXPECT_EQ("x", test::contentOf(shared / "file"));
  EXPECT_EQ("x", test::contentOf(shared / "directory" / "inside"));
  const fs::path plain = test::write(shared / "plain", "");
  fs::permissions(plain, fs::perms(0644));
  EXPECT_FALSE(test::isForOwnerAlone(plain)) << "the check can fail";
}

TEST(OwnerOnlyTest, DoesNotFollowASymbolicLink) {
  const test::TemporaryDirectory temporary;
  const fs::path link = temporary.path() / "link";
  std::error_code error;
  fs::create_symlink(temporary.path() / "target", link);
  EXPECT_FALSE(createForOwnerAlone(link, error));
  EXPECT_FALSE(error);
  EXPECT_FALSE(fs::exists(temporary.path() / "target"));
}

}  // namespace qel::utilities
