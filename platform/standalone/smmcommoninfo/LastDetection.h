#pragma once

#include <cstdint>
#include <vector>

namespace Tavrin {
namespace Standalone {

/// How the last SMMInfo::GetSmmType() of a thread came to its generation.
enum class DetectionOutcome {
  /// The thread has not asked yet.
  NotTried,
  /// SMM_TYPE told the generation.
  Configured,
  /// The SMM told it.
  Detected,
  /// Neither did: whoever asked goes on with what it assumed before.
  Unknown,
};

/// The outcome on the calling thread. After a construction of SMMInventory it tells whether the
/// object knows its generation: with Unknown it takes the SMM for a first-generation one, and reads
/// wrong numbers should it be of the second. The remedy is a new object.
DetectionOutcome GetLastDetectionOutcome();

/// The answer that told the generation, without its completion code: that to the status request,
/// network function 0x32, command 0xA8. Empty unless the outcome is Detected. A construction reads
/// platform and PSU slots from the same request, so that a caller who keeps an object can tell
/// whether it still fits the SMM. The reference holds until the thread ends; what it refers to
/// changes with the thread's next detection.
const std::vector<std::uint8_t>& GetLastDetectionAnswer();

}  // namespace Standalone
}  // namespace Tavrin
