#include "platform/standalone/ipmi_client/FiidObject.h"

#include <gtest/gtest.h>
#include <malloc.h>

namespace Tavrin::Standalone {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(FiidObject, FieldThatIsNotThereHasNeitherNumberNorBytes) {
  const FiidObject message(tmpl_rmcp_hdr);
  EXPECT_EQ(message.Number("version"), std::nullopt);
  EXPECT_EQ(message.NumberAs<int>("version"), 0);
  EXPECT_EQ(message.Bytes("version"), Bytes());
  EXPECT_EQ(message.Bytes("no such field"), Bytes());
}

TEST(FiidObject, FieldHasWhatWasFilledIn) {
  const FiidObject message(tmpl_rmcp_hdr);
  ASSERT_EQ(fill_rmcp_hdr_ipmi(message.Get()), 0);
  EXPECT_EQ(message.Number("version"), 6U);
  EXPECT_EQ(message.NumberAs<int>("version"), 6);
  EXPECT_EQ(message.Bytes("version"), Bytes{6});
}

TEST(FiidObject, LeavesNoMemoryBehind) {
  const auto used = [] { return mallinfo2().uordblks; };
  const auto before = used();
  for (int i = 0; i < 100; ++i) {
    const FiidObject message(tmpl_rmcp_hdr);
  }
  EXPECT_LT(used(), before + 10000);
}

}  // namespace
}  // namespace Tavrin::Standalone
