#pragma once

#include <array>
#include <string>
#include <vector>

#include "report/Health.h"

namespace Tavrin {

// Health of one enclosure as a plugin of a monitoring system reports it, by the Monitoring Plugins
// guidelines: one line of text with numbers behind "|", and an exit code.

/// What has to be read for the line, beside the detection: what health is judged by, and the power
/// readings; in the order of Part. Power that was not read leaves out its numbers and nothing else.
inline constexpr std::array kNagiosParts = {Part::ChassisPower, Part::NodeStatus, Part::NodePower,
                                            Part::PsuFans, Part::PsuStatus};

/// 0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN.
int NagiosExitCode(Severity severity);

/// The line for a reading, with its line break, such as
/// "SMM CRITICAL - node 2 power fault | 'chassis_power'=633;;;0 'node1_power'=101;;;0". The numbers
/// are the average power readings, as far as there are any, without a unit, since the SMM states
/// none; without any there is no "|". Which word it is, WorstOf() says of the same findings:
/// CRITICAL wins over WARNING, WARNING over UNKNOWN.
std::string NagiosLine(const Reading& reading, const std::vector<IgnoredFinding>& ignored);

/// The line for a problem that left nothing to judge, such as wrong usage: "SMM UNKNOWN - " and the
/// problem, with its line break. Any byte may occur in it; none gets out that could end the line or
/// its text.
std::string NagiosProblemLine(const std::string& problem);

}  // namespace Tavrin
