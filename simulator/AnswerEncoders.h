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

/// 0x32/0x98: minimum, average and maximum power, each of 16 bits, low byte first. The data byte is
/// a node number, or 05 for the whole enclosure (0D on platform 253, which has a node 5). A
/// second-generation controller repeats it in front.
Answer EncodePower(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0x9D, data 05 (0D on platform 253): the five caps, each of 16 bits, low byte first. A
/// second-generation controller repeats the data byte in front.
Answer EncodeCaps(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0xA7, data a node number: power state, width, height and permission. A second-generation
/// controller repeats the node number in front.
Answer EncodeNodeStatus(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0xA5, data a PSU slot: the fan's speed of 16 bits, low byte first, and Pat value, then the
/// fan status. A second-generation controller repeats the slot in front and tells of two fans.
Answer EncodePsuFans(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0x91, no data: the PSUs' flags, the lowest bit for slot 1. One byte a flag on a
/// first-generation controller, 16 bits on a second-generation one.
Answer EncodePsuFlags(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0x92, data slot, read count and register: a PSU's register through a second-generation
/// controller, which leaves out the length in front of a block.
Answer EncodePsuRegister(const Enclosure& enclosure, const Bytes& requestData);

/// 0x06/0x52, data bus, address, read count and register: Master Write-Read, by which a PSU's
/// register is read through a first-generation controller.
Answer EncodeMasterWriteRead(const Enclosure& enclosure, const Bytes& requestData);

/// 0x32/0xF4, data 00 and a PSU to select: the PSU that is selected then. Without a PSU in the
/// request the selection stays.
Answer EncodePsuSelection(const Enclosure& enclosure, const Bytes& requestData);

/// The answer to one request as the enclosure itself gives it. Commands without an encoder, and
/// those of the other generation, get the completion code for an invalid command.
Answer EncodeAnswer(const Enclosure& enclosure, const Request& request);

}  // namespace Tavrin::Simulator
