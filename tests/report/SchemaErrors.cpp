#include "tests/report/SchemaErrors.h"

#include <sstream>

#include "tests/support/Child.h"

namespace Tavrin {

std::vector<std::string> SchemaErrors(const std::vector<std::string>& documents) {
  std::string input;
  for (const std::string& document : documents) {
    input += document + '\n';
  }
  const Finished finished = Child({VALIDATE_JSON, SCHEMA}, {}, input).Wait();
  std::vector<std::string> errors;
  std::istringstream lines(finished.output);
  for (std::string line; std::getline(lines, line);) {
    errors.push_back(line);
  }
  if (errors.size() != documents.size()) {
    errors.assign(documents.size(), "the validator did not read all: " + finished.error);
  }
  return errors;
}

}  // namespace Tavrin
