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
  return {Good<Value<SMMIype>>({SMM_SECOND_GENERATION, "", Absence::None}),
          Good(ReportedNumber(254)), Good(ReportedNumber(2)), Good(ReportedNumber(4))};
}

Identity ExampleIdentity() {
  return {Good(ReportedText("1234")), Good(ReportedText("J1 23")), Good(ReportedText("ABC-1a.05")),
          Good(ReportedText(""))};
}

PowerReadings PowerOf(std::int64_t lowest) {
  return {ReportedNumber(lowest), ReportedNumber(lowest + 10), ReportedNumber(lowest + 20)};
}

std::vector<Query<NodeState>> ExampleNodes() {
  return {
      Good(NodeState{ReportedState(NodePowerState::On, "Power ON"),
                     ReportedState(NodeWidth::Half, "Half"), ReportedNumber(1), ReportedNumber(0)}),
      Good(NodeState{ReportedState(NodePowerState::Off, "Power OFF"),
                     ReportedState(NodeWidth::Full, "Full"), ReportedNumber(2),
                     ReportedNumber(17)}),
      Good(NodeState{ReportedState(NodePowerState::NoPermission, "No Permission"),
                     ReportedState(NodeWidth::Other, "3"), NotReported(), ReportedNumber(255)}),
      Good(NodeState{ReportedState(NodePowerState::PowerFault, "Power Fault"),
                     AbsentValue<NodeWidth>(Absence::NotReported, "N/A"), ReportedNumber(4),
                     ReportedNumber(19)})};
}

std::vector<PsuFans> ExampleFans() {
  const Number noFan = AbsentValue<std::int64_t>(Absence::NoSecondFan);
  return {{1, ReportedText("PSU1"), ReportedNumber(1000), NotReported(), noFan, noFan,
           ReportedState(PsuFanState::Abnormal, "Abnormal")},
          {2, ReportedText("PSU2"), ReportedNumber(10'000), ReportedNumber(50), NotReported(),
           ReportedNumber(7), ReportedState(PsuFanState::Normal, "Normal")}};
}

/// Four manufacturer bytes that are no text in any encoding, the last one of them printable.
std::vector<PsuFirmware> ExampleFirmware() {
  using std::string_literals::operator""s;
  return {{1, ReportedText("PSU1"), ReportedText("PSU\xff\0\x1b"s + "Da.01"), ReportedText("1.0a"),
           ReportedText("Power Supply 1")},
          {2, ReportedText("PSU2"), ReportedText("PSUPAS2b.02"), ReportedText("2.09"),
           ReportedText("Power Supply 2")}};
}

}  // namespace

Number ReportedNumber(std::int64_t number) {
  return {number, std::to_string(number), Absence::None};
}

Text ReportedText(const std::string& text) { return {text, text, Absence::None}; }

Number NotReported() { return AbsentValue<std::int64_t>(Absence::NotReported, "N/A"); }

PsuFlags FlagsOf(std::size_t slot, bool flag) {
  const std::string trigger = flag ? "trigger" : "not trigger";
  return {slot, ReportedState(flag, trigger),
          ReportedState(!flag, flag ? "not trigger" : "trigger"),
          ReportedState(flag, flag ? "present" : "not present"),
          ReportedState(flag, flag ? "power good" : "not power good")};
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
  reading.chassisPower =
      Good(PowerReadings{ReportedNumber(0), ReportedNumber(350), ReportedNumber(65'535)});
  reading.powerCaps = Good(PowerCaps{ReportedNumber(1), ReportedNumber(2), NotReported(),
                                     ReportedNumber(4), ReportedNumber(5)});
  reading.nodeStatus = ExampleNodes();
  reading.nodePower = {Good(PowerOf(120)), Good(PowerOf(200)), Good(PowerOf(300)),
                       Good(PowerReadings{NotReported(), NotReported(), ReportedNumber(410)})};
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
