#pragma once

namespace Tavrin {
namespace Standalone {

/// How the last SMMInfo::GetSmmType() of a thread came to its generation.
enum class DetectionOutcome {
  NotTried,    ///< The thread has not asked yet.
  Configured,  ///< SMM_TYPE told the generation.
  Detected,    ///< The SMM told it.
  Unknown,     ///< Neither did: whoever asked goes on with what it assumed before.
};

/// The outcome on the calling thread. After a construction of SMMInventory it tells whether the
/// object knows its generation: with Unknown it takes the SMM for a first-generation one, and reads
/// wrong numbers should it be of the second. The remedy is a new object.
DetectionOutcome GetLastDetectionOutcome();

}  // namespace Standalone
}  // namespace Tavrin
