// Runs the sample host against a server in this process that keeps what a collector would.

#include <chrono>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "tests/faults/Effort.h"
#include "tests/faults/OtherConnection.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/Process.h"
#include "tests/support/Query.h"
#include "tests/support/Tally.h"
#include "tools/collector/PackageReader.h"
#include "tools/collector/Store.h"

namespace qel::samplehost {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using std::chrono::system_clock;
using test::OtherConnection;
using test::query;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* serverName = "analytics.qel.example";

/// Rows of a category of its own, numbered from 1.
std::string scriptOf(const std::string& category, int rows, const std::string& wait = "") {
  std::string script;
  for (int row = 1; row <= rows; ++row) {
    script += R"({"notify": "onGeneralAction", "category": ")" + category +
              R"(", "subcategory": ")" + std::to_string(row) + R"(", "event": ")" +
              std::string(500, 'e') + "\", \"details\": {}}\n" + wait;
  }
  return script;
}

/// An expression over the rows of a category, with `number` and `time` (seconds since 1970).
std::string among(const std::string& category, const std::string& expression) {
  return "SELECT " + expression +
         " FROM (SELECT CAST(json_extract(json, '$.Subcategory') AS INTEGER) AS number,"
         " (julianday(json_extract(json, '$.Timestamp')) - 2440587.5) * 86400 AS time FROM Items"
         " WHERE json_extract(json, '$.Category') = '" +
         category + "')";
}

class ProgramFaultsTest : public testing::Test {
 protected:
  std::string hostFor(const std::string& server) const {
    return QEL_SAMPLE_HOST " --directory " + data_.string() + " --ca " + certificates_.caFile() +
           " --server " + server;
  }

  /// To its end; its status.
  int play(const std::string& commandLine, const std::string& script = "") {
    test::Process host(commandLine, script);
    host.readUntil(EOF);
    const int status = host.join();
    errors_ = host.errors();
    return status;
  }

  test::Reply receive(const test::Request& request) {
    store_.add(collector::readPackage(request.body));
    if (request.body.find("\"events\"") != std::string::npos) {
      afterStoring_();
    }
    return {.status = 204};
  }

  /// The collector has every row that the support database has, once.
  void expectEachRowReceivedOnce() const {
    EXPECT_THAT(query(storeFile_, "SELECT count(*), max(count) FROM events"),
                ElementsAre(query(supportFile_, "SELECT count(*) FROM Items")[0] + "|1"));
  }

  const test::TemporaryDirectory directory_;
  const fs::path data_ = directory_.path() / "data";
  const fs::path sendingFile_ = data_ / "ItemDatabase.db";
  const fs::path supportFile_ = data_ / "SupportDatabase.db";
  const bool created_ = fs::create_directory(data_);
  const fs::path storeFile_ = directory_.path() / "store.db";
  collector::Store store_{storeFile_};
  std::function<void()> afterStoring_ = [] {};
  test::TestCertificates certificates_;
  test::HttpsTestServer server_{
      {.identity = certificates_.issue(serverName),
       .answer = [this](const test::Request& request) { return receive(request); }}};
  const std::string host_ = hostFor(server_.address());
  const std::string hostWithoutServer_ = hostFor("127.0.0.1:1 --exit-deadline 0");
  std::string errors_;
};

