#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/Export.h"
#include "module/smm/smm_inventory/InventoryRecords.h"
#include "module/smm/smm_inventory/StatusCode.h"
#include "platform/ConnectionInfo.h"

namespace Tavrin {

class SMMInventoryImpl;

/// Inventory and health of one server enclosure, read from its SMM (system management module) over
/// IPMI.
///
/// What holds for every operation:
/// - It runs on the caller's thread and returns when its exchanges with the SMM are over. Each
///   exchange opens a connection of its own, with up to `IPMI_CONNECT_RETRY_TIMES` attempts
///   (configuration value, default 3), and closes it again. Nothing stays open between operations.
/// - It returns one of the values of StatusCode. An output argument belongs to the caller. Unless
///   the operation says otherwise, it is replaced as a whole on Success and left exactly as passed
///   on every other status.
/// - Exceptions of the platform libraries and of allocation pass through to the caller.
/// - Byte positions in these comments count from 0 at the first byte after the completion code. A
///   second-generation SMM puts one or two bytes in front of some answers; they are removed first,
///   and an answer shorter than the bytes to remove raises std::bad_alloc where the operation says
///   so.
///
/// Copies share one implementation. One object, together with all its copies, is to be used from
/// one thread at a time; objects constructed separately are independent.
class POVEIXME_EXPORT SMMInventory {
 public:
  /// Copies `info`, detects the generation of the SMM and reads its status, from which the number
  /// of PSU slots and of compute nodes follows.
  ///
  /// Blocks for at least 18 seconds with an SMM that answers normally: the status read makes six
  /// attempts with a pause of 3 seconds after each. An SMM that cannot be reached, or refuses, does
  /// not make construction fail: the object is usable and assumes 2 PSU slots and 4 nodes. It
  /// throws only what the platform libraries or allocation throw.
  explicit SMMInventory(const TavrinConnection::ConnectionInfo& info);

  /// Reads the machine type of the SMM: exactly four ASCII letters or digits, bytes 0 to 3 of the
  /// answer to network function 0x32, command 0xB0, data 05 00.
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent; UnusableAnswer when the completion code is not 0 or fewer than four bytes came;
  /// NoUsableResult when one of the four bytes is not an ASCII letter or digit. Throws
  /// std::bad_alloc when a second-generation SMM answers with fewer than two bytes.
  int GetSmmMT(std::string& machineType);

  /// Reads the serial number of the SMM: the printable ASCII characters from byte 0 of the answer
  /// to network function 0x32, command 0xB0, data 05 01, up to the first other byte, without blanks
  /// at either end. The text may be empty.
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent; UnusableAnswer when the completion code is not 0 or no byte came. Throws std::bad_alloc
  /// when a second-generation SMM answers with fewer than two bytes.
  int GetSmmSN(std::string& serialNumber);

  int GetSmmVersion(std::string& version);
  int GetSmmName(std::string& name);
  int GetChassisPowerConsumption(ChassisPowerCon& power);
  int GetChassisPowerCap(ChassisPowerCap& cap);
  int GetNodePowerConsumption(unsigned long node, ChassisPowerCon& power);
  int GetPSUFanSpeed(std::vector<PSUFanSpeed>& fans);
  int GetPSUFwInfo(std::vector<PSUFwInfo>& firmware);
  int GetPSUStatus(std::vector<PSUStatus>& status);
  int SelectPSU(int psu);
  int GetNodeStatus(unsigned long node, NodeStatus& status);

  /// Reads the status of the SMM anew: platform id and number of PSU slots, from network function
  /// 0x32, command 0xA8, no data. What the constructor derived, and with it GetNodeNub(), stays as
  /// it is.
  ///
  /// Six exchanges and 18 seconds of pauses, except that a one-byte answer with completion code 0
  /// ends it early. Returns Success, or NoUsableResult when the last answer was empty or its
  /// completion code was not 0. `status` is written exactly when the last answer held 14 bytes or
  /// more, on NoUsableResult too, and is otherwise left as passed, on Success too.
  int GetSMMStatus(SMMStatus& status);

  /// The number of compute nodes, numbered from 1: 12 when the constructor's status read found
  /// platform 253, otherwise 4. Sends nothing.
  unsigned long GetNodeNub();

 private:
  boost::shared_ptr<SMMInventoryImpl> implementation_;
};

}  // namespace Tavrin
