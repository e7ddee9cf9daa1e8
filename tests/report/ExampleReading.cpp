#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;

Reading EmptyReading() {
  Reading reading;
  reading.address = "smm1:623";
  reading.readAt = std::chrono::system_clock::time_point(milliseconds(1'795'285'445'678));
  reading.duration = milliseconds(21'034);
  return reading;
}

Detection ExampleDetection() {
  return {Good<Value<SMMIype>>({SMM_SECOND_GENERATION, "", Absence::None}), Good(NumberOf(254)),
          Good(NumberOf(2)), Good(NumberOf(4))};
}

Identity ExampleIdentity() {
  return {Good(TextOf("1234")), Good(TextOf("J1 23")), Good(TextOf("ABC-1a.05")), Good(TextOf(""))};
}

PowerReadings PowerOf(std::int64_t lowest) {
  return {NumberOf(lowest), NumberOf(lowest + 10), NumberOf(lowest + 20)};
}

std::vector<Query<NodeState>> ExampleNodes() {
  return {Good(NodeState{StateOf(NodePowerState::On, "Power ON"), StateOf(NodeWidth::Half, "Half"),
                         NumberOf(1), NumberOf(0)}),
          Good(NodeState{StateOf(NodePowerState::Off, "Power OFF"),
                         StateOf(NodeWidth::Full, "Full"), NumberOf(2), NumberOf(17)}),
          Good(NodeState{StateOf(NodePowerState::NoPermission, "No Permission"),
                         StateOf(NodeWidth::Other, "3"), NotReported(), NumberOf(255)}),
          Good(NodeState{StateOf(NodePowerState::PowerFault, "Power Fault"),
                         AbsentValue<NodeWidth>(Absence::NotReported, "N/A"), NumberOf(4),
                         NumberOf(19)})};
}

std::vector<PsuFans> ExampleFans() {
  const Number noFan = AbsentValue<std::int64_t>(Absence::NoSecondFan);
  return {{1, TextOf("PSU1"), NumberOf(1000), NotReported(), noFan, noFan,
           StateOf(PsuFanState::Abnormal, "Abnormal")},
          {2, TextOf("PSU2"), NumberOf(10'000), NumberOf(50), NotReported(), NumberOf(7),
           StateOf(PsuFanState::Normal, "Normal")}};
}

/// Four manufacturer bytes that are no text in any encoding, the last one of them printable.
std::vector<PsuFirmware> ExampleFirmware() {
  using std::string_literals::operator""s;
  return {{1, TextOf("PSU1"), TextOf("PSU\xff\0\x1b"s + "Da.01"), TextOf("1.0a"),
           TextOf("Power Supply 1")},
          {2, TextOf("PSU2"), TextOf("PSUPAS2b.02"), TextOf("2.09"), TextOf("Power Supply 2")}};
}

}  // namespace

Number NumberOf(std::int64_t number) { return {number, std::to_string(number), Absence::None}; }

Text TextOf(const std::string& text) { return {text, text, Absence::None}; }

Number NotReported() { return AbsentValue<std::int64_t>(Absence::NotReported, "N/A"); }

PsuFlags FlagsOf(std::size_t slot, bool flag) {
  const std::string trigger = flag ? "trigger" : "not trigger";
  return {slot, StateOf(flag, trigger), StateOf(!flag, flag ? "not trigger" : "trigger"),
          StateOf(flag, flag ? "present" : "not present"),
          StateOf(flag, flag ? "power good" : "not power good")};
}

PsuFlags UntoldFlags(std::size_t slot) {
  const auto untold = [](const char* text) {
    return AbsentValue<bool>(Absence::FlagsNotTold, text);
  };
  return {slot, untold("not trigger"), untold("not trigger"), untold("not present"),
          untold("not power good")};
}

QueryOutcome SucceededOutcome() {
  QueryOutcome outcome;
  outcome.duration = milliseconds(5);
  return outcome;
}

QueryOutcome RefusedOutcome() {
  QueryOutcome outcome;
  outcome.status = StatusCode::UnusableAnswer;
  outcome.cause.words = "its answer is empty";
  outcome.duration = milliseconds(6);
  return outcome;
}

QueryOutcome DisconnectedOutcome() {
  QueryOutcome outcome;
  outcome.status = StatusCode::NotConnected;
  outcome.cause = {"no answer", Standalone::FailureCause::Silence, 0, ""};
  outcome.duration = milliseconds(7);
  return outcome;
}

Reading ExampleReading() {
  Reading reading = EmptyReading();
  reading.detection = ExampleDetection();
  reading.identity = ExampleIdentity();
  reading.chassisPower = Good(PowerReadings{NumberOf(0), NumberOf(350), NumberOf(65'535)});
  reading.powerCaps =
      Good(PowerCaps{NumberOf(1), NumberOf(2), NotReported(), NumberOf(4), NumberOf(5)});
  reading.nodeStatus = ExampleNodes();
  reading.nodePower = {Good(PowerOf(120)), Good(PowerOf(200)), Good(PowerOf(300)),
                       Good(PowerReadings{NotReported(), NotReported(), NumberOf(410)})};
  reading.psuFans = Good(ExampleFans());
  reading.psuFirmware = Good(ExampleFirmware());
  reading.psuStatus = Good(std::vector<PsuFlags>{FlagsOf(1, true), FlagsOf(2, false)});
  return reading;
}

Reading SelectionReading(const PsuSelection& selection, const QueryOutcome& outcome) {
  Reading reading = EmptyReading();
  reading.detection = ExampleDetection();
  reading.psuSelection = {outcome, selection};
  return reading;
}

Reading LostReading() {
  Reading reading = EmptyReading();
  reading.detection = {Good<Value<SMMIype>>({SMM_SECOND_GENERATION, "", Absence::None}),
                       Disconnected<Number>(), Disconnected<Number>(), Disconnected<Number>()};
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

}  // namespace Tavrin
