#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "reading/Query.h"

namespace Tavrin {

// A reading, described once for all formats.

/// One value on its way to people or programs.
struct Field {
  std::string key;    ///< For programs.
  std::string label;  ///< For people.

  /// For programs; a state is its word in lower camel case, a text has the SMM's bytes. Nothing
  /// where there is no value.
  std::variant<std::monostate, bool, std::int64_t, std::string> value;

  /// As the SMM or the library gave it, any byte included; empty when it was not read.
  std::optional<std::string> text;

  std::string absence;  ///< Why there is no value; empty when there is one.
};

/// The fields of one record.
struct Row {
  std::size_t number = 0;  ///< Of the node or the PSU slot; 0 where the record is of neither.
  std::vector<Field> fields;
};

/// What one query gave. When it failed, its rows still tell which fields there would be.
struct Answer {
  enum class Shape {
    OneField,       ///< One row of one field.
    OneRecord,      ///< One row.
    RecordOfNode,   ///< One row, numbered; the answers of a section are of one node each.
    RecordPerSlot,  ///< Numbered rows; none where the slots could not be counted.
  };

  std::string key;   ///< For programs.
  std::string name;  ///< For people, in sentences.
  Shape shape = Shape::OneField;
  QueryOutcome outcome;
  std::vector<Row> rows;
  std::string note;  ///< A sentence on how to take the rows; mostly empty.
};

/// Answers that are shown together.
struct Section {
  std::string title;
  std::vector<Answer> answers;
};

}  // namespace Tavrin
