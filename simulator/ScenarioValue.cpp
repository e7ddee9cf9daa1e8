#include "simulator/ScenarioValue.h"

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <utility>

namespace Tavrin::Simulator {
namespace {

using Json = nlohmann::json;

constexpr const char* kByteExpected = R"(a byte as text, "0x00" to "0xFF")";
constexpr const char* kWholeDocument = "the document";
constexpr int kMaxNesting = 16;

std::string ShownJson(const Json& value) {
  constexpr std::size_t kMaxShown = 60;
  const std::string text = value.dump(-1, ' ', true, Json::error_handler_t::replace);
  return text.size() <= kMaxShown ? text : text.substr(0, kMaxShown) + "...";
}

/// Null when the value is no text.
const std::string* TextIn(const Json& value) { return value.get_ptr<const std::string*>(); }

bool IsHexDigit(char character) {
  return std::string("0123456789abcdefABCDEF").find(character) != std::string::npos;
}

bool IsPrintable(char character) { return character >= ' ' && character <= '~'; }

std::uint8_t HexValue(const std::string& digits) {
  constexpr int kHexadecimal = 16;
  return static_cast<std::uint8_t>(std::strtoul(digits.c_str(), nullptr, kHexadecimal));
}

std::string Joined(const std::vector<std::string>& keys) {
  std::string list;
  for (const std::string& key : keys) {
    list += (list.empty() ? "" : ", ") + key;
  }
  return list;
}

/// `position` counts from 1 and may lie one behind the end.
std::string LineAndColumn(const std::string& text, std::size_t position) {
  const std::string before = text.substr(0, position - 1);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

/// A scenario's text on its way into the parser, which tells the place of some errors only.
class TextReader {
 public:
  explicit TextReader(const std::string& text) : text_(text), stream_(text) {}

  std::istream& Stream() { return stream_; }

  /// How many bytes the parser has taken. Of a number it takes one more than belongs to it.
  [[nodiscard]] std::size_t Taken() const {
    return static_cast<std::size_t>(stream_.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in));
  }
  [[nodiscard]] std::string LastTaken() const { return LineAndColumn(text_, Taken()); }
  [[nodiscard]] std::string EndOfNumber() const {
    return LineAndColumn(text_, text_.find_last_of("0123456789", Taken() - 1) + 1);
  }

 private:
  const std::string& text_;
  std::istringstream stream_;
};

/// Refuses what the parser would let pass: a key that an object holds twice, of whose values it
/// would keep the last silently, and nesting that would exhaust the stack when it is shown.
class DocumentCheck {
 public:
  DocumentCheck(const std::string& source, const TextReader& reader)
      : source_(source), reader_(reader) {}

  bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
    if (event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start) {
      CheckNesting(depth + 1);
    }
    if (event == Json::parse_event_t::object_start) {
      keysOfOpenObjects_.emplace_back();
    } else if (event == Json::parse_event_t::object_end) {
      keysOfOpenObjects_.pop_back();
    } else if (event == Json::parse_event_t::key &&
               !keysOfOpenObjects_.back().insert(parsed.get<std::string>()).second) {
      throw ScenarioError(source_ + ": the key " + ShownJson(parsed) +
                          " stands twice in one object; expected it once");
    }
    return true;
  }

 private:
  void CheckNesting(int level) const {
    if (level > kMaxNesting) {
      throw ScenarioError(source_ + ": " + reader_.LastTaken() + " opens level " +
                          std::to_string(level) + " of nesting; expected at most " +
                          std::to_string(kMaxNesting) + " levels");
    }
  }

  const std::string& source_;
  const TextReader& reader_;
  std::vector<std::set<std::string>> keysOfOpenObjects_;
};

}  // namespace

struct ScenarioValue::Content {
  Json json;
  std::string source;
  std::string path;
};

ScenarioValue::ScenarioValue(Content content)
    : content_(std::make_shared<Content>(std::move(content))) {}

ScenarioValue ScenarioValue::Parse(const std::string& text, const std::string& source) {
  TextReader reader(text);
  try {
    Json document = Json::parse(reader.Stream(), DocumentCheck(source, reader));
    return ScenarioValue({std::move(document), source, kWholeDocument});
  } catch (const Json::parse_error& error) {
    throw ScenarioError(source + ": " + LineAndColumn(text, error.byte) +
                        " is where the text stops being valid; expected JSON");
  } catch (const Json::exception&) {
    // The parser's only other error.
    throw ScenarioError(source + ": " + reader.EndOfNumber() +
                        " ends a number that is out of range; expected one that fits into a "
                        "double");
  }
}

