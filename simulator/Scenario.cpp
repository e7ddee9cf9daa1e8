#include "simulator/Scenario.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>

namespace Tavrin::Simulator {
namespace {

using Json = nlohmann::json;

constexpr unsigned int kMaxDelayMilliseconds = 60000;
constexpr unsigned int kMaxTimes = 1000000;
/// Longer answers do not fit into what ipmi_sim sends.
constexpr std::size_t kMaxAnswerLength = 200;

constexpr const char* kByteExpected = R"(a byte as text, "0x00" to "0xFF")";

/// Where in the scenario a value stands, for error sentences.
struct Place {
  const std::string& source;
  std::string path;

  [[noreturn]] void Fail(const std::string& value, const std::string& expected) const {
    throw ScenarioError(source + ": " + path + " is " + value + "; expected " + expected);
  }
};

/// A value as error sentences show it; long ones are cut. Control bytes come out escaped.
std::string Shown(const Json& value) {
  constexpr std::size_t kMaxShown = 60;
  const std::string text = value.dump(-1, ' ', true, Json::error_handler_t::replace);
  return text.size() <= kMaxShown ? text : text.substr(0, kMaxShown) + "...";
}

bool IsHexDigit(char character) {
  return std::string("0123456789abcdefABCDEF").find(character) != std::string::npos;
}

std::uint8_t HexValue(const std::string& digits) {
  constexpr int kHexadecimal = 16;
  return static_cast<std::uint8_t>(std::strtoul(digits.c_str(), nullptr, kHexadecimal));
}

/// One byte, written as "0x" and one or two hexadecimal digits.
std::uint8_t ReadByte(const Json& value, const Place& place) {
  const std::string text = value.is_string() ? value.get<std::string>() : "";
  const bool wellFormed = (text.size() == 3 || text.size() == 4) && text.rfind("0x", 0) == 0 &&
                          std::all_of(text.begin() + 2, text.end(), IsHexDigit);
  if (!wellFormed) {
    place.Fail(Shown(value), kByteExpected);
  }
  return HexValue(text.substr(2));
}

/// Bytes, each written as two hexadecimal digits, with one blank between them.
Bytes ReadBytes(const Json& value, const Place& place) {
  const char* const expected =
      "bytes as text, each of two hexadecimal digits, with one blank between them";
  if (!value.is_string()) {
    place.Fail(Shown(value), expected);
  }
  const auto text = value.get<std::string>();
  Bytes bytes;
  for (std::size_t at = 0; at < text.size(); at += 3) {
    const bool last = at + 2 == text.size();
    const bool wellFormed = at + 1 < text.size() && IsHexDigit(text[at]) &&
                            IsHexDigit(text[at + 1]) &&
                            (last || (text[at + 2] == ' ' && at + 3 < text.size()));
    if (!wellFormed) {
      place.Fail(Shown(value), expected);
    }
    bytes.push_back(HexValue(text.substr(at, 2)));
  }
  if (bytes.size() > kMaxAnswerLength) {
    place.Fail(std::to_string(bytes.size()) + " bytes long",
               "at most " + std::to_string(kMaxAnswerLength));
  }
  return bytes;
}

unsigned int ReadNumber(const Json& value, unsigned int smallest, unsigned int largest,
                        const Place& place) {
  if (!value.is_number_unsigned() || value.get<std::uint64_t>() < smallest ||
      value.get<std::uint64_t>() > largest) {
    place.Fail(Shown(value), "a whole number from " + std::to_string(smallest) + " to " +
                                 std::to_string(largest));
  }
  return value.get<unsigned int>();
}

bool ReadTruth(const Json& value, const Place& place) {
  if (!value.is_boolean()) {
    place.Fail(Shown(value), "true or false");
  }
  return value.get<bool>();
}

/// Finds misspelt keys, which would otherwise be settings without effect.
void CheckKeys(const Json& object, const std::vector<std::string>& known, const Place& place) {
  std::string list;
  for (const std::string& key : known) {
    list += (list.empty() ? "" : ", ") + key;
  }
  if (!object.is_object()) {
    place.Fail(Shown(object), "an object with the keys " + list);
  }
  for (const auto& item : object.items()) {
    if (std::find(known.begin(), known.end(), item.key()) == known.end()) {
      throw ScenarioError(place.source + ": " + place.path + " has the key " +
                          Shown(Json(item.key())) + "; expected one of " + list);
    }
  }
}

/// Only commands that the module serves; the session's own commands never reach it.
void CheckCommand(const Override& override, const Json& entry, const Place& place) {
  const bool served = override.netFn == kNetFnOem ||
                      (override.netFn == kNetFnApplication && override.command == kMasterWriteRead);
  if (!served) {
    place.Fail("for netFn " + Shown(entry.value("netFn", Json("0x32"))) + " and command " +
                   Shown(entry.at("command")),
               R"(netFn "0x32", or netFn "0x06" with command "0x52")");
  }
}

void ReadMatch(const Json& entry, const Place& place, Override& override) {
  const auto at = [&](const char* key) { return Place{place.source, place.path + "." + key}; };
  if (entry.contains("netFn")) {
    override.netFn = ReadByte(entry["netFn"], at("netFn"));
  }
  if (!entry.contains("command")) {
    at("command").Fail("missing", kByteExpected);
  }
  override.command = ReadByte(entry["command"], at("command"));
  CheckCommand(override, entry, place);
  if (entry.contains("data")) {
    override.requestData = ReadBytes(entry["data"], at("data"));
  }
  if (entry.contains("times")) {
    override.times = ReadNumber(entry["times"], 1, kMaxTimes, at("times"));
  }
}

void ReadAction(const Json& entry, const Place& place, Override& override) {
  const auto at = [&](const char* key) { return Place{place.source, place.path + "." + key}; };
  if (entry.contains("completionCode") || entry.contains("response")) {
    override.answer.emplace();
  }
  if (entry.contains("completionCode")) {
    override.answer->completionCode = ReadByte(entry["completionCode"], at("completionCode"));
  }
  if (entry.contains("response")) {
    override.answer->data = ReadBytes(entry["response"], at("response"));
  }
  if (entry.contains("delayMs")) {
    override.delay = std::chrono::milliseconds(
        ReadNumber(entry["delayMs"], 1, kMaxDelayMilliseconds, at("delayMs")));
  }
  if (entry.contains("silent")) {
    override.silent = ReadTruth(entry["silent"], at("silent"));
  }
  if (override.silent && (override.answer || override.delay.count() > 0)) {
    place.Fail("silent and has an answer or a delay",
               "silent alone, or completionCode, response and delayMs without it");
  }
  if (!override.silent && !override.answer && override.delay.count() == 0) {
    place.Fail("without an effect", "at least one of completionCode, response, delayMs, silent");
  }
}

Override ReadOverride(const Json& entry, const Place& place) {
  CheckKeys(
      entry,
      {"netFn", "command", "data", "times", "completionCode", "response", "delayMs", "silent"},
      place);
  Override override;
  ReadMatch(entry, place, override);
  ReadAction(entry, place, override);
  return override;
}

/// `position` counts from 1 and may lie one behind the end.
std::string LineAndColumn(const std::string& text, std::size_t position) {
  const std::string before = text.substr(0, position - 1);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

/// Refuses a key that an object holds twice; of two values the parser would keep the last silently.
class RepeatedKeyCheck {
 public:
  explicit RepeatedKeyCheck(const std::string& source) : source_(source) {}

  bool operator()(int /*depth*/, Json::parse_event_t event, const Json& parsed) {
    if (event == Json::parse_event_t::object_start) {
      keysOfOpenObjects_.emplace_back();
    } else if (event == Json::parse_event_t::object_end) {
      keysOfOpenObjects_.pop_back();
    } else if (event == Json::parse_event_t::key &&
               !keysOfOpenObjects_.back().insert(parsed.get<std::string>()).second) {
      throw ScenarioError(source_ + ": the key " + Shown(parsed) +
                          " stands twice in one object; expected it once");
    }
    return true;
  }

 private:
  const std::string& source_;
  std::vector<std::set<std::string>> keysOfOpenObjects_;
};

Json ParseJson(const std::string& text, const std::string& source) {
  try {
    return Json::parse(text, RepeatedKeyCheck(source));
  } catch (const Json::parse_error& error) {
    throw ScenarioError(source + ": " + LineAndColumn(text, error.byte) +
                        " is where the text stops being valid; expected JSON");
  }
}

}  // namespace

Scenario ParseScenario(const std::string& text, const std::string& source) {
  const Json document = ParseJson(text, source);
  CheckKeys(document, {"overrides"}, {source, "the document"});
  const Json entries = document.value("overrides", Json());
  if (!entries.is_array()) {
    Place{source, "overrides"}.Fail(document.contains("overrides") ? Shown(entries) : "missing",
                                    "a list of objects");
  }
  Scenario scenario;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    scenario.push_back(
        ReadOverride(entries[index], {source, "overrides[" + std::to_string(index) + "]"}));
  }
  return scenario;
}

}  // namespace Tavrin::Simulator
