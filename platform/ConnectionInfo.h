#pragma once

#include <cstdint>
#include <string>

namespace Tavrin {
namespace TavrinConnection {

/// The connection settings of one SMM, as the connection layer hands them to its clients.
struct ConnectionInfo {
  std::string address;       ///< IPv4 or IPv6 address, or host name.
  std::uint16_t port = 0;    ///< UDP port; 623 on a real controller.
  std::string userName;      ///< IPMI user name, at most 16 bytes.
  std::string password;      ///< IPMI password, at most 20 bytes.
  std::uint16_t aux16A = 0;  ///< Carried for other clients of the connection layer; not used here.
  std::uint16_t aux16B = 0;  ///< Carried for other clients of the connection layer; not used here.
  std::int32_t aux32A = 0;   ///< Carried for other clients of the connection layer; not used here.
  std::int32_t connectionKind =
      0;                    ///< 1 and 7 admit IPMI exchanges; every other kind refuses them.
  std::int32_t aux32B = 0;  ///< Carried for other clients of the connection layer; not used here.
};

}  // namespace TavrinConnection
}  // namespace Tavrin
