#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "reading/Query.h"

namespace Tavrin {

// A reading, described once for all formats: what each value is called, what it is and why it is
// not there. A format decides how that looks, and nothing else. Whatever the SMM sent stands here
// with its own bytes; it is for the format to let none of them out that could drive a terminal.

/// One value on its way to people or programs.
struct Field {
  /// Its name for programs, in lower camel case; never changes within a version of the document.
  std::string key;

  /// Its name for people, as a heading of a column or of a line.
  std::string label;

  /// Its value for programs: a flag, a number without a unit, or a text. A state is its word in
  /// lower camel case, a text has the SMM's bytes. Nothing exactly where `absence` says why.
  std::variant<std::monostate, bool, std::int64_t, std::string> value;

  /// Its text as the SMM or the library gave it, any byte included; a number in decimal where the
  /// library has no text of its own for it. Empty when it was not read.
  std::optional<std::string> text;

  /// Why there is no value, in words; empty when there is one.
  std::string absence;
};

/// The fields of one record.
struct Row {
  /// Of the node or the PSU slot, counted from 1; 0 where the record is of neither.
  std::size_t number;

  /// The same keys in the same order for every row of one query.
  std::vector<Field> fields;
};

/// What one query gave. When it failed, its rows still tell which fields there would be.
struct Answer {
  enum class Shape {
    /// One row of one field, which has the query's own key.
    OneField,

    /// One row.
    OneRecord,

    /// One row, numbered; the answers of a section are of one node each.
    RecordOfNode,

    /// Numbered rows; none where the slots could not be counted.
    RecordPerSlot,
  };

  /// The query's name for programs; answers of one key, of a node each, follow each other.
  std::string key;

  /// The query's name for people, as the subject of "... not read".
  std::string name;

  /// How many rows there are, and what their numbers count.
  Shape shape;

  /// Status, cause and times of the query.
  QueryOutcome outcome;

  /// In ascending order of their numbers.
  std::vector<Row> rows;

  /// A sentence on how to take the rows; mostly empty.
  std::string note;
};

/// Answers that are shown together.
struct Section {
  /// For people.
  std::string title;

  /// All of one shape; none where an enclosure has no nodes.
  std::vector<Answer> answers;
};

}  // namespace Tavrin
