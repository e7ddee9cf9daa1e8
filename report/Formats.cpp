#include <algorithm>

#include "report/CsvFormat.h"
#include "report/Format.h"
#include "report/HtmlFormat.h"
#include "report/JsonFormat.h"
#include "report/TextFormat.h"

namespace Tavrin {

const std::vector<Format>& Formats() {
  static const std::vector<Format> formats = {TextFormat(), JsonFormat(), CsvFormat(),
                                              JsonLinesFormat(), HtmlFormat()};
  return formats;
}

const Format* FindFormat(std::string_view name) {
  const auto found =
      std::find_if(Formats().begin(), Formats().end(),
                   [name](const Format& candidate) { return candidate.name == name; });
  return found == Formats().end() ? nullptr : &*found;
}

}  // namespace Tavrin
