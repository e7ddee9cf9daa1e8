#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/doubles/Allocations.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using StatusCode::Success;

/// One PSU, and the threshold right below the lines that show what was asked and answered. Texts of
/// more than 15 bytes are allocated, so that composing one shows.
class UnwrittenLines : public Double::InventoryTest {
 protected:
  UnwrittenLines() {
    platform.logThreshold = 3;
    inventory.psuSlotCount = 1;
  }

  /// Expects a query that sends this last to allocate so often once the answer is there.
  template <typename Query>
  void ExpectAllocations(std::uint64_t expected, const IPMICOMMAND& request, const Bytes& response,
                         Query query) {
    constexpr std::uint64_t kByTheDouble = 1;  // The text of its last event.
    AllocationCount before;
    platform.Expect(request.netFn, request.cmd, request.data, response);
    platform.onEvent = [&](const std::string& event) {
      before = event == "disconnect" ? AllocationsSoFar() : before;
    };
    platform.ForgetWhatHappened();
    platform.events.reserve(64);
    EXPECT_EQ(query(), Success);
    EXPECT_EQ(AllocationsSoFar().allocations - before.allocations, expected + kByTheDouble)
        << "command " << int{request.cmd};
  }

  static IPMICOMMAND Request(std::uint8_t netFn, std::uint8_t command, const Bytes& data) {
    IPMICOMMAND request;
    request.netFn = netFn;
    request.cmd = command;
    request.data = data;
    return request;
  }

  std::string text;
  ChassisPowerCon power;
  ChassisPowerCap cap;
  NodeStatus node;
};

TEST_F(UnwrittenLines, ExchangeRendersNeitherRequestNorAnswer) {
  const IPMICOMMAND longRequest = Request(0x32, 0xB0, Bytes(20, 0x11));
  const IPMICOMMAND shortRequest = Request(0x32, 0xB0, {});
  Bytes response;
  std::uint8_t completionCode = 0;
  ExpectAllocations(0, longRequest, {},
                    [&] { return inventory.SendIpmiCmd(longRequest, response, completionCode); });
  ExpectAllocations(0, shortRequest, Bytes(20, 0x22),
                    [&] { return inventory.SendIpmiCmd(shortRequest, response, completionCode); });
}

TEST_F(UnwrittenLines, ShortenedAnswerIsNotRenderedAnew) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectAllocations(0, Request(0x32, 0xB0, {0x05, 0x0B}), Bytes(20, 0x80),
                    [&] { return inventory.GetSmmName(text); });
}

TEST_F(UnwrittenLines, QueriesOfOneRecordComposeNoText) {
  ExpectAllocations(0, Request(0x32, 0x98, {0x05}), {1, 0, 2, 0, 3, 0},
                    [&] { return inventory.GetChassisPowerConsumption(power); });
  ExpectAllocations(0, Request(0x32, 0x9D, {0x05}), {1, 0, 2, 0, 3, 0, 4, 0, 5, 0},
                    [&] { return inventory.GetChassisPowerCap(cap); });
  ExpectAllocations(0, Request(0x32, 0x98, {0x02}), {1, 0, 2, 0, 3, 0},
                    [&] { return inventory.GetNodePowerConsumption(2, power); });
  ExpectAllocations(0, Request(0x32, 0xA7, {0x02}), {0x80, 1, 1, 0},
                    [&] { return inventory.GetNodeStatus(2, node); });
}

TEST_F(UnwrittenLines, PsuQueriesComposeNoText) {
  std::vector<PSUFanSpeed> fans;
  fans.reserve(2);
  ExpectAllocations(0, Request(0x32, 0xA5, {0x01}), {1, 0, 2, 2},
                    [&] { return inventory.GetPSUFanSpeed(fans); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectAllocations(0, Request(0x32, 0xA5, {0x01}), {9, 1, 0, 2, 1, 0, 2, 2},
                    [&] { return inventory.GetPSUFanSpeed(fans); });
  std::vector<PSUStatus> psus;
  psus.reserve(1);
  ExpectAllocations(0, Request(0x32, 0x91, {}), Bytes(7, 0x00),
                    [&] { return inventory.GetPSUStatus(psus); });
}

TEST_F(UnwrittenLines, PsuFirmwareComposesNoText) {
  constexpr std::uint64_t kEntryOfTheSlot = 1;
  std::vector<PSUFwInfo> firmware;
  firmware.reserve(1);
  platform.Expect(0x06, 0x52, {0x0F, 0xD0, 0x02, 0xFC}, {0x0A, 0x01});
  platform.Expect(0x06, 0x52, {0x0F, 0xD0, 0x05, 0x99}, {0x04, 'A', 'B', 'C', 'D'});
  ExpectAllocations(kEntryOfTheSlot, Request(0x06, 0x52, {0x0F, 0xD0, 0x20, 0xF0}), {0x0A, 0x01},
                    [&] { return inventory.GetPSUFwInfo(firmware); });
}

}  // namespace
}  // namespace Tavrin
