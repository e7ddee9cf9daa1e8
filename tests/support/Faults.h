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

/// The answers with which a controller opens a session, none of them protected.
enum class OpeningAnswer { Capabilities, OpenSession, Rakp2, Rakp4 };

/// Every such answer is changed, or lost where the change empties it; checksums are corrected.
using Change = std::function<void(std::vector<std::uint8_t>&)>;
Fault Changed(OpeningAnswer answer, const Change& change);

/// Every such answer comes so much later.
Fault Delayed(OpeningAnswer answer, std::chrono::milliseconds delay);

// The next four are only for cipher suite 0, which protects nothing; checksums are corrected.

/// The controller refuses the privilege level with this completion code, once the session is open,
/// or does not answer.
Fault RefusedPrivilege(std::uint8_t completionCode);
Fault SilentPrivilege();

/// Every answer within the session names another command than its request, or belongs to another
/// network function.
Fault OtherCommand();
Fault OtherNetworkFunction();

/// The first `count` answers within a session say that they are not encrypted.
Fault Unencrypted(unsigned int count);

/// Sound for the first `count` datagrams, then the fault.
Fault After(unsigned int count, Fault fault);

/// The fault for the datagram of that number, counted from 1; sound for all others.
Fault Only(unsigned int number, Fault fault);

/// Passes on the first `requests` datagrams of clients and their answers; then calls `action` once,
/// and nothing arrives any more.
Fault SilenceAfter(
    unsigned int requests, std::function<void()> action = [] {});

}  // namespace Tavrin
