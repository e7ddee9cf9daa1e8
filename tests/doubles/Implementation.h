#pragma once

#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"

namespace Tavrin::Double {

/// The implementation under the names of the facade.
class Implementation : public SMMInventoryImpl {
 public:
  using SMMInventoryImpl::SMMInventoryImpl;
  int SelectPSU(int psu) { return SelectPSUImpl(psu); }
  int GetSMMStatus(SMMStatus& status) { return GetSMMStatusImp(status); }
};

}  // namespace Tavrin::Double
