#include "report/Words.h"

namespace Tavrin {

std::string Word(SMMIype generation) {
  switch (generation) {
    case SMM_FIRST_GENERATION:
      return "first";
    case SMM_SECOND_GENERATION:
      return "second";
  }
  return "unknown";
}

std::string Word(NodePowerState state) {
  switch (state) {
    case NodePowerState::On:
      return "on";
    case NodePowerState::Off:
      return "off";
    case NodePowerState::NoPermission:
      return "noPermission";
    case NodePowerState::PowerFault:
      return "powerFault";
    case NodePowerState::Fault:
      break;
  }
  return "fault";
}

std::string Word(NodeWidth width) {
  switch (width) {
    case NodeWidth::Half:
      return "half";
    case NodeWidth::Full:
      return "full";
    case NodeWidth::Other:
      break;
  }
  return "other";
}

std::string Word(PsuFanState state) {
  switch (state) {
    case PsuFanState::Normal:
      return "normal";
    case PsuFanState::Abnormal:
      return "abnormal";
    case PsuFanState::NotPresent:
      return "notPresent";
    case PsuFanState::Unknown:
      break;
  }
  return "unknown";
}

}  // namespace Tavrin
