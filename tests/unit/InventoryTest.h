#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <locale>
#include <string>
#include <utility>
#include <vector>

#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"
#include "tests/doubles/Operations.h"
#include "tests/unit/PlatformTest.h"

namespace Tavrin::Double {

/// The implementation under the names of the facade.
class Implementation : public SMMInventoryImpl {
 public:
  using SMMInventoryImpl::SMMInventoryImpl;
  int SelectPSU(int psu) { return SelectPSUImpl(psu); }
  int GetSMMStatus(SMMStatus& status) { return GetSMMStatusImp(status); }
};

/// Counts of PSU slots: those that occur, and others up to more than a number of 32 bits has bits.
constexpr std::array<std::uint8_t, 7> kSlotCounts = {0, 1, 2, 6, 9, 33, 40};

/// Stands for the status of an operation that raises std::bad_alloc instead of returning one.
constexpr int kRaisesBadAlloc = -1;

/// What an operation returned, and what its output held afterwards, as one text.
using Outcome = std::pair<int, std::string>;

/// The outcomes of all answers of some lengths, from an SMM of this type.
struct LengthRow {
  std::int32_t smmType = 0;
  std::size_t shortest = 0;
  std::size_t longest = 0;
  Outcome ofCode0;
  Outcome ofOtherCodes;

  LengthRow Lengths(std::size_t from, std::size_t to) const {
    return {smmType, from, to, ofCode0, ofOtherCodes};
  }
  LengthRow WithCode0(const Outcome& outcome) const {
    return {smmType, shortest, longest, outcome, ofOtherCodes};
  }
  LengthRow WithOtherCodes(const Outcome& outcome) const {
    return {smmType, shortest, longest, ofCode0, outcome};
  }
  LengthRow Always(const Outcome& outcome) const {
    return WithCode0(outcome).WithOtherCodes(outcome);
  }
};

/// Begins a row: OfSmmType(1).Lengths(6, 8).WithCode0(...).WithOtherCodes(...), or .Always(...).
inline LengthRow OfSmmType(std::int32_t smmType) { return {smmType, 0, 0, {}, {}}; }

/// The lines of a sent request and its answer; `request` is the text behind "suceess: ".
std::vector<Line> ExchangeLines(const std::string& request, const Bytes& response);

/// The lines of a second-generation answer that lost its leading bytes.
std::vector<Line> TrimLines(const Bytes& shortened);

std::vector<Line> operator+(std::vector<Line> first, const std::vector<Line>& second);

/// While it lives, the global locale puts a dot behind each number.
class DottedNumbers {
 public:
  DottedNumbers();
  ~DottedNumbers() { std::locale::global(before_); }
  DottedNumbers(const DottedNumbers&) = delete;
  DottedNumbers& operator=(const DottedNumbers&) = delete;

 private:
  std::locale before_;
};

/// A test of queries: the inventory object is there, of the first generation, with 2 PSU slots and
/// 4 nodes, and what its construction wrote and sent is forgotten. Tests change its members as the
/// SMM that they speak of requires.
class InventoryTest : public PlatformTest {
 protected:
  InventoryTest() : inventory(Construct()) { platform.ForgetWhatHappened(); }

  /// Plays an answer of every length that the rows speak of, which is the beginning of `answer`,
  /// with completion codes 0, 0xC1 and 0xFF. `run` hands one to the operation and returns its
  /// status. The rows of each SMM type must run from length 0 to the whole answer, in order.
  void ExpectOutcomes(const std::vector<LengthRow>& rows, const Bytes& answer,
                      const std::function<int(const Bytes&, std::uint8_t)>& run,
                      const std::function<std::string()>& describeOutput);

  /// Expects that the operation hands on the status of an exchange that was not admitted, then that
  /// of one that did not connect, and that it writes no line of its own.
  void ExpectExchangeStatusesHandedOn(const std::function<int()>& operation);

  /// Calls the operation with an output marked as Marked() does. Returns its status, and what the
  /// output holds afterwards, as text.
  std::string Ask(const std::string& operation, int argument);

  Implementation inventory;

 private:
  Implementation Construct() {
    platform.ExpectStatusReads(1, {0x01});
    return Implementation(platform.expectedSettings);
  }
};

}  // namespace Tavrin::Double
