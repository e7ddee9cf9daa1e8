#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "reading/Cause.h"

namespace Tavrin {

/// One value on its way to people or programs.
struct Field {
  enum class Kind {
    Text,     ///< Stays a text, also when it happens to consist of digits.
    Reading,  ///< A number where its text is one.
  };

  std::string key;    ///< For programs.
  std::string label;  ///< For people.
  Kind kind = Kind::Text;
  std::optional<std::string> text;  ///< As the SMM or the library gave it; empty when not read.
  std::string absence;              ///< Why there is no value; empty when there is one.
};

/// The fields of one record.
struct Row {
  std::size_t number = 0;  ///< Of the node or the PSU slot; 0 where the record is of neither.
  std::vector<Field> fields;
};

/// What one query gave. When it failed, its rows still tell which fields there would be.
struct Query {
  enum class Shape {
    OneField,       ///< One row of one field.
    OneRecord,      ///< One row.
    RecordOfNode,   ///< One row, numbered; the queries of a section ask for one node each.
    RecordPerSlot,  ///< Numbered rows.
  };

  std::string key;   ///< For programs.
  std::string name;  ///< For people, in sentences.
  Shape shape = Shape::OneField;
  int status = 0;
  Cause cause;
  std::vector<Row> rows;
  std::string note;  ///< A sentence on how to take the rows; mostly empty.
};

/// Queries that are shown together.
struct Section {
  std::string title;
  std::vector<Query> queries;
};

}  // namespace Tavrin
