#include <gtest/gtest.h>

#include "host/QelId/Guid.h"
#include "host/QelUtilities/Exception.h"

namespace qel {

TEST(GuidTest, ReadsOnlyTheUsualTextsAndCreatesRandomIds) {
  const std::string text = "01234567-89AB-CDEF-FEDC-BA9876543210";
  for (const std::string& read : {"{" + text + "}", "01234567-89ab-cdef" + text.substr(18)}) {
    EXPECT_EQ(Guid::parse(read).toString(false), text);
    EXPECT_EQ(Guid::parse(read).toString(true), "{" + text + "}");
  }
  for (const std::string& refused : {"{" + text, text + "0", text.substr(1) + "G"}) {
    EXPECT_THROW(Guid::parse(refused), qel::exception) << refused;
  }
  EXPECT_NE(Guid::create(), Guid::create());
  EXPECT_EQ(Guid::create().bytes()[6] >> 4, 4);
}

}  // namespace qel
