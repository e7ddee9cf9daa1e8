#include "tests/doubles/Pauses.h"

using namespace Tavrin::Double;

extern "C" unsigned int sleep(unsigned int seconds) {
  pausedSeconds += seconds;
  return onPause ? onPause(seconds) : 0;
}

extern "C" int clock_nanosleep(clockid_t clock, int flags, const timespec* until,
                               timespec* /*remaining*/) {
  return onWait ? onWait(clock, flags, *until) : 0;
}
