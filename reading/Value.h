#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

/// Why a value is not there.
enum class Absence {
  /// It is there.
  None,

  /// The SMM reports none: the library's "N/A", or what is none of its texts.
  NotReported,

  /// A first-generation SMM reports one fan a PSU.
  NoSecondFan,

  /// The SMM's answer holds the flags of eight PSUs, and this is a later one.
  FlagsNotTold,

  /// The query succeeded, but gave nothing for this PSU slot.
  SlotUnanswered,

  /// The query's status and cause tell why.
  QueryFailed,
};

/// A value of type Type as the SMM or the library gave it; as new, that of a query that failed.
template <typename Type>
struct Value {
  /// Holds something exactly when `absence` is None.
  std::optional<Type> value;

  /// The library's own text for it, with the bytes that the SMM sent: any byte may occur, control
  /// bytes included, so that it is to be escaped before it reaches a terminal or a file. Empty when
  /// the query failed, and where the library gives no text.
  std::string text;

  /// Why `value` is empty; None when it is not.
  Absence absence = Absence::QueryFailed;
};

/// A reading, a count or a code; none is negative. The SMM states no unit for any reading.
using Number = Value<std::int64_t>;

/// A text of the SMM's; the value is the text itself, which may be empty.
using Text = Value<std::string>;

/// A flag of a PSU; the text is the library's word for it, such as "not trigger".
using Flag = Value<bool>;

}  // namespace Tavrin
