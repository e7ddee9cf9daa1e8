#include "simulator/EnclosureChanges.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Tavrin::Simulator {
namespace {

constexpr unsigned int kMaxByte = std::numeric_limits<std::uint8_t>::max();
constexpr unsigned int kMaxWord = std::numeric_limits<std::uint16_t>::max();
/// From 253 on, a first-generation status could be taken for a second-generation one.
constexpr unsigned int kMaxRevisionOfFirstGeneration = 252;

/// A key of an object, and what becomes of its value.
struct Field {
  std::string key;
  std::function<void(const ScenarioValue&)> read;
};
using Fields = std::vector<Field>;

/// The fields are read in the order of the list, not of the text.
void ReadObject(const ScenarioValue& object, const Fields& fields) {
  std::vector<std::string> keys;
  for (const Field& field : fields) {
    keys.push_back(field.key);
  }
  object.CheckKeys(keys);
  for (const Field& field : fields) {
    if (const auto value = object.Find(field.key)) {
      field.read(*value);
    }
  }
}

Field ObjectField(const std::string& key, Fields fields) {
  return {key,
          [fields = std::move(fields)](const ScenarioValue& value) { ReadObject(value, fields); }};
}

Field WordField(const std::string& key, std::uint16_t& target) {
  return {key, [&target](const ScenarioValue& value) {
            target = static_cast<std::uint16_t>(value.Number(0, kMaxWord));
          }};
}

Field ByteField(const std::string& key, std::uint8_t& target, unsigned int largest = kMaxByte) {
  return {key, [&target, largest](const ScenarioValue& value) {
            target = static_cast<std::uint8_t>(value.Number(0, largest));
          }};
}

Field TruthField(const std::string& key, bool& target) {
  return {key, [&target](const ScenarioValue& value) { target = value.Truth(); }};
}

Field TextField(const std::string& key, std::string& target, std::size_t longest) {
  return {key, [&target, longest](const ScenarioValue& value) { target = value.Text(longest); }};
}

using Words = std::vector<std::pair<const char*, std::uint8_t>>;

/// A code: one of the words, or any byte.
std::uint8_t ReadCode(const ScenarioValue& value, const Words& words) {
  std::string list;
  for (const auto& [word, code] : words) {
    if (value.Is(word)) {
      return code;
    }
    list += (list.empty() ? "" : ", ") + std::string(word);
  }
  return value.Byte("one of " + list);
}

/// The keys "1", "2" and so on, and "all", which is read before them.
template <typename Element>
Field NumberedField(const std::string& key, std::vector<Element>& elements,
                    Fields (*fieldsOf)(Element&)) {
  Fields numbers = {{"all", [&elements, fieldsOf](const ScenarioValue& value) {
                       for (Element& element : elements) {
                         ReadObject(value, fieldsOf(element));
                       }
                     }}};
  for (Element& element : elements) {
    numbers.push_back(ObjectField(std::to_string(numbers.size()), fieldsOf(element)));
  }
  return ObjectField(key, std::move(numbers));
}

Fields PowerFields(PowerReadings& power) {
  return {WordField("min", power.minimum), WordField("avg", power.average),
          WordField("max", power.maximum)};
}

Fields CapFields(PowerCaps& caps) {
  return {WordField("min", caps.minimum), WordField("max", caps.maximum),
          WordField("protective", caps.protective), WordField("user", caps.user),
          WordField("thermal", caps.thermal)};
}

void ReadPowerState(const ScenarioValue& value, Node& node) {
  node.powerState = ReadCode(value, {{"on", PowerState::kOn},
                                     {"off", PowerState::kOff},
                                     {"fault", PowerState::kFault},
                                     {"no-permission", PowerState::kNoPermission}});
  if (node.powerState == PowerState::kOff) {
    node.power = {};
  }
}

/// The power state comes first, so that a node can be off and still be given readings.
Fields NodeFields(Node& node) {
  return {{"powerState", [&node](const ScenarioValue& value) { ReadPowerState(value, node); }},
          ObjectField("power", PowerFields(node.power)),
          ByteField("width", node.width),
          ByteField("height", node.height),
          ByteField("permission", node.permission)};
}

void ReadPresence(const ScenarioValue& value, Psu& psu) {
  psu.present = value.Truth();
  if (!psu.present) {
    psu.fanA = {};
    psu.fanB = {};
    psu.fanStatus = FanStatus::kNotPresent;
    psu.powerGood = false;
  }
}

void ReadManufacturer(const ScenarioValue& value, Psu& psu) {
  const Bytes bytes = value.ByteList();
  if (bytes.size() != psu.manufacturer.size()) {
    value.Fail(std::to_string(bytes.size()) + " bytes long",
               std::to_string(psu.manufacturer.size()));
  }
  std::copy(bytes.begin(), bytes.end(), psu.manufacturer.begin());
}

Fields FanFields(Fan& fan) { return {WordField("speed", fan.speed), ByteField("pat", fan.pat)}; }

/// The presence comes first, so that a slot can be empty and still be given readings.
Fields PsuFields(Psu& psu) {
  const Words fanStates = {{"not-present", FanStatus::kNotPresent},
                           {"abnormal", FanStatus::kAbnormal},
                           {"normal", FanStatus::kNormal}};
  return {{"present", [&psu](const ScenarioValue& value) { ReadPresence(value, psu); }},
          TruthField("powerGood", psu.powerGood),
          TruthField("earlyPowerOffWarning", psu.earlyPowerOffWarning),
          TruthField("throttle", psu.throttle),
          {"fanStatus",
           [&psu, fanStates](const ScenarioValue& value) {
             psu.fanStatus = ReadCode(value, fanStates);
           }},
          ObjectField("fanA", FanFields(psu.fanA)),
          ObjectField("fanB", FanFields(psu.fanB)),
          ObjectField("version", {ByteField("major", psu.version.major),
                                  ByteField("minor", psu.version.minor)}),
          {"manufacturer", [&psu](const ScenarioValue& value) { ReadManufacturer(value, psu); }},
          ObjectField("position", {ByteField("first", psu.position.first),
                                   ByteField("second", psu.position.second)})};
}

}  // namespace

void ChangeEnclosure(const ScenarioValue& changes, EnclosureState& enclosure) {
  const unsigned int maxMajor =
      enclosure.secondGeneration ? kMaxByte : kMaxRevisionOfFirstGeneration;
  ReadObject(changes, {TextField("machineType", enclosure.machineType, kMaxMachineType),
                       TextField("serialNumber", enclosure.serialNumber, kMaxSerialNumber),
                       TextField("name", enclosure.name, kMaxName),
                       TextField("buildName", enclosure.buildName, kMaxBuildName),
                       ByteField("majorRevision", enclosure.majorRevision, maxMajor),
                       ByteField("minorRevision", enclosure.minorRevision),
                       ObjectField("power", PowerFields(enclosure.power)),
                       ObjectField("caps", CapFields(enclosure.caps)),
                       NumberedField("nodes", enclosure.nodes, NodeFields),
                       NumberedField("psus", enclosure.psus, PsuFields)});
}

}  // namespace Tavrin::Simulator
