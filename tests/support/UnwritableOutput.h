#pragma once

#include <string>
#include <vector>

#include "tests/support/Child.h"

namespace Tavrin {

/// What the call says on standard error, and behind it "code N" for its exit code, for each kind of
/// standard output that takes nothing: a full disk, none at all, and a pipe that nobody reads any
/// more, where the signal for that is ignored.
inline std::vector<std::string> ComplaintsAboutUnwritableOutput(
    const std::vector<std::string>& call, const std::vector<std::string>& environment = {}) {
  std::vector<std::string> complaints;
  for (const std::string script : {
           R"("$0" "$@" >/dev/full; echo "code $?" >&2)",
           R"("$0" "$@" >&-; echo "code $?" >&2)",
           R"((trap '' PIPE; while echo 2>&-; do :; done; "$0" "$@"; echo "code $?" >&2) | :)",
       }) {
    complaints.push_back(Child(AsScript(script, call), environment).Wait().error);
  }
  return complaints;
}

}  // namespace Tavrin
