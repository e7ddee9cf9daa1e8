#pragma once

#include <string>
#include <vector>

#include "fleet/Target.h"
#include "reading/Reading.h"

namespace Tavrin {

/// How the reading of one enclosure ended, as far as programs have to do something else about it.
enum class Ending {
  Read,        ///< Everything that was asked for.
  NotReached,  ///< Nobody answered, or nobody can be there.
  UserRefused,
  PasswordRefused,
  PrivilegeRefused,
  TimedOut,
  Stopped,
  PartlyRead,
  UnexpectedError,  ///< An exception outside the queries.
  NotRead           ///< Nothing, for any other reason.
};

/// The ending of a reading, by its failure, or by the first query that failed.
Ending EndingOf(const Reading& reading);

/// The exit code of a run in which the readings of all enclosures, at least one, ended like this.
int ExitCodeOf(const std::vector<Ending>& endings);

/// One line about those that were not read whole, with its line break:
/// "failed 3 of 500: rack[03,17-18] (not reached 2, password 1)". Empty without any.
/// The targets stand in the order of the endings.
std::string SummaryLine(const std::vector<Target>& targets, const std::vector<Ending>& endings);

/// The same enclosures as a hosts file, one a line, with the settings that their own lines have.
std::string FailedHosts(const std::vector<Target>& targets, const std::vector<Ending>& endings);

}  // namespace Tavrin
