#pragma once

namespace Tavrin::Simulator {

// What the launcher's configuration of ipmi_sim and the module must agree on.

constexpr int kLanChannel = 1;
constexpr int kUserNumber = 2;  ///< 1 is IPMI's anonymous user.

}  // namespace Tavrin::Simulator
