// Runs the sample host against a server in this process that stores packages as a collector does.

#include <random>

#include "tests/faults/Effort.h"
#include "tests/faults/OtherConnection.h"
#include "tests/support/Process.h"
#include "tests/support/Programs.h"
#include "tests/support/Site.h"
#include "tools/collector/SqliteStore.h"

namespace qel::test {

namespace fs = std::filesystem;
using namespace testing;
using std::chrono::system_clock;

constexpr const char* countRows = "SELECT count(*) FROM Items";
constexpr const char* countStored =
    "SELECT (SELECT sum(count) FROM events), (SELECT count(*) FROM refused)";

/// Rows of a category, numbered from 1.
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
         " FROM (SELECT json ->> '$.Subcategory' + 0 AS number,"
         " (julianday(json ->> '$.Timestamp') - 2440587.5) * 86400 AS time FROM Items"
         " WHERE json ->> '$.Category' = '" +
         category + "')";
}

std::string hostFor(const Site& site, const std::string& server, const std::string& authority) {
  return programsOr(QEL_PROGRAMS) + "/qel-sample-host --directory " + site.directory() +
         " --server " + server + " --ca " + authority;
}

/// Runs a program to its end, expects its status and returns its standard error.
std::string play(const std::string& commandLine, const std::string& script = "", int status = 0) {
  Process program(commandLine, script);
  program.readUntil(EOF);
  EXPECT_EQ(program.join(), status) << program.errors();
  return program.errors();
}

class ProgramFaultsTest : public testing::Test {
 protected:
  /// The collector has every row that the support database has, once.
  void expectEachRowReceivedOnce() const {
    EXPECT_THAT(query(storeFile_, "SELECT count(*), max(count) FROM events"),
                ElementsAre(query(support_, countRows)[0] + "|1"));
  }

  const TemporaryDirectory directory_;
  const fs::path storeFile_ = directory_.path() / "store.db";
  collector::SqliteStore store_{storeFile_};
  std::function<void()> afterStoring_ = [] {};
  const Site site_{{.answer = [this](const Request& request) {
    store_.add({std::make_shared<const collector::Upload>(request.body, "ada")},
               std::chrono::steady_clock::now() + 10s);
    if (request.body.find("\"events\"") != std::string::npos) {
      afterStoring_();
    }
    return Reply{.status = 204};
  }}};
  const fs::path sending_ = site_.sendingFile();
  const fs::path support_ = site_.supportFile();
  const std::string host_ = hostFor(site_, site_.server().address(), site_.authority());
  const std::string hostWithoutServer_ =
      hostFor(site_, "127.0.0.1:1", site_.authority()) + " --exit-deadline 0";
};

TEST_F(ProgramFaultsTest, AKillLosesNoCommittedRow) {
  std::mt19937 random(4711);  // NOLINT(cert-msc51-cpp): the same moments in every run
  double longestQueue = 0;
  std::map<fs::path, double> allRows;
  const int rounds = effort(12, 500);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    if (round % 20 == 0) {  // Otherwise the files would reach their cap.
      fs::remove(sending_);
      fs::remove(support_);
      allRows.clear();
    }
    const std::string session = "round" + std::to_string(round);
    const bool whileWriting = round % 2 == 1;
    const auto journal = (round % 4 < 2 ? sending_ : support_).string() + "-journal";
    double committed = 0;
    {
      // The dispatcher writes once a second, or all the time when rows come while it writes.
      const Process host(
          hostWithoutServer_,
          scriptOf(session, 5000, whileWriting ? "{\"wait\": 0.001}\n" : "{\"wait\": 0.02}\n"));
      ASSERT_TRUE(waitUntil([&] { return fs::exists(sending_); }));
      const OtherConnection observer(sending_);
      const auto seen = [&] { return observer.number(among(session, "max(number)")); };
      ASSERT_TRUE(waitUntil([&] { return seen() > 0; }));
      const auto moment = system_clock::now() + 1ms * (random() % 1000);
      do {
        committed = seen();
      } while (system_clock::now() < moment);
      while (whileWriting && !fs::exists(journal)) {
        ASSERT_LT(system_clock::now(), moment + 20s) << "nothing is written any more";
        std::this_thread::yield();
      }
    }  // The host is killed here.
    const std::chrono::duration<double> killed = system_clock::now().time_since_epoch();
    for (const auto& file : {sending_, support_}) {
      EXPECT_THAT(query(file, "PRAGMA integrity_check"), ElementsAre("ok"));
      const OtherConnection observer(file);
      const double rows = observer.number(among(session, "count(*)"));
      EXPECT_GE(rows, committed);
      EXPECT_EQ(rows, observer.number(among(session, "max(number)"))) << "there is a gap";
      allRows[file] += rows;
      EXPECT_EQ(observer.number("SELECT count(*) FROM Items WHERE json LIKE '%\"round%'"),
                allRows[file]);
      longestQueue =
          std::max(longestQueue, killed.count() - observer.number(among(session, "max(time)")));
    }
  }
  // The period is one second; the machine also needs time to write and to observe.
  EXPECT_LT(longestQueue, 4);
  measured() << rounds << " kills, newest stored row at most " << longestQueue << " s old\n";
}

