#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "tests/support/Relay.h"

namespace Tavrin {

// What can be wrong with a wire or with the controller at its end. Where chance decides, the seed
// decides what comes out.

/// Nothing arrives in either direction.
Fault Silence();

/// So many of a hundred datagrams are lost, in both directions.
Fault Loss(std::uint32_t seed, unsigned int percent);

/// Every datagram arrives twice, or every answer alone.
Fault Duplicated();
Fault DuplicatedAnswers();

/// In each direction, every other datagram is overtaken by its successor.
Fault Reordered();

/// Every answer comes so much later.
Fault Delayed(std::chrono::milliseconds delay);

/// So many of a hundred answers arrive without their end.
Fault Truncated(std::uint32_t seed, unsigned int percent);

/// Random bytes instead of each answer.
Fault Garbage(std::uint32_t seed);

/// Empty and random datagrams come every 5 ms for two seconds after each request, and no
/// answer does.
Fault GarbageFlood(std::uint32_t seed);

/// Sound for the first `count` datagrams; then, instead of each answer, the one before it.
Fault AnswerToTheRequestBefore(unsigned int count);

// Forged answers, with checksums that hold; only for cipher suite 0, which protects nothing.

/// The controller refuses the privilege level with this completion code, once the session is open.
Fault RefusedPrivilege(std::uint8_t completionCode);

/// Every answer within the session names another command than its request, or belongs to another
/// network function.
Fault OtherCommand();
Fault OtherNetworkFunction();

/// Sound for the first `count` datagrams, then the fault.
Fault After(unsigned int count, Fault fault);

/// The fault for the datagram of that number, counted from 1; sound for all others.
Fault Only(unsigned int number, Fault fault);

/// Passes on the first `requests` datagrams of clients and their answers; then calls `action` once,
/// and nothing arrives any more.
Fault SilenceAfter(
    unsigned int requests, std::function<void()> action = [] {});

}  // namespace Tavrin
