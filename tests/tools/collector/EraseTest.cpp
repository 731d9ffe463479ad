#include <gmock/gmock.h>

#include "tests/tools/CommandTest.h"
#include "tools/collector/SqliteStore.h"

namespace qel::collector {

using namespace std::chrono_literals;
using namespace testing;

using EraseTest = test::CommandTest;

TEST_F(EraseTest, ErasesWhatAnInstallationOrAUserSentWhileACollectorRuns) {
  SqliteStore store(file("store.db"));
  const auto add = [&](const std::string& body, const std::string& user) {
    store.add({std::make_shared<const Upload>(body, user)}, std::chrono::steady_clock::now() + 10s);
  };
  std::string many;
  for (int row = 0; row < 1200; ++row) {
    many += R"({"InstallationId":"first","x":)" + std::to_string(row) + "},";
  }
  add(R"({"version": "3.1", "environments": [{"InstallationId":"first"},{"InstallationId":"other"}],
      "events": [)" +
          many + R"({"InstallationId":"other","x":"first"},{"InstallationId":"first",}]})",
      "ada");
  add(R"({"version": "3.1", "events": [{"InstallationId":"first","by":"bob"},{"by":"bob"}]})",
      "bob");
  add("not a package of bob", "bob");
  expectTranscript("collector/erase.txt");
}

}  // namespace qel::collector
