#pragma once

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

}  // namespace Tavrin
