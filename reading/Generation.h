#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "platform/ConnectionInfo.h"
#include "platform/SMMInfo.h"
#include "reading/Query.h"

namespace Tavrin {

/// Connects to the SMM and finds out its generation, by which every answer is read. Whoever is not
/// there, refuses the user or tells no generation is known after one round of connection attempts:
/// before the library's construction, which cannot be stopped and would make six. A generation that
/// the configuration states is taken as it is, once a connection could be opened.
///
/// Fails with NotConnected, or with NoUsableResult where the generation is what stays unknown.
Query<SMMIype> FindGeneration(const TavrinConnection::ConnectionInfo& info);

/// The bytes of the status answer that a construction reads platform (byte 0) and PSU slots
/// (byte 13) from.
using Layout = std::pair<std::uint8_t, std::uint8_t>;

/// The layout that the thread's last FindGeneration() met; empty where the generation was
/// configured, or the answer ended before it.
std::optional<Layout> LastLayout();

}  // namespace Tavrin
