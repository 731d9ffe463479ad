#include <array>
#include <chrono>
#include <cmath>

#include <gmock/gmock.h>

#include "tools/collector/ApiRequest.h"
#include "tools/collector/ApiText.h"
#include "tools/collector/FailedLogIns.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using boost::asio::ip::make_address;

/// What is asked for, or the reason for a refusal.
std::string outcomeOf(const std::string& figure, const std::string& query) {
  try {
    const auto [name, isCsv, filter, id] = parseApiRequest(figure, query);
    std::string text = name + (isCsv ? " as CSV" : "");
    for (const auto& value : {filter.from, filter.until, filter.version, filter.installation,
                              filter.session, filter.end, filter.after, id}) {
      text += '|' + value;
    }
    return text + '|' + std::to_string(filter.limit);
  } catch (const ApiError& error) {
    return std::to_string(error.status) + ' ' + error.what();
  }
}

TEST(ApiRequestTest, ReadsParametersAndNamesWhatIsWrong) {
  for (const auto& [figure, query, outcome] : std::vector<std::array<std::string, 3>>{
           {"versions", "", "versions|||||||||200"},
           {"versions.csv", "from=2024-02-29&until=2024-02-29",
            "versions as CSV|2024-02-29|2024-02-29|||||||200"},
           {"versions", "version=1%2e2+%C3%a4&installation=%26%3D&from=&",
            "versions|||1.2 \u00e4|&=|||||200"},
           {"sessions", "session=0A1&end=crashed&limit=1", "sessions|||||0A1|crashed|||1"},
           {"live", "after=17&limit=1000", "live|||||||17||1000"},
           {"session", "id=%7b0A1B%7d", "session||||||||{0A1B}|200"},
           {"", "", "404 there is no such figure"},
           {"versions.csv.csv", "", "404 there is no such figure"},
           {"../versions", "", "404 there is no such figure"},
           {"versions", "limit=1", "400 versions has no parameter \"limit\""},
           {"live", "end=crashed", "400 live has no parameter \"end\""},
           {"system", "From=2026-01-01", "400 system has no parameter \"From\""},
           {"versions", "=", "400 versions has no parameter \"\""},
           {"versions", "from=2026-01-01&from=2026-01-01", "400 from is given twice"},
           {"versions", "from=2026-02-29", "400 from is not a day of the form YYYY-MM-DD"},
           {"versions", "from=2026-00-01", "400 from is not a day of the form YYYY-MM-DD"},
           {"versions", "until=2026-1-011", "400 until is not a day of the form YYYY-MM-DD"},
           {"versions", "until=2026-+1-01", "400 until is not a day of the form YYYY-MM-DD"},
           {"versions", "until=-026-01-01", "400 until is not a day of the form YYYY-MM-DD"},
           {"versions", "from=2026-01-02&until=2026-01-01", "400 until is before from"},
           {"sessions", "end=Crashed", "400 end is neither crashed, stopped nor unknown"},
           {"sessions", "limit=0", "400 limit is not a number from 1 to 1000"},
           {"sessions", "limit=1001", "400 limit is not a number from 1 to 1000"},
           {"sessions", "limit=", "400 limit is not a number from 1 to 1000"},
           {"sessions", "limit=9e1", "400 limit is not a number from 1 to 1000"},
           {"sessions", "limit=99999999999", "400 limit is not a number from 1 to 1000"},
           {"session", "", "400 id is missing"},
           {"versions", "version=%4", "400 the address has a malformed escape"},
           {"versions", "version=%", "400 the address has a malformed escape"},
           {"versions", "version=%g0", "400 the address has a malformed escape"},
           {"versions", "version=%00", "400 the address has a NUL"},
           {"versions", "version=%ff", "400 the address is not UTF-8"},
       }) {
    EXPECT_EQ(outcomeOf(figure, query), outcome) << figure << '?' << query;
  }
}

TEST(ApiTextTest, WritesHostileTextsWithoutHarm) {
  const ResultTable table{{"text", "number", "none"},
                          {{"</script>\"'\0\x7f\n"s, std::int64_t{-1}, std::monostate()},
                           {"cut \xe2\x82", 0.5, "=1+1"},
                           {"+1", std::nan(""), "-1,\r\n2"},
                           {"whole", 0.0, -2.0},
                           {"@x", std::int64_t{1} << 62, "\tx"}},
                          {}};
  const auto json = jsonPage("refused", table);
  EXPECT_EQ(json.text, R"({"figure":"refused","columns":["text","number","none"],"rows":[)"
                       R"(["</script>\"'\u0000)"
                       "\x7f"
                       R"(\n",-1,null],["cut �",0.5,"=1+1"],["+1",null,"-1,\r\n2"],["whole",0,-2],)"
                       R"(["@x",4611686018427387904,"\tx"]]})"
                       "\n");
  EXPECT_EQ(json.type, "application/json");
  EXPECT_EQ(csvPage("refused", table).text,
            "text,number,none\r\n"
            "\"</script>\"\"'\0\x7f\n\",-1,\r\n"
            "\"cut \uFFFD\",0.5,\"'=1+1\"\r\n"
            "\"'+1\",,\"'-1,\r\n2\"\r\n"
            "\"whole\",0,-2\r\n"
            "\"'@x\",4611686018427387904,\"'\tx\"\r\n"s);
}

TEST(FailedLogInsTest, DelayOnlyTheAddressThatFailed) {
  FailedLogIns failures;
  const std::chrono::steady_clock::time_point begin{1000h};
  const auto delay = [&](const char* address, std::chrono::seconds time) {
    return failures.delay(make_address(address), begin + time);
  };
  for (const char* const address : {"192.0.2.1", "2001:db8::1"}) {
    for (int i = 0; i < 10; ++i) {
      EXPECT_EQ(delay(address, 0s), 0s) << i;
      failures.add(make_address(address), begin);
    }
  }
  for (const auto& [address, time, expected] :
       std::vector<std::tuple<const char*, std::chrono::seconds, std::chrono::seconds>>{
           {"192.0.2.1", 0s, 6s},
           {"::ffff:192.0.2.1", 1s, 5s},
           {"192.0.2.1", 6s, 0s},
           {"192.0.2.2", 0s, 0s},
           {"2001:db8::ffff", 0s, 6s},
           {"2001:db8:0:1::1", 0s, 0s},
       }) {
    EXPECT_EQ(delay(address, time), expected) << address;
  }
  for (std::uint32_t i = 0; i < 2 * FailedLogIns::most; ++i) {
    failures.add(boost::asio::ip::address_v4(i), begin);
  }
  EXPECT_EQ(delay("192.0.2.1", 0s), 6s) << "others made it be forgotten";
}

}  // namespace
}  // namespace qel::collector
