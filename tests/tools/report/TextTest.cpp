#include <gmock/gmock.h>

#include "tools/records/Moment.h"
#include "tools/report/CrashCode.h"
#include "tools/report/DisplayText.h"
#include "tools/report/DisplayTime.h"
#include "tools/report/TimeAxis.h"

namespace qel::report {

using records::millisecondsOf;
using testing::ElementsAre;

TEST(DisplayTextTest, MakesStoredTextsHarmlessToTerminals) {
  EXPECT_EQ(printable("a\033[2J\n\t\x7f"), "a\\u001b[2J\\n\\t\\u007f");
  EXPECT_EQ(printable("\u009b31m \u202eabc \u00e4"), "\\u009b31m \\u202eabc \u00e4");
  EXPECT_EQ(printable("cut \xe2\x82 \xc3("), "cut \uFFFD\uFFFD \uFFFD(");
}

TEST(DisplayTextTest, WrapsByColumnsAndNotByBytes) {
  EXPECT_THAT(wrapped("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(wrapped("äöüß", 2), ElementsAre("äö", "üß"));
  EXPECT_THAT(wrapped("配管図", 4), ElementsAre("配管", "図"));
  EXPECT_THAT(wrapped("配", 1), ElementsAre("配"));
  EXPECT_THAT(wrapped("⌚⌚", 2), ElementsAre("⌚", "⌚"));
  EXPECT_THAT(wrapped("\u05e9\u05b8\u05dc", 1), ElementsAre("\u05e9\u05b8", "\u05dc"));
}

TEST(MomentTest, ReadsTimesOfRecordsAndTheirBeginnings) {
  EXPECT_EQ(millisecondsOf("2026-11-21T09:30:05.123Z"), 1795253405123);
  EXPECT_EQ(millisecondsOf("2026-11-21T09:30Z"), 1795253400000);
  for (const char* const text : {"", "2026-11", "2026-13-01", "2026-11-21T24:00", "2026-11-21T09:3",
                                 "2026-11-21T09:30:05.123+", "2026-11-21T09:30:05.123Zx", "noon"}) {
    EXPECT_EQ(millisecondsOf(text), std::nullopt) << text;
  }
  EXPECT_EQ(readableLength(59'999), "59.9 s");
  EXPECT_EQ(readableLength(90'000'000), "1 d 01 h");
}

TEST(CrashCodeTest, NamesTheCodesOfWindowsAndOfSignals) {
  EXPECT_EQ(crashCodeText("3221225477"), "0xC0000005, access violation");
  EXPECT_EQ(crashCodeText("3765269347"), "0xE06D7363, C++ exception");
  EXPECT_EQ(crashCodeText("11"), "0xB (11), signal SIGSEGV, invalid memory access");
  EXPECT_EQ(crashCodeText("305419896"), "0x12345678");
  EXPECT_EQ(crashCodeText("0"), "");
  for (const char* const text : {"", "-1", "11x", "4294967296"}) {
    EXPECT_EQ(crashCodeText(text), text);
  }
}

TEST(TimeAxisTest, LabelsMidnightWithItsDate) {
  const TimeAxis axis(*millisecondsOf("2026-11-20T20:00"), *millisecondsOf("2026-11-21T10:00"));
  kainjow::mustache::mustache texts("{{#.}}{{text}} {{/.}}");
  EXPECT_EQ(texts.render(axis.marks()), "20:00 22:00 2026-11-21 02:00 04:00 06:00 08:00 10:00 ");
}

}  // namespace qel::report
