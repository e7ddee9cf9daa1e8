#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin::Fuzz {

// What the queries are to return, said once more in the plainest way, from the conversation that
// they had.

using Double::Bytes;
using Double::Exchange;

/// What a fuzzed platform throws, where a platform library may throw anything.
struct PlatformFault {};

/// What stands for the status of an operation that throws instead of returning one.
constexpr int kRaisesBadAlloc = -1;
constexpr int kRaisesPlatformFault = -2;

/// What is known about the SMM, and its connection.
struct SmmModel {
  bool admitsExchanges = false;
  std::int32_t smmType = 0;
  SMMStatus status{254, 2};
  std::uint64_t psuSlotCount = 2;
  std::uint64_t nodeCount = 4;

  [[nodiscard]] bool IsSecondGeneration() const { return smmType == 1; }
};

/// Takes the exchanges of a conversation one by one; at the end, nothing may be left.
class ExchangeCursor {
 public:
  explicit ExchangeCursor(const SmmModel& smm) : smm_(smm) {}
  ~ExchangeCursor();
  ExchangeCursor(const ExchangeCursor&) = delete;
  ExchangeCursor& operator=(const ExchangeCursor&) = delete;

  /// The status of the next exchange, which must have carried this request; `last` holds it then.
  int Next(std::uint8_t netFn, std::uint8_t command, const Bytes& data);

  [[nodiscard]] bool IsGood(std::size_t minimumLength) const {
    return last.completionCode == 0 && last.response.size() >= minimumLength;
  }

  Exchange last;

 private:
  const SmmModel& smm_;
  std::size_t position_ = 0;
};

/// One exchange, of whose answer a second-generation SMM's first `prefix` bytes are removed.
int StatusOfTrimmed(const SmmModel& smm, std::uint8_t command, const Bytes& data,
                    std::size_t prefix, std::size_t minimumLength);

/// One exchange about a node, whose answer is good with so many bytes.
int StatusOfNodeQuery(const SmmModel& smm, std::uint8_t command, unsigned long node,
                      std::size_t fewest, std::size_t most);

/// Up to six exchanges until one is acknowledged by a single byte. `last` gets the last answer.
/// Returns 0, or that it raises.
int StatusOfRepeated(const SmmModel& smm, std::uint8_t command, const Bytes& data, Exchange& last);

/// The status read; changes `status` as the read would.
int StatusOfStatusRead(const SmmModel& smm, SMMStatus& status);

/// The data of a PSU selection.
Bytes SelectionData(const SmmModel& smm, int psu);

/// The fans of every slot; `slots` gets those that are told of.
int StatusOfFans(const SmmModel& smm, std::set<std::uint64_t>& slots);

/// One of the three registers of every slot; `slots` gets those with a good answer.
int StatusOfVersions(const SmmModel& smm, ExchangeCursor& cursor, std::set<std::uint64_t>& slots);
int StatusOfManufacturers(const SmmModel& smm, ExchangeCursor& cursor,
                          std::set<std::uint64_t>& slots);
int StatusOfPositions(const SmmModel& smm, ExchangeCursor& cursor, std::set<std::uint64_t>& slots);

/// All three, and the slots that gave each.
int StatusOfFirmware(const SmmModel& smm, std::set<std::uint64_t>& slots);

}  // namespace Tavrin::Fuzz
