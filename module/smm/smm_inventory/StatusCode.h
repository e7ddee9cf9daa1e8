#pragma once

namespace Tavrin {

/// The statuses that the operations of SMMInventory return. The comment of each operation says
/// which of them it can return, and when.
namespace StatusCode {

/// The operation did what it is for; its output argument is filled unless its comment says
/// otherwise.
constexpr int Success = 0;

/// ConnectionInfo::connectionKind admits no IPMI exchange (only 1 and 7 do); nothing was sent.
constexpr int ConnectionKindNotAdmitted = 1;

/// No IPMI connection could be opened within the attempts that the configuration allows.
constexpr int NotConnected = 2;

/// The SMM answered with a completion code other than 0 or with the wrong length, or the node
/// number asked for is out of range.
constexpr int UnusableAnswer = 3;

/// The status read or the PSU selection got no usable answer, or a query found unfit content or
/// could not run.
constexpr int NoUsableResult = 4;

}  // namespace StatusCode
}  // namespace Tavrin
