#include "tests/host/QelSql/SqlDatabaseAdapterTest.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace qel::db::sql {
namespace {

using Paths = std::vector<fs::path>;

#ifdef _WIN32

Paths spellingsOf(const fs::path& directory) {
  std::wstring upperCase = directory.native();
  CharUpperW(upperCase.data());
  std::wstring shortName(MAX_PATH, L'\0');
  shortName.resize(GetShortPathNameW(directory.c_str(), shortName.data(), MAX_PATH));
  EXPECT_NE(directory, shortName);
  const auto drive = directory.root_name().native();
  return {upperCase,
          shortName,
          drive + directory.filename().native(),
          LR"(\\?\)" + directory.native(),
          directory.native() + L"..\\",
          directory / "." / ""};
}

#else

Paths spellingsOf(const fs::path& directory) {
  fs::create_directory_symlink(directory, directory.parent_path() / "link");
  return {directory.filename(), directory.parent_path() / "link", directory / "." / ""};
}

#endif

TEST_F(SqlDatabaseAdapterTest, KnowsADirectoryInEachSpelling) {
  const ScopeGuard returning([before = fs::current_path()] { fs::current_path(before); });
  fs::current_path(temporary_.path());
  const fs::path directory = temporary_.path() / "Long Name";
  fs::create_directory(directory);
  TestDatabase database(directory / "T.db");
  EXPECT_TRUE(database.insert("a"));
  for (const auto& spelling : spellingsOf(directory)) {
    SCOPED_TRACE(spelling.string());
    EXPECT_EQ((Rows{{"1", "a"}}), TestDatabase(spelling / "T.db").rows());
  }
}

#ifdef _WIN32

/// Wine shows the directory "dosdevices\\unc\\NAME" of its own directory as the server NAME.
TEST_F(SqlDatabaseAdapterTest, KeepsADatabaseOnAServer) {
  const wchar_t* const wine = _wgetenv(L"WINECONFIGDIR");
  if (wine == nullptr) {
    GTEST_SKIP() << "there is no simulated server";
  }
  const fs::path servers = fs::path(wine + 4) / "dosdevices" / "unc";  // after the prefix
  const auto name = temporary_.path().filename();
  const ScopeGuard removing([&] { fs::remove_all(servers / name); });
  fs::create_directories(servers / name / "share");
  const fs::path share = fs::path(LR"(\\)" + name.native()) / "share";
  TestDatabase database(LR"(\\?\UNC)" + share.native().substr(1) + LR"(\T.db)");
  EXPECT_TRUE(database.insert("a"));
  TestDatabase sameFile(share / "." / "T.db");
  EXPECT_EQ((Rows{{"1", "a"}}), sameFile.rows());
}

#endif

}  // namespace
}  // namespace qel::db::sql
