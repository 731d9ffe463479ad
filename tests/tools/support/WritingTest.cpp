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
    recordForSupport({environment(firstSession, "09:30:00.000")}, Table::Environments);
    recordForSupport(
        {event(firstSession, "09:30:01.000",
               {"Command", "Started", "<script>alert('1')</script>{{style}}"},
               R"({"ID": "a&b\u0000"})"),
         event(firstSession, "09:35:00.000", {"MemoryUsage", "Application", "Runtime"},
               R"({"Max": "2048000", "Min": "1024000"})"),
         event(firstSession, "09:36:00.000", {"IssueListStorage", "Issue", "Added"},
               R"({"Id": "7", "Description": "open <end>"})"),
         event(firstSession, "09:36:10.000", {"IssueListStorage", "Issue", "Added"},
               R"({"Id": "8"})"),
         event(firstSession, "09:36:20.000", {"IssueListStorage", "Issue", "Removed"},
               R"({"Id": "8"})"),
         event(firstSession, "09:37:00.000", {"IssueListStorage", "Issue", "RemovedAll"}),
         event(firstSession, "09:38:00.000", {"Application", "Crashed", "boom"}),
         event(firstSession, "09:38:00.000", {"MemoryUsage", "Application", "Crashed"},
               R"({"1795253870": "1100000", "1795253880": "1200000"})"),
         event(secondSession, "09:29:00.000", {"Help", "Action", "search"})});
  }
};

TEST_F(WritingTest, exportsASessionAsItIsStored) {
  recordSession();
  const std::string exporting = "qel-support export $DIR --session last --to ";
  EXPECT_EQ(run(exporting + "$OUT/out").output,
            "exported 9 rows of session " + firstSession + " to $OUT/out/SupportDatabase.db\n");
  const auto exported = elsewhere("out") / "SupportDatabase.db";
  EXPECT_THAT(test::query(exported, "SELECT json FROM Environments"),
              ElementsAre(environment(firstSession, "09:30:00.000")));
  EXPECT_EQ(test::query(exported, "SELECT json FROM Items ORDER BY ID"),
            test::query(file("SupportDatabase.db"), "SELECT json FROM Items WHERE json LIKE '%" +
                                                        firstSession + "%' ORDER BY ID"));

  const auto kept = test::contentOf(exported);
  EXPECT_EQ(run(exporting + "$OUT/out").errors,
            "qel-support: --to: there is already $OUT/out/SupportDatabase.db\n");
  EXPECT_EQ(test::contentOf(exported), kept);
  EXPECT_EQ(run(exporting + "$DIR").status, 2);
}

TEST_F(WritingTest, leavesNothingHalfWrittenOnAFullDisk) {
  recordSession();
  recordForSupport(std::vector<std::string>(
      2000, event(firstSession, "09:38:01.000", {"Help", "Action", "search"})));
  const std::string onFullDisk =
      R"(sh -c 'trap "" XFSZ; ulimit -f 64; exec "$0" "$@"' qel-support )";
  auto said = run(onFullDisk + "export $DIR --session last --to $OUT/out");
  EXPECT_EQ(said.status, 1);
  EXPECT_THAT(said.errors, HasSubstr("rows could be written: the disk may be full\n"));
  said = run(onFullDisk + "report $DIR --session last --output $OUT/page");
  EXPECT_EQ(said.status, 1);
  EXPECT_THAT(said.errors, HasSubstr("cannot write $OUT/page"));
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere("")));
}