TEST_F(ProgramFaultsTest, AKillBetweenTheAnswerAndTheDeletionCountsNoRowTwice) {
  const int rounds = effort(3, 100);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    play(hostWithoutServer_, scriptOf("r" + std::to_string(round), 100));
    const OtherConnection observer(sending_);
    const double waiting = observer.number(countRows);
    EXPECT_GE(waiting, 100);
    Tally held;
    afterStoring_ = [&] {
      // The reader's lock delays the commit of the deletion.
      EXPECT_TRUE(observer.execute("BEGIN; SELECT count(*) FROM Items"));
      held.add();
    };
    {
      const Process host(host_);
      ASSERT_TRUE(held.reaches(1));
      const OtherConnection writer(sending_);
      // The host has then begun to delete.
      ASSERT_TRUE(waitUntil([&] { return !writer.execute("BEGIN IMMEDIATE; ROLLBACK"); }));
    }  // The host is killed here.
    EXPECT_TRUE(observer.execute("COMMIT"));
    EXPECT_GE(observer.number(countRows), waiting);
    afterStoring_ = [] {};
    play(host_);
    EXPECT_EQ(observer.number(countRows), 0);
    expectEachRowReceivedOnce();
  }
  measured() << rounds << " kills, every row counted once\n";
}

TEST_F(ProgramFaultsTest, AFileThatCannotGrowIsReportedAndLaterFilled) {
  play(hostWithoutServer_, scriptOf("first", 20));
  EXPECT_THAT(play("sh -c \"trap '' XFSZ; ulimit -f 100; exec " + hostWithoutServer_ + '"',
                   scriptOf("second", 500), 1),
              AllOf(HasSubstr("nothing of its transaction is stored: "),
                    HasSubstr("ItemDatabase.db stored ")));
  play(host_, scriptOf("third", 500));
  for (const auto& [category, rows] : {std::pair("first", 20), {"second", 0}, {"third", 500}}) {
    EXPECT_EQ(OtherConnection(support_).number(among(category, "count(*)")), rows);
  }
  expectEachRowReceivedOnce();
}

/// secrets.txt has the plain secret, percent-encoded, in hexadecimal digits, in Base64, and in
/// Base64 with each user. The `xxd` and `base64` commands made these forms.
TEST_F(ProgramFaultsTest, TheSecretStaysOutOfFilesOutputAndEnvironment) {
  const TemporaryDirectory given;
  const auto secret = write(given.path() / "secret",
                            "\xEF\xBB\xBF"
                            "dagger&pie!99\r\n");
  const auto users = write(given.path() / "users", "ada:dagger&pie!99\nbob:other\n");
  const auto betrayersAmong = [&](const std::string& files) {
    return Process("grep -rlaF -f " TEST_DATA "/secrets.txt " + files).readUntil(EOF);
  };
  const TemporaryDirectory temporary;
  setenv("TMPDIR", temporary.text().c_str(), 1);  // The standard errors are written there, too.
  TestCertificates authority;
  const auto identity = authority.issue("analytics.qel.example").string();
  Process collector(COLLECTOR_PROGRAM " --listen 127.0.0.1:0 --credentials " + users.string() +
                    " --store " + site_.directory() + "/store.db --certificate " + identity +
                    " --key " + identity);
  const std::string address = collector.readUntil('\n').substr(strlen("listening on "));
  const std::vector<std::array<std::string, 4>> sessions = {
      {"bob", address, authority.caFile(), "with status 401"},
      {"ada", "127.0.0.1:1", authority.caFile(), "127.0.0.1:1 failed"},
      {"ada", address, site_.authority(), "certificate"},
      {"ada", address, authority.caFile(), "204: events"}};
  for (const auto& [user, server, trusted, trace] : sessions) {
    SCOPED_TRACE(trace);
    Process host(hostFor(site_, server, trusted) + " --exit-deadline 2 --user " + user +
                 " --secret-file " + secret.string() + " --session " TEST_DATA "/secrets.jsonl");
    EXPECT_TRUE(waitUntil([&, &text = trace] {
      const auto logs = contentOf(site_.directory() + "/qel-sample-host.log") + collector.errors();
      return logs.find(text) != std::string::npos;
    }));
    std::string searched = site_.directory() + ' ' + temporary.text();
    for (const auto id : {host.id(), collector.id()}) {
      const auto visible = "/proc/" + std::to_string(id);
      EXPECT_THAT(contentOf(visible + "/cmdline"), HasSubstr("qel-"));
      EXPECT_THAT(contentOf(visible + "/environ"), HasSubstr("TMPDIR"));
      searched += ' ' + visible + "/cmdline " + visible + "/environ";
    }
    EXPECT_EQ(betrayersAmong(searched), "");
    host.terminate();
    const auto output = write(temporary.path() / "output", host.readUntil(EOF));
    EXPECT_EQ(host.join(), 0) << host.errors();
    EXPECT_THAT(contentOf(output), ContainsRegex("broadcast +1 "));
    EXPECT_EQ(betrayersAmong(searched), "");
  }
  const auto check = [&](const std::string& user) {
    return Process(hostFor(site_, address, authority.caFile()) + " --check-connection --user " +
                   user + " --secret-file " + secret.string())
        .readUntil(EOF);
  };
  const auto stored = [&] { return query(site_.directory() + "/store.db", countStored); };
  const auto before = stored();
  EXPECT_THAT(check("ada"), HasSubstr("accepted the credentials (status 204)"));
  EXPECT_THAT(check("bob"), HasSubstr("refused the user or the secret"));
  EXPECT_EQ(stored(), before) << "a check of the connection stores nothing";
  EXPECT_THAT(Process("find " + site_.directory() + " -type f -printf '%m '").readUntil(EOF),
              MatchesRegex("(600 ){6,}"));
  EXPECT_THAT(betrayersAmong(given.text()), AllOf(HasSubstr("/secret"), HasSubstr("/users")));
  unsetenv("TMPDIR");
}

}  // namespace qel::test
