#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// A scenario that cannot be used; what() is one sentence that names the source, the place, the
/// value and what was expected.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A value of a scenario's JSON text together with the place where it stands. Whoever asks for what
/// the value is not gets a ScenarioError that names the place.
class ScenarioValue {
 public:
  /// The whole document. `source` names the text in error sentences.
  static ScenarioValue Parse(const std::string& text, const std::string& source);

  /// Finds misspelt keys, which would otherwise be settings without effect.
  void CheckKeys(const std::vector<std::string>& known) const;

  /// The member of the key, or nothing when the object has none.
  [[nodiscard]] std::optional<ScenarioValue> Find(const std::string& key) const;

  /// The elements of a list of objects.
  [[nodiscard]] std::vector<ScenarioValue> Elements() const;

  [[nodiscard]] unsigned int Number(unsigned int smallest, unsigned int largest) const;
  [[nodiscard]] bool Truth() const;

  /// A text of printable ASCII characters.
  [[nodiscard]] std::string Text(std::size_t longest) const;

  /// One byte, written as "0x" and one or two hexadecimal digits. `alternative` is what else could
  /// stand there, for the error sentence.
  [[nodiscard]] std::uint8_t Byte(const std::string& alternative = {}) const;

  /// The byte that the member of the key is; its absence is an error.
  [[nodiscard]] std::uint8_t RequiredByte(const std::string& key) const;

  /// Bytes, each written as two hexadecimal digits, with one blank between them.
  [[nodiscard]] Bytes ByteList() const;

  /// Whether the value is exactly this text.
  [[nodiscard]] bool Is(const std::string& text) const;

  /// The value as error sentences show it: long ones are cut, control bytes are escaped.
  [[nodiscard]] std::string Shown() const;

  /// Throws the error that `value` stands at this place instead of what was expected.
  [[noreturn]] void Fail(const std::string& value, const std::string& expected) const;

 private:
  struct Content;

  explicit ScenarioValue(Content content);

  std::shared_ptr<const Content> content_;
};

}  // namespace Tavrin::Simulator
