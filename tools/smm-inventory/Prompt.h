#pragma once

#include <string>

namespace Tavrin {

/// Asks for the password on the process's terminal without showing what is typed. The terminal is
/// as before when this returns, throws, or a signal (Ctrl-C among them) ends the process. Throws
/// UsageError when the process has no terminal, and as ReadPasswordLine does.
void PromptForPassword(const std::string& prompt, std::string& password);

}  // namespace Tavrin
