#pragma once

#include <chrono>
#include <string>

namespace Tavrin {
namespace Standalone {

// What this process knows of controllers that need longer before a question may be repeated. Both
// may be called from any thread and never wait, so that also the child of a process that forked at
// the wrong moment can ask its controllers.

/// The interval with which a conversation with that address and port begins; 0 when any will do.
std::chrono::milliseconds LearnedInterval(const std::string& numericAddress, int port);

/// Keeps an interval for the next conversation; 0 forgets the one that was kept.
void LearnInterval(const std::string& numericAddress, int port, std::chrono::milliseconds interval);

}  // namespace Standalone
}  // namespace Tavrin
