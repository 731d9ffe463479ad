#include "host/QelSql/DirectoryClaim.h"
#include "tests/support/Files.h"
#include "tests/support/Query.h"
#include "tests/tools/support/Recorded.h"

namespace qel::support {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class WritingTest : public Recorded {
 protected:
  void recordSession() {
    recordForSupport(
        {{environment(firstSession, "09:30:00.000"), Table::Environments},
         {event(firstSession, "09:30:01.000", "Command|Started|<script>alert('1')</script>",
                R"({"ID": "a&b"})"),
          Table::Items},
         {event(firstSession, "09:35:00.000", "MemoryUsage|Application|Runtime",
                R"({"Max": "2048000", "Min": "1024000"})"),
          Table::Items},
         {event(firstSession, "09:36:00.000", "IssueListStorage|Issue|Added",
                R"({"Id": "7", "Description": "open end"})"),
          Table::Items},
         {event(firstSession, "09:37:00.000", "IssueListStorage|Issue|RemovedAll"), Table::Items},
         {event(firstSession, "09:38:00.000", "Application|Crashed|boom"), Table::Items},
         {event(firstSession, "09:38:00.000", "MemoryUsage|Application|Crashed",
                R"({"1795253870": "1100000", "1795253880": "1200000"})"),
          Table::Items},
         {event(secondSession, "09:29:00.000", "Help|Action|search"), Table::Items}});
  }

  std::string exportTo(const std::string& name) const {
    return "export " + place() + " --session last --to " + elsewhere(name).string();
  }
};

TEST_F(WritingTest, exportsASessionAsItIsStored) {
  recordSession();
  const auto said = run(exportTo("out"));
  EXPECT_EQ(said.status, 0) << said.errors;
  EXPECT_THAT(said.output, HasSubstr("exported 7 rows of session " + firstSession));
  const auto exported = elsewhere("out") / "SupportDatabase.db";
  EXPECT_THAT(test::query(exported, "SELECT json FROM Environments"),
              ElementsAre(environment(firstSession, "09:30:00.000")));
  EXPECT_EQ(test::query(exported, "SELECT json FROM Items ORDER BY ID"),
            test::query(file("SupportDatabase.db"), "SELECT json FROM Items WHERE json LIKE '%" +
                                                        firstSession + "%' ORDER BY ID"));

  const auto kept = test::contentOf(exported);
  const auto again = run(exportTo("out"));
  EXPECT_EQ(again.status, 2);
  EXPECT_EQ(again.errors, "qel-support: --to: there is already " + exported.string() + '\n');
  EXPECT_EQ(test::contentOf(exported), kept);
  EXPECT_EQ(run("export " + place() + " --session last --to " + place()).status, 2);
}

TEST_F(WritingTest, leavesNothingHalfWrittenOnAFullDisk) {
  recordSession();
  recordForSupport(items(
      std::vector<std::string>(2000, event(firstSession, "09:38:01.000", "Help|Action|search"))));
  const std::string fullDisk = R"(sh -c 'trap "" XFSZ; ulimit -f 64; exec "$0" "$@"')";
  auto said = run(exportTo("out"), fullDisk);
  EXPECT_EQ(said.status, 1);
  EXPECT_THAT(said.errors, HasSubstr("rows could be written: the disk may be full\n"));
  said =
      run("report " + place() + " --session last --output " + elsewhere("page").string(), fullDisk);
  EXPECT_EQ(said.status, 1);
  EXPECT_THAT(said.errors, HasSubstr("cannot write " + elsewhere("page").string()));
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere("")));
}

TEST_F(WritingTest, reportsASessionOnOnePage) {
  recordSession();
  const auto page = elsewhere("session.html");
  const std::string arguments = "report " + place() + " --session last --output " + page.string();
  EXPECT_EQ(run(arguments).status, 0);
  const auto html = test::contentOf(page);
  EXPECT_THAT(html, AllOf(HasSubstr("&lt;script&gt;alert(&#39;1&#39;)&lt;/script&gt;"),
                          HasSubstr("<td>a&amp;b</td>"), HasSubstr("Debian &lt;12&gt;"),
                          Not(HasSubstr("<script")), Not(HasSubstr("http:")),
                          Not(HasSubstr("https:")), Not(HasSubstr("url("))));
  EXPECT_THAT(html, AllOf(HasSubstr("<title>1,000 MB to 2,000 MB</title>"),
                          HasSubstr(R"(<line class="crash")"), HasSubstr(R"(class="reading")"),
                          HasSubstr("prefers-color-scheme: dark"), HasSubstr("@media print")));
  EXPECT_THAT(html, HasSubstr("open end<br><code class=\"faint\">7</code></td><td></td>"
                              "<td class=\"time\">2026-11-21 09:36:00</td>"
                              "<td class=\"time\">2026-11-21 09:37:00</td>"));
  EXPECT_THAT(html, HasSubstr("1 added, 0 removed one by one, the list emptied 1 times"));
  EXPECT_EQ(run(arguments).errors,
            "qel-support: --output: there is already " + page.string() + '\n');
}

TEST_F(WritingTest, purgesEverythingRecordedAndNothingElse) {
  recordSession();
  recordForSending(items({event(firstSession, "09:30:01.000", "Help|Action|search")}));
  const auto inUse = run("purge " + place() + " --yes");
  EXPECT_EQ(inUse.status, 1);
  EXPECT_THAT(inUse.errors, HasSubstr("is in use by another instance of the program"));

  endClients();
  for (const char* const name :
       {"ItemDatabase.db-journal", "SupportDatabase.db.corrupt-20261120T000000Z",
        "SupportDatabase.db.corrupt-20261120T000000Z-journal", "qel-sample-host.log",
        "qel-sample-host.1.log", "qel-sample-host.txt", "ItemDatabase.dbx", "notes"}) {
    test::write(file(name), "x");
  }
  const auto nobodyToAsk = run("purge " + place() + " </dev/null");
  EXPECT_EQ(nobodyToAsk.status, 2);
  EXPECT_THAT(nobodyToAsk.errors, HasSubstr("give --yes to remove 8 files"));

  const auto done = runFreely("purge " + place() + " --yes");
  EXPECT_EQ(done.status, 0) << done.errors;
  EXPECT_THAT(done.output, AllOf(HasSubstr("removed ItemDatabase.db-journal (1 bytes)\n"),
                                 HasSubstr("is removed: 8 files, ")));
  EXPECT_THAT(names(), ElementsAre("ItemDatabase.dbx", "notes", "qel-sample-host.txt"));
  EXPECT_EQ(run("purge " + place() + " --yes").output, "nothing is recorded in " + place() + '\n');
}

TEST_F(WritingTest, purgesOnATerminalOnlyAfterAYes) {
  recordSession();
  endClients();
  std::filesystem::remove(file("Databases.lock"));
  const auto answer = [&](const std::string& text) {
    test::Process terminal(
        std::string("script -qec '") + QEL_SUPPORT + " purge " + place() + "' /dev/null",
        text + '\n');
    terminal.readUntil(EOF);
    return terminal.join();
  };
  EXPECT_EQ(answer("no"), 1);
  EXPECT_THAT(names(), ElementsAre("SupportDatabase.db"));
  EXPECT_EQ(answer("yes"), 0);
  EXPECT_THAT(names(), testing::IsEmpty());
}

}  // namespace
}  // namespace qel::support
