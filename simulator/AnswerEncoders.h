#pragma once

#include "simulator/EnclosureState.h"
#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// The answer to one request as the enclosure itself gives it. Commands without an encoder, and
/// those of the other generation, get the completion code for an invalid command; a wrong number of
/// data bytes gets the one for an invalid length.
Answer EncodeAnswer(const EnclosureState& enclosure, const Request& request);

}  // namespace Tavrin::Simulator
