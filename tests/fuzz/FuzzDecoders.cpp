// Every decoder on the same bytes. The first byte of the input counts the calls of the byte reader,
// which follow one byte each; the rest is the answer.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/impl/ByteReader.h"
#include "module/smm/smm_inventory/impl/ByteText.h"
#include "module/smm/smm_inventory/impl/NodeStatus.h"
#include "module/smm/smm_inventory/impl/Power.h"
#include "module/smm/smm_inventory/impl/PsuFan.h"
#include "module/smm/smm_inventory/impl/PsuFirmware.h"
#include "module/smm/smm_inventory/impl/PsuStatus.h"
#include "module/smm/smm_inventory/impl/SmmIdentity.h"
#include "module/smm/smm_inventory/impl/SmmStatus.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/RecordChecks.h"
#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// What a ByteReader is to do, in the plainest way.
class ReaderModel {
 public:
  explicit ReaderModel(const Bytes& answer) : left_(answer) {}

  Bytes Take(std::size_t count) {
    failed = failed || count > left_.size();
    if (failed) {
      return {};
    }
    const auto end = left_.begin() + static_cast<std::ptrdiff_t>(count);
    const Bytes taken(left_.begin(), end);
    left_.erase(left_.begin(), end);
    return taken;
  }

  std::string PrintableRun() {
    std::string run;
    while (!failed && !left_.empty() && left_[0] >= ' ' && left_[0] <= '~') {
      run += static_cast<char>(Take(1)[0]);
    }
    return run;
  }

  bool failed = false;

 private:
  Bytes left_;
};

