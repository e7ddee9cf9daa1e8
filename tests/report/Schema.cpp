#include "tests/report/Schema.h"

#include <cstddef>
#include <sstream>

#include "tests/support/Child.h"

namespace Tavrin {

std::vector<std::string> SchemaErrors(const std::vector<std::string>& documents) {
  std::string input;
  for (const std::string& document : documents) {
    input += document + '\n';
  }
  const Finished finished = Child({VALIDATE_JSON, SCHEMA}, {}, input).Wait();
  std::vector<std::string> errors(documents.size());
  std::istringstream lines(finished.output);
  std::size_t number = 0;
  std::string line;
  while (lines >> number && std::getline(lines, line) && line != " documents") {
    errors.at(number) += line.substr(1) + '\n';
  }
  if (line != " documents" || number != documents.size()) {
    errors.assign(documents.size(), "the validator did not read all: " + finished.error);
  }
  return errors;
}

std::string SchemaErrors(const std::string& document) {
  return SchemaErrors(std::vector<std::string>{document}).front();
}

}  // namespace Tavrin
