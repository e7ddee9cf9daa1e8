#include "tests/report/Schema.h"

#include "tests/support/ChildProcess.h"

namespace Tavrin {

std::string SchemaErrors(const std::string& document) {
  const Finished finished = Child({VALIDATE_JSON, SCHEMA}, {}, document).Wait();
  const std::string errors = finished.output + finished.error;
  return errors.empty() && finished.exitCode != 0 ? "the validator did not run" : errors;
}

}  // namespace Tavrin
