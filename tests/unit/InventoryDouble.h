#pragma once

#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"
#include "tests/unit/PlatformDouble.h"

namespace Tavrin::Double {

/// A test of queries: the inventory object is there, of the first generation, with 2 PSU slots and
/// 4 nodes, and what its construction wrote and sent is forgotten. Tests change its members as the
/// SMM that they speak of requires.
class InventoryTest : public PlatformTest {
 protected:
  InventoryTest() : inventory(Construct()) { platform.ForgetWhatHappened(); }

  SMMInventoryImpl inventory;

 private:
  SMMInventoryImpl Construct() {
    platform.ExpectStatusReads(1, {0x01});
    return SMMInventoryImpl(platform.expectedSettings);
  }
};

}  // namespace Tavrin::Double