TEST_F(ProgramFaultsTest, KillingItLosesNothingThatWasCommitted) {
  std::mt19937 random(4711);  // NOLINT(cert-msc51-cpp): the same moments in every run
  double longestQueue = 0;
  double rowsBefore = 0;
  const int rounds = test::effort(12, 500);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    if (round % 20 == 0) {  // The files would reach their cap otherwise.
      fs::remove_all(data_);
      fs::create_directory(data_);
      rowsBefore = 0;
    }
    const std::string session = "round" + std::to_string(round);
    const bool whileWriting = round % 2 == 1;
    const fs::path journal =
        (round / 2 % 2 == 0 ? sendingFile_ : supportFile_).string() + "-journal";
    double committed = 0;
    {
      // The dispatcher writes once a second, or all the time when rows come while it writes.
      test::Process host(
          hostWithoutServer_,
          scriptOf(session, 5000, whileWriting ? "{\"wait\": 0.001}\n" : "{\"wait\": 0.02}\n"));
      while (!fs::exists(sendingFile_)) {
        std::this_thread::yield();
      }
      const OtherConnection observer(sendingFile_);
      const auto seen = [&] { return observer.number(among(session, "max(number)")); };
      while ((committed = seen()) == 0) {
        std::this_thread::sleep_for(10ms);
      }
      const auto moment = system_clock::now() + std::chrono::milliseconds(random() % 1000);
      while (system_clock::now() < moment) {
        committed = seen();
      }
      while (whileWriting && !fs::exists(journal)) {
        std::this_thread::yield();
      }
    }  // It is killed here.
    const std::chrono::duration<double> killed = system_clock::now().time_since_epoch();
    for (const auto& file : {sendingFile_, supportFile_}) {
      EXPECT_THAT(query(file, "PRAGMA integrity_check"), ElementsAre("ok"));
      const OtherConnection observer(file);
      EXPECT_EQ(observer.number(among(session, "count(*) - max(number)")), 0)
          << "a row is missing before the last";
      longestQueue =
          std::max(longestQueue, killed.count() - observer.number(among(session, "max(time)")));
    }
    const OtherConnection sending(sendingFile_);
    const double rows = sending.number(among(session, "count(*)"));
    EXPECT_GE(rows, committed);
    rowsBefore += rows;
    EXPECT_EQ(sending.number("SELECT count(*) FROM Items WHERE json LIKE '%\"round%'"), rowsBefore);
  }
  // A second, and what the machine needs to write and to be observed.
  EXPECT_LT(longestQueue, 4);
  test::measured() << rounds << " kills, newest stored row at most " << longestQueue << " s old\n";
}

TEST_F(ProgramFaultsTest, KillingItBetweenTheAnswerAndTheDeletionCountsNoRowTwice) {
  const int rounds = test::effort(3, 100);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    EXPECT_EQ(play(hostWithoutServer_, scriptOf("r" + std::to_string(round), 100)), 0) << errors_;
    const OtherConnection observer(sendingFile_);
    const double waiting = observer.number("SELECT count(*) FROM Items");
    EXPECT_GE(waiting, 100);
    test::Tally held;
    afterStoring_ = [&] {
      EXPECT_TRUE(observer.execute("BEGIN; SELECT count(*) FROM Items"));  // So it cannot commit.
      held.add();
    };
    {
      test::Process host(host_);
      ASSERT_TRUE(held.reaches(1));
      const OtherConnection writer(sendingFile_);
      const auto end = system_clock::now() + 10s;
      while (writer.execute("BEGIN IMMEDIATE")) {  // until the host has begun to delete
        EXPECT_TRUE(writer.execute("ROLLBACK"));
        ASSERT_LT(system_clock::now(), end);
      }
    }  // It is killed here.
    EXPECT_TRUE(observer.execute("COMMIT"));
    EXPECT_GE(observer.number("SELECT count(*) FROM Items"), waiting);
    afterStoring_ = [] {};
    EXPECT_EQ(play(host_), 0) << errors_;
    EXPECT_EQ(observer.number("SELECT count(*) FROM Items"), 0);
    expectEachRowReceivedOnce();
  }
  test::measured() << rounds << " kills, every row counted once\n";
}

TEST_F(ProgramFaultsTest, AFileThatCannotGrowIsReportedAndLaterFilled) {
  EXPECT_EQ(play(hostWithoutServer_, scriptOf("first", 20)), 0) << errors_;
  EXPECT_EQ(play("sh -c \"trap '' XFSZ; ulimit -f 100; exec " + hostWithoutServer_ + '"',
                 scriptOf("second", 500)),
            1);
  EXPECT_THAT(errors_, HasSubstr("nothing of its transaction is stored: "));
  EXPECT_THAT(errors_, HasSubstr("ItemDatabase.db stored "));
  EXPECT_EQ(play(host_, scriptOf("third", 500)), 0) << errors_;
  for (const auto& [category, rows] : {std::pair("first", 20), {"second", 0}, {"third", 500}}) {
    EXPECT_EQ(OtherConnection(supportFile_).number(among(category, "count(*)")), rows);
  }
  expectEachRowReceivedOnce();
}

}  // namespace
}  // namespace qel::samplehost
