#include "tests/report/ExampleReading.h"

#include <chrono>
#include <vector>

namespace Tavrin {
namespace {

using Standalone::FailureCause;
using std::chrono::milliseconds;

Reading EmptyReading() {
  Reading reading;
  reading.address = "smm1:623";
  reading.readAt = std::chrono::system_clock::time_point(milliseconds(1'795'285'445'678));
  reading.duration = milliseconds(21'034);
  return reading;
}

}  // namespace

QueryOutcome SucceededOutcome() { return {StatusCode::Success, {}, {}, milliseconds(5)}; }

QueryOutcome RefusedOutcome() {
  const Cause cause = {"its answer is empty", FailureCause::None, 0, {}};
  return {StatusCode::UnusableAnswer, cause, {}, milliseconds(6)};
}

QueryOutcome DisconnectedOutcome() {
  const Cause cause = {"no answer", FailureCause::Silence, 0, {}};
  return {StatusCode::NotConnected, cause, {}, milliseconds(7)};
}

SlotQuery<PsuFlags> ExampleFlags(std::size_t slotCount) {
  std::vector<PSUStatus> records(slotCount,
                                 {"not trigger", "trigger", "not present", "not power good"});
  records.front() = {"trigger", "not trigger", "present", "power good"};
  return Good(DecodeFlags(records));
}

Reading ExampleReading() {
  using std::string_literals::operator""s;
  Reading reading = EmptyReading();
  reading.detection = {Good(GenerationOf(SMM_SECOND_GENERATION)), Good(NumberOf(254)),
                       Good(NumberOf(2)), Good(NumberOf(4))};
  reading.identity = {Good(TextOf("1234")), Good(TextOf("J1 23")), Good(TextOf("ABC-1a.05")),
                      Good(TextOf(""))};
  reading.chassisPower = Good(DecodePower({"0", "350", "65535"}));
  reading.powerCaps = Good(DecodeCaps({"1", "2", "N/A", "4", "5"}));
  reading.nodeStatus = {Good(DecodeNode({"Power ON", "Half", "1", 0})),
                        Good(DecodeNode({"Power OFF", "Full", "2", 17})),
                        Good(DecodeNode({"No Permission", "3", "N/A", 255})),
                        Good(DecodeNode({"Power Fault", "N/A", "4", 19}))};
  reading.nodePower = {
      Good(DecodePower({"120", "130", "140"})), Good(DecodePower({"200", "210", "220"})),
      Good(DecodePower({"300", "310", "320"})), Good(DecodePower({"N/A", "N/A", "410"}))};
  reading.psuFans = Good(DecodeFans(
      {{"PSU1", "1000", "N/A", "", "", "Abnormal"}, {"PSU2", "10000", "50", "N/A", "7", "Normal"}},
      2, Absence::SlotUnanswered));
  // The manufacturer is four bytes that are no text in any encoding, the last of them printable.
  reading.psuFirmware =
      Good(DecodeFirmware({{"PSU1", "PSU\xff\0\x1b"s + "Da.01", "1.0a", "1", "Power Supply 1"},
                           {"PSU2", "PSUPAS2b.02", "2.09", "2", "Power Supply 2"}},
                          2, Absence::SlotUnanswered));
  reading.psuStatus = ExampleFlags(2);
  return reading;
}

Reading LostReading() {
  Reading reading = EmptyReading();
  reading.detection = {ExampleReading().detection->generation, Disconnected<Number>(),
                       Disconnected<Number>(), Disconnected<Number>()};
  reading.identity = {Disconnected<Text>(), Disconnected<Text>(), Disconnected<Text>(),
                      Disconnected<Text>()};
  reading.nodePower = {Disconnected<PowerReadings>(), Disconnected<PowerReadings>()};
  reading.psuFans = Disconnected<std::vector<PsuFans>>();
  return reading;
}

Reading FailedReading() {
  Reading reading = EmptyReading();
  reading.failure = DisconnectedOutcome();
  return reading;
}

Reading SelectionReading(const PsuSelection& selection, const QueryOutcome& outcome) {
  Reading reading = EmptyReading();
  reading.detection = ExampleReading().detection;
  reading.psuSelection = {outcome, selection};
  return reading;
}

}  // namespace Tavrin
