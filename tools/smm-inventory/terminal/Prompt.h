#pragma once

#include <string>

namespace Tavrin {

/// Asks for the password on the process's terminal without showing what is typed. The terminal is
/// as before when this returns or throws, and when SIGINT, SIGTERM, SIGHUP or SIGQUIT ends the
/// process or SIGTSTP stops it (Ctrl-C, Ctrl-\ and Ctrl-Z among them). A process that continues
/// asks again. Throws UsageError when the process has no terminal, and as ReadPasswordLine does.
void PromptForPassword(const std::string& prompt, std::string& password);

}  // namespace Tavrin