TEST_F(WritingTest, reportsASessionOnOnePage) {
  recordSession();
  std::vector<std::string> searches(2001,
                                    event(firstSession, "noon", {"Help", "Action", "search"}));
  searches.front() = event(firstSession, "09:39:00.000", {"Help", "Action", "search"},
                           R"({"Text": ")" + std::string(1992, 'x') + R"(ä"})");
  recordForSupport(searches);
  const std::string reporting = "qel-support report $DIR --session last --output $OUT/page";
  EXPECT_EQ(run(reporting).status, 0);
  const auto html = test::contentOf(elsewhere("page"));
  EXPECT_THAT(html,
              AllOf(HasSubstr("&lt;script&gt;alert(&apos;1&apos;)&lt;/script&gt;{{style}}"),
                    HasSubstr("<td>a&amp;b\uFFFD</td>"), HasSubstr("Debian &lt;12&gt;"),
                    Not(HasSubstr("<script")), Not(HasSubstr("<12>")), Not(HasSubstr("http:")),
                    Not(HasSubstr("https:")), Not(HasSubstr("url("))));
  EXPECT_THAT(html, AllOf(HasSubstr("<title>1,000 MB to 2,000 MB</title>"),
                          HasSubstr(R"(<line class="crash")"), HasSubstr(R"(class="reading")"),
                          HasSubstr("prefers-color-scheme: dark"), HasSubstr("@media print")));
  EXPECT_THAT(html, HasSubstr("open &lt;end&gt;<br><code class=\"faint\">7</code></td><td></td>"
                              "<td class=\"time\">2026-11-21 09:36:00</td>"
                              "<td class=\"time\">2026-11-21 09:37:00</td>"));
  EXPECT_THAT(html, HasSubstr("8</code></td><td></td><td class=\"time\">2026-11-21 09:36:10</td>"
                              "<td class=\"time\">2026-11-21 09:36:20</td>"));
  EXPECT_THAT(html, HasSubstr("2 added, 1 removed one by one; times that the list was emptied: 1"));
  EXPECT_THAT(html, AllOf(HasSubstr(">09:32</text>"), HasSubstr(std::string(1992, 'x') + "…</td>"),
                          HasSubstr("Later records that are left out: 1;")));
  EXPECT_EQ(run(reporting).errors, "qel-support: --output: there is already $OUT/page\n");
}

TEST_F(WritingTest, purgesEverythingRecordedAndNothingElse) {
  recordSession();
  recordForSending({event(firstSession, "09:30:01.000", {"Help", "Action", "search"})});
  const auto inUse = run("qel-support purge $DIR --yes");
  EXPECT_EQ(inUse.status, 1);
  EXPECT_THAT(inUse.errors, HasSubstr("is in use by another instance of the program"));

  endClients();
  for (const char* const name :
       {"ItemDatabase.db-journal", "SupportDatabase.db.corrupt-20261120T000000Z",
        "SupportDatabase.db.corrupt-20261120T000000Z-journal", "qel-sample-host.log",
        "qel-sample-host.1.log", "installation-id", "qel-sample-host.log.txt", "ItemDatabase.dbx",
        "notes"}) {
    test::write(file(name), "x");
  }
  EXPECT_THAT(run("qel-support purge $DIR </dev/null").errors,
              HasSubstr("give --yes to remove 9 files"));

  EXPECT_THAT(runFreely("qel-support purge $DIR --yes").output,
              AllOf(HasSubstr("removed ItemDatabase.db-journal (1 bytes)\n"),
                    HasSubstr("is removed: 9 files, ")));
  EXPECT_THAT(names(), ElementsAre("ItemDatabase.dbx", "notes", "qel-sample-host.log.txt"));
  EXPECT_EQ(run("qel-support purge $DIR --yes").output, "nothing is recorded in $DIR\n");
}

TEST_F(WritingTest, purgesOnATerminalOnlyAfterAYes) {
  recordSession();
  endClients();
  const std::string purging = " | script -qec \"qel-support purge $DIR\" /dev/null'";
  EXPECT_EQ(run("sh -c 'echo no" + purging).status, 1);
  EXPECT_EQ(runFreely("sh -c 'echo yes" + purging).status, 0);
  EXPECT_THAT(names(), testing::IsEmpty());
}

}  // namespace
}  // namespace qel::support
