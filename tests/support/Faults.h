#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

#include "tests/support/Relay.h"

namespace Tavrin {

// What can be wrong with a wire or with the controller at its end. Where chance decides, the seed
// decides what comes out.

/// Nothing arrives in either direction.
Fault Silence();

/// So many of a hundred datagrams are lost, in both directions.
Fault Loss(std::uint32_t seed, unsigned int percent);

/// Every datagram arrives twice.
Fault Duplicated();

/// In each direction, every other datagram is overtaken by its successor.
Fault Reordered();

/// Every answer comes so much later.
Fault Delayed(std::chrono::milliseconds delay);

/// So many of a hundred answers arrive without their end.
Fault Truncated(std::uint32_t seed, unsigned int percent);

/// Random bytes instead of each answer.
Fault Garbage(std::uint32_t seed);

/// Sound for the first `count` datagrams; then, instead of each answer, the one before it.
Fault AnswerToTheRequestBefore(unsigned int count);

/// What a controller answers: any of it, what it opens a session with, and all that it says within
/// one. Privilege is the answer that sets the privilege level, and can be told with cipher suite 0
/// alone, which protects nothing.
enum class Answer {
  OpenSession = 0x11,
  Rakp2 = 0x13,
  Rakp4 = 0x15,
  Capabilities = 0xFF,
  Any,
  Privilege,
  WithinSession
};

/// The fault for every such answer; sound for all else.
Fault At(Answer answer, Fault fault);

/// Every such answer is changed. The checksums of a message that nothing protects are corrected.
using Change = std::function<void(std::vector<std::uint8_t>&)>;
Fault Changed(Answer answer, const Change& change);

/// Sound for the first `count` datagrams, then the fault.
Fault After(unsigned int count, Fault fault);

/// The fault for the datagram of that number, counted from 1; sound for all others.
Fault Only(unsigned int number, Fault fault);

/// Passes on the first `requests` datagrams of clients and their answers; then calls `action` once,
/// and nothing arrives any more.
Fault SilenceAfter(
    unsigned int requests, std::function<void()> action = [] {});

}  // namespace Tavrin
