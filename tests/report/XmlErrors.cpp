#include "tests/report/XmlErrors.h"

#include "tests/support/Child.h"

namespace Tavrin {

std::string XmlErrors(const std::string& document) {
  return Child({XMLLINT, "--noout", "--nonet", "-"}, {}, document).Wait().error;
}

}  // namespace Tavrin
