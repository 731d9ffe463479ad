#include "tests/tools/support/Recorded.h"

namespace qel::support {

using namespace testing;

class WritingTest : public Recorded {
 protected:
  void SetUp() override {
    recordEnvironment();
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
         event(firstSession, "09:38:00.000", {"Application", "Crashed", "boom"},
               R"({"Exception Code": "3221225477"})"),
         event(firstSession, "09:38:00.000", {"MemoryUsage", "Application", "Crashed"},
               R"({"1795253870": "1100000", "1795253880": "1200000"})"),
         help(secondSession, "09:29:00.000"),
         event(secondSession, "09:29:30.000", {"Application", "Stopped", "Menu"}),
         help("0A1B2C3D-0000-4000-8000-000000000003", "09:20:00.000")});
  }
};

TEST_F(WritingTest, ExportsASessionAsItIsStored) { expectTranscript("support/exporting.txt"); }

TEST_F(WritingTest, ReportsASessionOnOnePageThatNothingLeaves) {
  std::vector<std::string> searches(2001, help(firstSession, "noon"));
  searches.front() = event(firstSession, "09:39:00.000", {"Help", "Action", "search"},
                           R"({"Text": ")" + std::string(1992, 'x') + R"(ä"})");
  recordForSupport(searches);
  expectTranscript("support/reporting.txt");
  const auto html = test::contentOf(elsewhere("page"));
  EXPECT_THAT(
      html, AllOf(Not(HasSubstr("<script")), Not(HasSubstr("http:")), Not(HasSubstr("https:")),
                  Not(HasSubstr("url(")), HasSubstr(std::string(1992, 'x')), Not(HasSubstr("xä"))));
}

TEST_F(WritingTest, PurgesEverythingRecordedAndNothingElse) {
  recordForSending({help(firstSession)});
  endClients();
  expectTranscript("support/purging.txt");
}

}  // namespace qel::support
