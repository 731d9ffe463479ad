#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "host/QelId/Guid.h"
#include "host/QelUtilities/Exception.h"

namespace qel {
namespace {

TEST(GuidTest, TextIsUpperCaseInTheOrderOfTheBytes) {
  const Guid id({0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54,
                 0x32, 0x10});
  EXPECT_EQ(id.toString(false), "01234567-89AB-CDEF-FEDC-BA9876543210");
  EXPECT_EQ(id.toString(true), "{01234567-89AB-CDEF-FEDC-BA9876543210}");
  EXPECT_EQ(Guid().toString(false), "00000000-0000-0000-0000-000000000000");
}

TEST(GuidTest, ReadsEitherCaseWithOrWithoutBraces) {
  for (const std::string_view text :
       {"01234567-89AB-CDEF-FEDC-BA9876543210", "01234567-89ab-cdef-fedc-ba9876543210",
        "{01234567-89AB-cdef-FEDC-ba9876543210}"}) {
    EXPECT_EQ(Guid::parse(text).toString(false), "01234567-89AB-CDEF-FEDC-BA9876543210") << text;
  }
  EXPECT_TRUE(Guid::parse("00000000-0000-0000-0000-000000000000").isNull());
}

TEST(GuidTest, RefusesAnythingElse) {
  using namespace std::string_view_literals;
  const std::vector<std::string_view> texts = {"",
                                               "{}",
                                               "0123456789ABCDEFFEDCBA9876543210",
                                               "{0123456789ABCDEFFEDCBA9876543210}",
                                               "0123456789ABCDEFFEDCBA9876543210----",
                                               "01234567-89AB-CDEF-FEDC-BA987654321",
                                               "01234567-89AB-CDEF-FEDC-BA98765432100",
                                               "01234567-89AB-CDEF-FEDC-BA987654321G",
                                               "01234567-89AB-CDEF-FEDC-BA98765432 0",
                                               "01234567-89ABC-DEF-FEDC-BA9876543210",
                                               "012345678-9AB-CDEF-FEDC-BA9876543210",
                                               "{01234567-89AB-CDEF-FEDC-BA9876543210",
                                               "01234567-89AB-CDEF-FEDC-BA9876543210}",
                                               "{01234567-89AB-CDEF-FEDC-BA9876543210)",
                                               "(01234567-89AB-CDEF-FEDC-BA9876543210)",
                                               " 01234567-89AB-CDEF-FEDC-BA9876543210 ",
                                               "01234567-89AB-CDEF-FEDC-BA98765432\0\0"sv,
                                               "+1234567-89AB-CDEF-FEDC-BA9876543210"};
  for (const std::string_view text : texts) {
    EXPECT_THROW(Guid::parse(text), qel::exception) << text;
  }
}

TEST(GuidTest, NewOnesAreRandomOfVersionFour) {
  const Guid first = Guid::create();
  EXPECT_NE(first, Guid::create());
  EXPECT_EQ(first.bytes()[6] >> 4, 4) << "version";
  EXPECT_EQ(first.bytes()[8] >> 6, 2) << "variant";
}

}  // namespace
}  // namespace qel
