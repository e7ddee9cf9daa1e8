#include "tools/smm-inventory/MemoryImage.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <stdexcept>

namespace Tavrin {

void ForbidMemoryImages() {
  // Where core files go to a program instead of a file, the limit does not hold.
  const rlimit none{0, 0};
  if (setrlimit(RLIMIT_CORE, &none) != 0 || prctl(PR_SET_DUMPABLE, 0) != 0) {
    throw std::runtime_error("core files cannot be switched off");
  }
}

}  // namespace Tavrin
