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
///   With an SMM that stays silent, an exchange blocks for as many times the session time-out of
///   the IPMI client as there are attempts (standalone client: 3 times 4.5 seconds by default). One
///   that answers, but each step late, can take longer; docs/reliability.md gives the bound.
/// - It returns one of the values of StatusCode. An output argument belongs to the caller. Unless
///   the operation says otherwise, it is replaced as a whole on Success and left exactly as passed
///   on every other status.
/// - Exceptions of the platform libraries and of allocation pass through to the caller.
/// - Byte positions in these comments count from 0 at the first byte after the completion code. A
///   second-generation SMM puts one or two bytes in front of some answers; they are removed first,
///   and an answer shorter than the bytes to remove raises std::bad_alloc where the operation says
///   so. One that falls silent once the connection is open counts as having answered without a
///   byte, hence std::bad_alloc also comes then.
/// - Signals that the program catches neither shorten its pauses nor change errno by them.
///
/// Copies share one implementation. One object, together with all its copies, is to be used from
/// one thread at a time; objects constructed separately are independent.
class POVEIXME_EXPORT SMMInventory {
 public:
  /// Copies `info`, detects the generation of the SMM and reads its status, from which the number
  /// of PSU slots and of compute nodes follows.
  ///
  /// Blocks for at least 18 seconds with an SMM that answers normally: the status read makes six
  /// attempts with a pause of 3 seconds after each. The detection is one exchange more; on the
  /// standalone platform up to three, half a second apart, when the SMM is busy or falls silent
  /// once the connection is open. With one that is silent from the start, it blocks for those 18
  /// seconds and for seven exchanges, the detection included. An SMM that cannot be reached, or
  /// refuses, does not make construction fail: the object is usable and assumes 2 PSU slots and 4
  /// nodes. It throws only what the platform libraries or allocation throw.
  ///
  /// What construction finds out, or fails to, holds for as long as the object and its copies live.
  /// An SMM whose generation is not found out is taken for one of the first: should one of the
  /// second generation answer later, operations give wrong numbers and return Success. The remedy
  /// is a new object. With the standalone platform, whoever keeps an object learns on the
  /// constructing thread, before anything else is asked there, what it knows:
  /// - GetLastDetectionOutcome() (LastDetection.h) is Unknown when it does not know the generation.
  /// - GetLastExchange() (LastExchange.h) is that of the last status read, which was of use when it
  ///   was answered with completion code 0 and at least one byte. Fewer than 14 bytes do not tell
  ///   the platform, which leaves 2 PSU slots and 4 nodes.
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

  /// Reads the firmware version of the SMM from network function 0x32, command 0xA8, no data: the
  /// build name (the printable ASCII characters from byte 5 up to the first other byte, which may
  /// be none), "-", byte 0 in lower-case hexadecimal, ".", and byte 1 in lower-case hexadecimal
  /// with two digits.
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent; UnusableAnswer when the completion code is not 0 or fewer than six bytes came. A
  /// second-generation SMM puts one byte in front; throws std::bad_alloc when it answers without
  /// any.
  int GetSmmVersion(std::string& version);

  /// Reads the name of the SMM: the printable ASCII characters from byte 0 of the answer to network
  /// function 0x32, command 0xB0, data 05 0B, up to the first other byte, with the blanks at both
  /// ends. The text may be empty.
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent; UnusableAnswer when the completion code is not 0 or no byte came. A second-generation
  /// SMM puts two bytes in front; throws std::bad_alloc when it answers with fewer.
  int GetSmmName(std::string& name);

  /// Reads the power consumption of the whole enclosure: network function 0x32, command 0x98, data
  /// 05, or 0D on platform 253. Readings of 0 and 65535 are handed back as numbers.
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent; UnusableAnswer when the completion code is not 0 or fewer than six bytes came. A
  /// second-generation SMM puts one byte in front; throws std::bad_alloc when it answers without
  /// any.
  int GetChassisPowerConsumption(ChassisPowerCon& power);