std::string Characters(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

std::uint32_t Number(const Bytes& bytes) {
  std::uint32_t number = 0;
  for (std::size_t index = bytes.size(); index > 0; --index) {
    number = number * 256 + bytes[index - 1];
  }
  return number;
}

/// The upper half of `call` is the count, the lower half says which function.
void CallReader(std::uint8_t call, ByteReader& reader, ReaderModel& model) {
  const std::size_t count = call / 16;
  switch (call % 5) {
    case 0:
      Require(reader.Byte() == Number(model.Take(1)), "Byte() yields the next byte");
      break;
    case 1:
      Require(reader.LittleEndian16() == Number(model.Take(2)),
              "LittleEndian16() yields the next two bytes");
      break;
    case 2:
      Require(reader.Characters(count) == Characters(model.Take(count)),
              "Characters() yields the next bytes");
      break;
    case 3:
      Require(reader.PrintableRun() == model.PrintableRun(),
              "PrintableRun() ends at the first byte that is not printable");
      break;
    default:
      reader.Skip(count);
      model.Take(count);
  }
  Require(reader.Failed() == model.failed, "a failure is told and lasts");
}

void CheckReader(const Bytes& calls, const Bytes& answer) {
  ByteReader reader(answer);
  ReaderModel model(answer);
  for (const std::uint8_t call : calls) {
    CallReader(call, reader, model);
  }
}

/// Byte `index` of the answer as a number; that of an answer long enough.
std::string ByteTextAt(const Bytes& answer, std::size_t index) {
  return std::to_string(answer.at(index));
}

std::string PairTextAt(const Bytes& answer, std::size_t index) {
  return std::to_string(answer.at(index) + 256 * answer.at(index + 1));
}

void CheckTexts(const Bytes& answer) {
  const std::string raw = RawRendering(answer);
  Require(raw.size() == 2 * answer.size(), "the raw rendering has two characters a byte");
  for (std::size_t index = 0; index < answer.size(); ++index) {
    Require(static_cast<std::uint8_t>(raw[2 * index]) == answer[index] && raw[2 * index + 1] == ' ',
            "the raw rendering holds each byte and a blank");
  }

  const std::string hex = HexRendering(answer);
  std::size_t position = 0;
  for (const std::uint8_t byte : answer) {
    std::size_t used = 0;
    Require(std::stoul(hex.substr(position), &used, 16) == byte && hex.at(position + used) == ' ',
            "the hex rendering holds each byte and a blank");
    position += used + 1;
  }
  Require(position == hex.size(), "the hex rendering holds nothing else");
}

void CheckIdentity(const Bytes& answer) {
  const std::string machineType = DecodeMachineType(answer);
  Require(machineType.size() == (answer.size() < kMachineTypeLength ? 0 : kMachineTypeLength),
          "a machine type has four characters, or none");
  Require(!IsAlphanumeric(machineType) || IsPrintable(machineType),
          "letters and digits are printable");

  const std::string name = DecodeName(answer);
  Require(IsPrintable(name), "a name is printable");
  Require(name.size() == answer.size() || answer[name.size()] < ' ' || answer[name.size()] > '~',
          "a name ends only where printable bytes end");

  const std::string serialNumber = DecodeSerialNumber(answer);
  Require(name.find(serialNumber) != std::string::npos &&
              (serialNumber.empty() || (serialNumber.front() != ' ' && serialNumber.back() != ' ')),
          "a serial number is the same without outer blanks");
  Require(IsSmmVersion(DecodeVersion(answer)), "a version is printable and ends in two numbers");
}

void CheckPower(const Bytes& answer) {
  const ChassisPowerCon power = DecodePower(answer);
  CheckChassisPower(power);
  CheckNodePower(WithoutAbsentReadings(power));
  Require(PowerText(power).rfind("Min:" + power.minPower, 0) == 0, "the power line has its labels");
  if (answer.size() >= kPowerLength) {
    Require(power.minPower == PairTextAt(answer, 0) && power.avgPower == PairTextAt(answer, 2) &&
                power.maxPower == PairTextAt(answer, 4),
            "power readings are pairs of bytes, low byte first");
  }

  const ChassisPowerCap cap = DecodePowerCap(answer);
  CheckPowerCap(WithoutAbsentCaps(cap));
  Require(PowerCapText(cap).rfind("Min:" + cap.minCap, 0) == 0, "the cap line has its labels");
  if (answer.size() >= kPowerCapLength) {
    Require(cap.minCap == PairTextAt(answer, 0) && cap.maxCap == PairTextAt(answer, 2) &&
                cap.protectiveCap == PairTextAt(answer, 4) &&
                cap.userCap == PairTextAt(answer, 6) && cap.thermalCap == PairTextAt(answer, 8),
            "power caps are pairs of bytes, low byte first");
  }
}

void CheckPsuFans(const Bytes& answer) {
  const PSUFanSpeed fans = DecodeSecondGenerationFans("PSU1", answer);
  CheckFans(WithoutAbsentFans(fans), 1, true);
  Require(SecondGenerationFansText(fans).rfind("PSU:PSU1", 0) == 0, "the fan line has its labels");
  if (answer.size() >= kSecondGenerationFanLength) {
    Require(fans.speedA == PairTextAt(answer, 1) && fans.patA == ByteTextAt(answer, 3) &&
                fans.speedB == PairTextAt(answer, 4) && fans.patB == ByteTextAt(answer, 6),
            "second-generation fans start at byte 1");
  }

  const PSUFanSpeed fan = DecodeFirstGenerationFan("PSU2", answer);
  CheckFans(WithoutAbsentFans(fan), 2, false);
  Require(FirstGenerationFanText(fan).rfind("PSU:PSU2", 0) == 0, "the fan line has its labels");
  if (answer.size() >= kFirstGenerationFanLength) {
    Require(fan.speedA == PairTextAt(answer, 0) && fan.patA == ByteTextAt(answer, 2),
            "the first-generation fan starts at byte 0");
  }
}

void CheckPsuFirmware(const Bytes& answer) {
  const std::string version = DecodePsuVersion(answer);
  const std::string position = DecodePsuPosition(answer);
  Require(IsDottedHex(version) && IsDottedHex(position), "version and position are number pairs");

  const std::string first = DecodeFirstGenerationPsuManufacturer(answer);
  const std::string second = DecodeSecondGenerationPsuManufacturer(answer);
  Require(first.size() == (answer.size() < kPsuManufacturerMinimumLength ? 0 : 4),
          "a first-generation manufacturer has four bytes, or none");
  Require(second.size() == (answer.size() < 4 ? 0 : 4),
          "a second-generation manufacturer has four bytes, or none");
  if (answer.size() >= kPsuManufacturerMinimumLength) {
    const PSUFwInfo firmware = ToPsuFwInfo(9, version, first, position);
    CheckFirmware(firmware, 9);
    Require(PsuFwInfoText(firmware).rfind("Power Supply 9 PSU9 9 ", 0) == 0,
            "the firmware line shows the record");
  }
}

void CheckPsuFlags(const Bytes& answer) {
  for (const PsuStatusFlags& flags :
       {DecodeFirstGenerationPsuStatus(answer), DecodeSecondGenerationPsuStatus(answer)}) {
    for (const std::uint64_t index : {0U, 1U, 7U, 8U, 31U, 32U, 39U}) {
      const PSUStatus status = ToPsuStatus(flags, index);
      CheckPsuStatus(status);
      const bool isSet = index % 32 < 8 && (flags.epow >> (index % 32)) % 2 == 1;
      Require((status.epow == "trigger") == isSet, "one bit a PSU, from bit 0 on");
    }
    Require(PsuStatusFlagsText(flags, 0).empty(), "no PSU has no row");
    Require(PsuStatusFlagsText(flags, 9).find("PSU9:") != std::string::npos, "each PSU has rows");
  }
}

void CheckStatuses(const Bytes& answer) {
  const NodeStatusCodes codes = DecodeNodeStatus(answer);
  const NodeStatus status = ToNodeStatus(codes);
  CheckNodeStatus(status);
  Require(status.permissionState == codes.permissionState, "the permission byte is handed on");
  Require(NodeStatusCodesText(codes).rfind("\nNode Power State ", 0) == 0,
          "the node's rows have their labels");

  if (answer.size() >= kSmmStatusMinimumLength) {
    const SmmStatusAnswer decoded = DecodeSmmStatus(answer);
    const SMMStatus smmStatus = ToSmmStatus(decoded);
    CheckSmmStatus(smmStatus);
    Require(!IsEgs(decoded) || smmStatus.psuSlotCount == 6, "an EGS enclosure has six PSU slots");
    Require(NodeCountOf(smmStatus.platformId) == (answer[0] == 0xFD ? 12U : 4U),
            "platform 253 has twelve nodes, every other four");
  }
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace Tavrin::Fuzz;
  FuzzInput input(bytes, size);
  const Bytes calls = input.Bytes(input.Byte() % 16);
  const Bytes answer = input.Rest();
  CheckReader(calls, answer);
  CheckTexts(answer);
  CheckIdentity(answer);
  CheckPower(answer);
  CheckPsuFans(answer);
  CheckPsuFirmware(answer);
  CheckPsuFlags(answer);
  CheckStatuses(answer);
  return 0;
}
