#include "platform/standalone/ipmi_client/Packet.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace Tavrin::Standalone {
namespace {

TEST(PacketParts, AreThereOnlyAsLongAsEachIs) {
  const std::vector<FiidObject PacketParts::*> each = {
      &PacketParts::rmcpHeader,   &PacketParts::sessionHeader,  &PacketParts::requestHeader,
      &PacketParts::answerHeader, &PacketParts::messageTrailer, &PacketParts::sessionTrailer,
      &PacketParts::payload};
  for (FiidObject PacketParts::*const part : each) {
    PacketParts parts;
    EXPECT_TRUE(parts.AreThere());
    const FiidObject taken = std::move(parts.*part);
    EXPECT_FALSE(parts.AreThere());
  }
}

}  // namespace
}  // namespace Tavrin::Standalone
