#pragma once

#include <string>

namespace Tavrin::Fuzz {

/// Reads a datagram as every answer that the IPMI client can wait for. The first byte chooses the
/// cipher suite; the client waits for the number and the session that the datagram names.
void CheckDatagram(const std::string& input);

}  // namespace Tavrin::Fuzz