  /// Reads the power caps of the enclosure: network function 0x32, command 0x9D, data 05, or 0D on
  /// platform 253. A cap of 0 becomes "N/A".
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent; UnusableAnswer when the completion code is not 0 or fewer than ten bytes came. A
  /// second-generation SMM puts one byte in front; throws std::bad_alloc when it answers without
  /// any.
  int GetChassisPowerCap(ChassisPowerCap& cap);

  /// Reads the power consumption of one compute node, numbered from 1 to GetNodeNub(): network
  /// function 0x32, command 0x98, data: the node number. Readings of 0 and 65535 become "N/A".
  ///
  /// At most one exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing
  /// was sent; UnusableAnswer when the node number is out of range (nothing is sent then), the
  /// completion code is not 0 or fewer than six bytes came. The byte that a second-generation SMM
  /// puts in front is removed from an answer of seven bytes or more; one of six is read as it is.
  int GetNodePowerConsumption(unsigned long node, ChassisPowerCon& power);

  /// Reads the fans of every PSU and appends one record a slot to `fans`, in ascending order; what
  /// `fans` held stays in front. Network function 0x32, command 0xA5, data: the slot. Readings of 0
  /// become "N/A", those of an absent PSU too.
  ///
  /// One exchange a slot. Returns Success when every slot was asked, and without slots; a slot
  /// whose completion code is not 0, or which gave fewer than four bytes (eight, with the one in
  /// front, on a second-generation SMM), is left out. Returns ConnectionKindNotAdmitted or
  /// NotConnected as soon as one exchange fails; the records of earlier slots stay appended.
  int GetPSUFanSpeed(std::vector<PSUFanSpeed>& fans);

  /// Reads the firmware data of every PSU and appends one record a slot to `firmware`, in ascending
  /// order; what `firmware` held stays in front. A slot that does not give all of version (at least
  /// two bytes), manufacturer (five) and position (two) with completion code 0 is left out: it
  /// holds no usable PSU. PSUFwInfo tells the requests.
  ///
  /// Up to three exchanges a slot: the versions of all slots, then the manufacturers, then the
  /// positions. Returns Success; ConnectionKindNotAdmitted or NotConnected as soon as one exchange
  /// fails; NoUsableResult without PSU slots and, on an SMM of neither generation, when the last
  /// slot gave a good manufacturer answer, since nothing tells how to read it. `firmware` is left
  /// as passed on every status but Success.
  int GetPSUFwInfo(std::vector<PSUFwInfo>& firmware);

  /// Reads the status flags of all PSUs into one record a slot, the first of slot 1: network
  /// function 0x32, command 0x91, no data.
  ///
  /// One exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing was
  /// sent, with `psus` left as passed; UnusableAnswer when the completion code is not 0 or fewer
  /// than six bytes came, with one record of empty texts a slot in `psus`. What `psus` held is gone
  /// on Success and on UnusableAnswer. The power-good flag of a second-generation answer of exactly
  /// six bytes, which lacks it, reads 0.
  int GetPSUStatus(std::vector<PSUStatus>& psus);

  /// Asks the SMM to select a PSU: network function 0x32, command 0xF4, data 00 and the low eight
  /// bits of `psu`. A value that is too large is not refused. The first generation sends 3 for
  /// everything above 3. The second generation leaves the second byte out above 9 on platform 253,
  /// above 2 on platform 254, and always on any other. Negative values travel as their low eight
  /// bits.
  ///
  /// Up to six exchanges with a pause of 3 seconds after each, 18 seconds in all, until the SMM
  /// acknowledges with completion code 0 and exactly one byte. Returns Success when the last answer
  /// had completion code 0 and at least one byte, hence also after six answers of two bytes or
  /// more; otherwise NoUsableResult. Failures of the exchanges are not told apart.
  int SelectPSU(int psu);

  /// Reads the status of one compute node, numbered from 1 to GetNodeNub(): network function 0x32,
  /// command 0xA7, data: the node number. A power state of unknown code is "Fault" and no failure.
  ///
  /// At most one exchange. Returns Success; ConnectionKindNotAdmitted or NotConnected when nothing
  /// was sent; UnusableAnswer when the node number is out of range (nothing is sent then), the
  /// completion code is not 0 or the answer does not hold exactly four bytes. A second-generation
  /// answer may also hold five, of which the first is removed.
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
