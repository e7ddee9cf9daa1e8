#pragma once

#include <cstdint>
#include <string>

namespace Tavrin {
namespace TavrinConnection {

/// The connection settings of one SMM, as the connection layer hands them to its clients. Copied
/// by value; callers were compiled with this layout, so that no field moves or changes its width.
struct ConnectionInfo {
  /// IPv4 or IPv6 address, or host name.
  std::string address;

  /// UDP port; 623 on a real controller.
  std::uint16_t port = 0;

  /// IPMI user name, at most 16 bytes, and password, at most 20. Copies of the settings hold both;
  /// nothing here wipes them.
  std::string userName;
  std::string password;

  /// Carried for other clients of the connection layer, as are all fields of that name; not used
  /// here.
  std::uint16_t aux16A = 0;
  std::uint16_t aux16B = 0;
  std::int32_t aux32A = 0;

  /// 1 and 7 admit IPMI exchanges; every other kind refuses them.
  std::int32_t connectionKind = 0;

  std::int32_t aux32B = 0;
};

}  // namespace TavrinConnection
}  // namespace Tavrin