void ScenarioValue::CheckKeys(const std::vector<std::string>& known) const {
  const std::string list = Joined(known);
  if (!content_->json.is_object()) {
    Fail(Shown(), "an object with the keys " + list);
  }
  for (const auto& item : content_->json.items()) {
    if (std::find(known.begin(), known.end(), item.key()) == known.end()) {
      throw ScenarioError(content_->source + ": " + content_->path + " has the key " +
                          ShownJson(item.key()) + "; expected one of " + list);
    }
  }
}

std::optional<ScenarioValue> ScenarioValue::Find(const std::string& key) const {
  const auto member = content_->json.find(key);
  if (member == content_->json.end()) {
    return std::nullopt;
  }
  const bool outermost = content_->path == kWholeDocument;
  return ScenarioValue({*member, content_->source, (outermost ? "" : content_->path + ".") + key});
}

std::vector<ScenarioValue> ScenarioValue::Elements() const {
  if (!content_->json.is_array()) {
    Fail(Shown(), "a list of objects");
  }
  std::vector<ScenarioValue> elements;
  for (const Json& element : content_->json) {
    const std::string path = content_->path + "[" + std::to_string(elements.size()) + "]";
    elements.push_back(ScenarioValue({element, content_->source, path}));
  }
  return elements;
}

unsigned int ScenarioValue::Number(unsigned int smallest, unsigned int largest) const {
  const Json& json = content_->json;
  if (!json.is_number_unsigned() || json.get<std::uint64_t>() < smallest ||
      json.get<std::uint64_t>() > largest) {
    Fail(Shown(),
         "a whole number from " + std::to_string(smallest) + " to " + std::to_string(largest));
  }
  return json.get<unsigned int>();
}

bool ScenarioValue::Truth() const {
  if (!content_->json.is_boolean()) {
    Fail(Shown(), "true or false");
  }
  return content_->json.get<bool>();
}

std::string ScenarioValue::Text(std::size_t longest) const {
  const std::string* const text = TextIn(content_->json);
  if (text == nullptr || text->size() > longest ||
      !std::all_of(text->begin(), text->end(), IsPrintable)) {
    Fail(Shown(), "a text of at most " + std::to_string(longest) + " printable ASCII characters");
  }
  return *text;
}

std::uint8_t ScenarioValue::Byte(const std::string& alternative) const {
  const std::string* const text = TextIn(content_->json);
  const bool wellFormed = text != nullptr && (text->size() == 3 || text->size() == 4) &&
                          text->rfind("0x", 0) == 0 &&
                          std::all_of(text->begin() + 2, text->end(), IsHexDigit);
  if (!wellFormed) {
    Fail(Shown(), alternative.empty() ? kByteExpected : alternative + ", or " + kByteExpected);
  }
  return HexValue(text->substr(2));
}

std::uint8_t ScenarioValue::RequiredByte(const std::string& key) const {
  const auto member = Find(key);
  if (!member) {
    const ScenarioValue place({Json(), content_->source, content_->path + "." + key});
    place.Fail("missing", kByteExpected);
  }
  return member->Byte();
}

Bytes ScenarioValue::ByteList() const {
  const char* const expected =
      "bytes as text, each of two hexadecimal digits, with one blank between them";
  if (!content_->json.is_string()) {
    Fail(Shown(), expected);
  }
  const auto text = content_->json.get<std::string>();
  Bytes bytes;
  for (std::size_t at = 0; at < text.size(); at += 3) {
    const bool last = at + 2 == text.size();
    // Behind its end the text has a 0x00, which is no digit.
    const bool wellFormed = IsHexDigit(text[at]) && IsHexDigit(text[at + 1]) &&
                            (last || (text[at + 2] == ' ' && at + 3 < text.size()));
    if (!wellFormed) {
      Fail(Shown(), expected);
    }
    bytes.push_back(HexValue(text.substr(at, 2)));
  }
  return bytes;
}

bool ScenarioValue::Is(const std::string& text) const { return content_->json == text; }

std::string ScenarioValue::Shown() const { return ShownJson(content_->json); }

void ScenarioValue::Fail(const std::string& value, const std::string& expected) const {
  throw ScenarioError(content_->source + ": " + content_->path + " is " + value + "; expected " +
                      expected);
}

}  // namespace Tavrin::Simulator
