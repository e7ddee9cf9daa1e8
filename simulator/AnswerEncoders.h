#pragma once

#include "simulator/Enclosure.h"
#include "simulator/Message.h"

namespace Tavrin::Simulator {

// One function per command: the enclosure and the request's data bytes in, the answer out. Bytes
// that a second-generation controller puts in front are part of the answer.

/// 0x32/0xA8, no data: revision and firmware build name. On a second-generation controller byte 0
/// is the platform id and byte 13 the enclosure type, which falls into the padding behind the build
/// name; that is why build names have at most 6 characters.
Answer EncodeStatus(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0xB0, data 05 and an item selector: 00 machine type, 01 serial number, 0B name. A
/// second-generation controller repeats the two request bytes in front of the text.
Answer EncodeIdentity(const Enclosure& enclosure, const Bytes& requestData);

/// The answer to one request as the enclosure itself gives it. Commands without an encoder get the
/// completion code for an invalid command.
Answer EncodeAnswer(const Enclosure& enclosure, const Request& request);

}  // namespace Tavrin::Simulator
