#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

/// Why a value is not there.
enum class Absence {
  None,            ///< It is there.
  NotReported,     ///< The SMM reports none: the library's "N/A".
  NoSecondFan,     ///< A first-generation SMM reports one fan a PSU.
  FlagsNotTold,    ///< The SMM's answer holds the flags of eight PSUs, and this is a later one.
  SlotUnanswered,  ///< The query succeeded, but gave nothing for this PSU slot.
  QueryFailed,     ///< The query's status and cause tell why.
};

/// A value of type Type as the SMM or the library gave it.
template <typename Type>
struct Value {
  std::optional<Type> value;  ///< Holds something exactly when `absence` is None.

  /// The library's own text for it, with the bytes that the SMM sent: any byte may occur, control
  /// bytes included. Empty when the query failed, and where the library gives no text.
  std::string text;

  Absence absence = Absence::QueryFailed;
};

/// A reading or a count. The SMM states no unit for any reading.
using Number = Value<std::int64_t>;

/// A text of the SMM's; the value is the text itself, which may be empty.
using Text = Value<std::string>;

/// A flag of a PSU; the text is the library's word for it, such as "not trigger".
using Flag = Value<bool>;

}  // namespace Tavrin
