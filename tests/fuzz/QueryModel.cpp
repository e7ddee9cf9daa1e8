#include "tests/fuzz/QueryModel.h"

#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {
namespace {

std::uint8_t LowByte(std::uint64_t number) { return static_cast<std::uint8_t>(number & 0xFFU); }

/// Reads one register of every slot.
int StatusOfRegister(const SmmModel& smm, ExchangeCursor& cursor, std::uint8_t readCount,
                     std::uint8_t psuRegister, std::size_t minimumLength,
                     std::set<std::uint64_t>& slots) {
  for (std::uint64_t slot = 1; slot <= smm.psuSlotCount; ++slot) {
    const std::uint8_t bus = slot == 1 ? 0x0F : 0x0D;
    const int status = smm.IsSecondGeneration()
                           ? cursor.Next(0x32, 0x92, {LowByte(slot), readCount, psuRegister})
                           : cursor.Next(0x06, 0x52, {bus, 0xD0, readCount, psuRegister});
    if (status != 0) {
      return status;
    }
    if (cursor.IsGood(minimumLength)) {
      slots.insert(slot);
    }
  }
  return 0;
}

}  // namespace

ExchangeCursor::~ExchangeCursor() {
  Require(position_ == Double::ThePlatform().exchanges.size(),
          "no more requests are sent than are needed");
}

int ExchangeCursor::Next(std::uint8_t netFn, std::uint8_t command, const Bytes& data) {
  if (!smm_.admitsExchanges) {
    return 1;
  }
  Require(position_ < Double::ThePlatform().exchanges.size(),
          "every request that is needed is sent");
  last = Double::ThePlatform().exchanges[position_++];
  Require(!last.Connects() || (last.netFn == netFn && last.command == command && last.data == data),
          "a request says what its query asks for");
  if (last.exception) {
    return kRaisesPlatformFault;
  }
  return last.Connects() ? 0 : 2;
}

int StatusOfTrimmed(const SmmModel& smm, std::uint8_t command, const Bytes& data,
                    std::size_t prefix, std::size_t minimumLength) {
  ExchangeCursor cursor(smm);
  if (const int status = cursor.Next(0x32, command, data); status != 0) {
    return status;
  }
  const std::size_t removed = smm.IsSecondGeneration() ? prefix : 0;
  if (cursor.last.response.size() < removed) {
    return kRaisesBadAlloc;
  }
  return cursor.IsGood(removed + minimumLength) ? 0 : 3;
}

int StatusOfNodeQuery(const SmmModel& smm, std::uint8_t command, unsigned long node,
                      std::size_t fewest, std::size_t most) {
  ExchangeCursor cursor(smm);
  if (node == 0 || node > smm.nodeCount) {
    return 3;
  }
  if (const int status = cursor.Next(0x32, command, {LowByte(node)}); status != 0) {
    return status;
  }
  return cursor.IsGood(fewest) && cursor.last.response.size() <= most ? 0 : 3;
}

int StatusOfRepeated(const SmmModel& smm, std::uint8_t command, const Bytes& data, Exchange& last) {
  ExchangeCursor cursor(smm);
  cursor.last.completionCode = 0;
  std::size_t pauses = 0;
  int status = 0;
  for (; pauses < 6; ++pauses) {
    status = cursor.Next(0x32, command, data);
    const bool isAcknowledged = cursor.last.response.size() == 1 && cursor.IsGood(1);
    if (status == kRaisesPlatformFault || isAcknowledged) {
      break;
    }
  }
  Require(Double::ThePlatform().pauses == std::vector<unsigned int>(pauses, 3),
          "a pause of three seconds follows each attempt in vain");
  last = cursor.last;
  return status == kRaisesPlatformFault ? status : 0;
}

int StatusOfStatusRead(const SmmModel& smm, SMMStatus& status) {
  Exchange last;
  if (StatusOfRepeated(smm, 0xA8, {}, last) == kRaisesPlatformFault) {
    return kRaisesPlatformFault;
  }
  if (last.response.size() >= 14) {
    const bool is253 = last.response[0] == 0xFD;
    status.platformId = is253 ? 253 : 254;
    status.psuSlotCount = !is253 ? 2 : last.response[13] == 0x03 ? 9 : 6;
  }
  return last.completionCode == 0 && !last.response.empty() ? 0 : 4;
}

Bytes SelectionData(const SmmModel& smm, int psu) {
  const auto low = static_cast<std::uint8_t>(psu);
  if (!smm.IsSecondGeneration()) {
    return {0x00, psu > 3 ? std::uint8_t{3} : low};
  }
  const int largest = smm.status.platformId == 253 ? 9 : 2;
  return psu <= largest ? Bytes{0x00, low} : Bytes{0x00};
}

int StatusOfFans(const SmmModel& smm, std::set<std::uint64_t>& slots) {
  ExchangeCursor cursor(smm);
  for (std::uint64_t slot = 1; slot <= smm.psuSlotCount; ++slot) {
    if (const int status = cursor.Next(0x32, 0xA5, {LowByte(slot)}); status != 0) {
      return status;
    }
    if (cursor.IsGood(smm.IsSecondGeneration() ? 8 : 4)) {
      slots.insert(slot);
    }
  }
  return 0;
}

int StatusOfVersions(const SmmModel& smm, ExchangeCursor& cursor, std::set<std::uint64_t>& slots) {
  return StatusOfRegister(smm, cursor, 2, 0xFC, 2, slots);
}

int StatusOfManufacturers(const SmmModel& smm, ExchangeCursor& cursor,
                          std::set<std::uint64_t>& slots) {
  if (smm.psuSlotCount == 0) {
    return 4;
  }
  const int status = StatusOfRegister(smm, cursor, 5, 0x99, 5, slots);
  if (smm.smmType == 0 || smm.smmType == 1) {
    return status;
  }
  const bool lastWasGood = slots.count(smm.psuSlotCount) == 1;
  slots.clear();
  return status == 0 && lastWasGood ? 4 : status;
}

int StatusOfPositions(const SmmModel& smm, ExchangeCursor& cursor, std::set<std::uint64_t>& slots) {
  return StatusOfRegister(smm, cursor, 32, 0xF0, 2, slots);
}

int StatusOfFirmware(const SmmModel& smm, std::set<std::uint64_t>& slots) {
  ExchangeCursor cursor(smm);
  std::set<std::uint64_t> versions;
  std::set<std::uint64_t> manufacturers;
  std::set<std::uint64_t> positions;
  int status = StatusOfVersions(smm, cursor, versions);
  if (status == 0) {
    status = StatusOfManufacturers(smm, cursor, manufacturers);
  }
  if (status == 0) {
    status = StatusOfPositions(smm, cursor, positions);
  }
  for (const std::uint64_t slot : positions) {
    if (versions.count(slot) == 1 && manufacturers.count(slot) == 1) {
      slots.insert(slot);
    }
  }
  return status;
}

}  // namespace Tavrin::Fuzz
