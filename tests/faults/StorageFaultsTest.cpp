#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Client/SendingState.h"
#include "tests/faults/DatabaseDirectory.h"
#include "tests/support/FakeConnection.h"

namespace qel::test {

using namespace testing;

using StorageFaultsTest = DatabaseDirectory;

TEST_F(StorageFaultsTest, MarksEachCrossingOfTheCapOnceAndShrinksTheFile) {
  CipDatabaseClient client;
  client.initialize(data_);
  const Batch fiveMegabytes(500, {std::string(10'000, 'x'), Items});
  const int crossings = effort(2, 20);
  for (int crossing = 1; crossing <= crossings; ++crossing) {
    for (int batch = 1; batch <= 8; ++batch) {
      client.insertMultiple(fiveMegabytes);
    }
    const auto rows = client.getAllItems();
    EXPECT_THAT(rows, SizeIs(6 * fiveMegabytes.size() + 1)) << "six batches reach the cap";
    EXPECT_THAT(rows.rbegin()->second, HasSubstr("CriticalLarge"));
    client.deleteItems(rows);
    client.vacuum();
    EXPECT_LT(client.getDatabaseFileSize(), 100'000U);
  }
  measured() << crossings << " crossings, file of " << client.getDatabaseFileSize().value()
             << " bytes after the last\n";
}

/// The pass reads the rows first, and deletes them by ID after the server has accepted them.
TEST_F(StorageFaultsTest, KeepsLaterRowsWhenTheFileIsReplacedInTheMiddleOfAPass) {
  CipDatabaseClient client;
  client.initialize(data_);
  client.insertMultiple({"1", "2"}, Items);
  FakeConnection connection;
  connection.failure = [&] {
    if (timesLogged("it was set aside") == 0) {
      write(sendingFile_, std::string(8192, '\xee'));
      client.insertMultiple(batchOf("lost"));
      EXPECT_EQ(timesLogged("it was set aside"), 1);
    }
    client.insertMultiple(batchOf(std::to_string(connection.packages.size()) + "new"));
  };
  const auto logger = log::LogManager::instance().getLogger("pass");
  details::SendingState state;
  details::SendingPass(client, connection, *logger, state, 1).run();
  EXPECT_THAT(textsIn(sendingFile_),
              ElementsAre("1new1", "1new2", "1new3", "2new1", "2new2", "2new3"));
}

}  // namespace qel::test
