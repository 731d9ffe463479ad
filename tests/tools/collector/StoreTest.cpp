#include <fstream>

#include <gmock/gmock.h>

#include "tests/tools/collector/StoreQuery.h"
#include "tools/collector/Store.h"

namespace qel::collector {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class StoreTest : public testing::Test {
 protected:
  StoreTest() { std::filesystem::create_directories(directory_); }
  ~StoreTest() override { std::filesystem::remove_all(directory_); }

  void add(Store& store, const std::string& body) const { store.add(readPackage(body)); }

  const std::filesystem::path directory_ =
      std::filesystem::path(testing::TempDir()) / ("qel-store-" + std::to_string(::getpid()));
  const std::filesystem::path file_ = directory_ / "störe.db";
};

TEST_F(StoreTest, countsATextAsOftenAsThePackageThatHoldsItMost) {
  const std::string twice = R"({"version": "3.1", "events": [{"a":1},bad,{"a":1}]})";
  const std::string once = R"({"version": "3.1", "events": [{"a":1}], "environments": [{"a":1}]})";
  {
    Store store(file_);
    add(store, once);
    add(store, twice);
  }
  const std::string first = query(file_, "SELECT received FROM events").at(0);
  {
    Store store(file_);
    add(store, twice);
    add(store, once);
  }
  EXPECT_THAT(query(file_, "SELECT id, count, text FROM events"), ElementsAre(R"(1|2|{"a":1})"));
  EXPECT_THAT(query(file_, "SELECT count, text FROM environments"), ElementsAre(R"(1|{"a":1})"));
  EXPECT_THAT(query(file_, "SELECT count, reason, text FROM refused"),
              ElementsAre("1|row is no JSON object|bad"));
  EXPECT_THAT(query(file_, "SELECT received FROM events"), ElementsAre(first));
}

TEST_F(StoreTest, keepsColumnsAndHostileTextsAsTheyCame) {
  using namespace std::string_literals;
  const std::string hostile =
      R"({"Category":"'); DROP TABLE events; --","Event":"a\u0000b","SessionId":7,"big":")" +
      std::string(1'000'000, 'x') + "\"}";
  Store store(file_);
  add(store, R"({"version": "3.1", "events": [)" + hostile +
                 R"(,{"Category":"c","Subcategory":"s","Event":"e","InstallationId":"i",)" +
                 R"("SessionId":"id","Timestamp":"t","Details":{"k":"v"}}], "environments": [)" +
                 R"({"InstallationId":"i","SessionId":"id","Timestamp":"t","OS":{}}]})");
  add(store, "\0\xff'"s);
  EXPECT_THAT(query(file_,
                    "SELECT category, hex(event), session, length(text) FROM events"
                    " WHERE id = 1"),
              ElementsAre("'); DROP TABLE events; --|610062|-|" + std::to_string(hostile.size())));
  EXPECT_THAT(query(file_, "SELECT text FROM events WHERE id = 1"), ElementsAre(hostile));
  EXPECT_THAT(query(file_,
                    "SELECT category, subcategory, event, installation, session, time,"
                    " json_extract(text, '$.Details.k') FROM events WHERE id = 2"),
              ElementsAre("c|s|e|i|id|t|v"));
  EXPECT_THAT(query(file_, "SELECT installation, session, time FROM environments"),
              ElementsAre("i|id|t"));
  EXPECT_THAT(query(file_, "SELECT reason, hex(text) FROM refused"),
              ElementsAre("no package|00FF27"));
}

TEST_F(StoreTest, storesNothingOfAPackageThatFails) {
  Store store(file_);
  query(file_,
        "CREATE TRIGGER full BEFORE INSERT ON events WHEN NEW.event = 'last'"
        " BEGIN SELECT raise(ABORT, 'disk full'); END");
  const std::string package = R"({"version": "3.1", "events": [{"a":1},{"Event":"last"}]})";
  try {
    add(store, package);
    ADD_FAILURE();
  } catch (const StoreError& error) {
    EXPECT_THAT(error.what(), HasSubstr("disk full"));
  }
  EXPECT_THAT(query(file_, "SELECT text FROM events"), ElementsAre());
  query(file_, "DROP TRIGGER full");
  add(store, package);
  EXPECT_THAT(query(file_, "SELECT text FROM events"),
              ElementsAre(R"({"a":1})", R"({"Event":"last"})"));
}

TEST_F(StoreTest, namesTheFileThatItCannotUse) {
  std::ofstream(file_) << "this is a text file, and a text file it shall stay";
  for (const auto& file : {file_, directory_ / "missing" / "store.db"}) {
    try {
      const Store store(file);
      ADD_FAILURE();
    } catch (const StoreError& error) {
      EXPECT_THAT(error.what(), HasSubstr(file.string()));
    }
  }
}

}  // namespace
}  // namespace qel::collector
