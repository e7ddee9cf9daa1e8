#pragma once

namespace Tavrin {

/// Keeps the process's memory, which holds the password for a while, from being written to a core
/// file or read by other processes of the same user; its environment block, too. Throws
/// std::runtime_error when the system does not allow that.
void ForbidMemoryImages();

}  // namespace Tavrin
