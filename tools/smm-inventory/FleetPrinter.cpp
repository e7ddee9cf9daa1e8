#include "tools/smm-inventory/FleetPrinter.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

#include "report/Health.h"
#include "report/HealthLines.h"
#include "report/Nagios.h"
#include "support/HostAndPort.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/ExitCode.h"
#include "tools/smm-inventory/FailedHostsFile.h"
#include "tools/smm-inventory/FailureLines.h"
#include "tools/smm-inventory/GroupLines.h"
#include "tools/smm-inventory/Interrupt.h"
#include "tools/smm-inventory/terminal/Capabilities.h"
#include "tools/smm-inventory/terminal/HealthColours.h"

namespace Tavrin {
namespace {

std::string NameOf(const Target& target) {
  const HostAndPort place = PlaceOf(target);
  return place.port ? AddressText(place.host, *place.port) : place.host;
}

std::vector<std::string> NamesOf(const std::vector<Target>& targets) {
  std::vector<std::string> names;
  std::transform(targets.begin(), targets.end(), std::back_inserter(names), NameOf);
  return names;
}

/// A terminal that cannot move its cursor would show a line for each look at many enclosures.
bool ShowsProgress(const Options& options) {
  const bool isFit =
      options.targets.size() == 1 ? IsTerminal(STDERR_FILENO) : CanMoveCursor(STDERR_FILENO);
  return isFit && !options.isQuiet;
}

/// Whether nothing is printed before the last enclosure has ended.
bool WaitsForAll(const Options& options) {
  return options.ShowsHealthFirst() || !options.groupField.empty() || options.targets.size() == 1 ||
         options.format->several.order == Order::AllTogether;
}

Severity WorstOfAll(const std::vector<EnclosureReading>& all, const Options& options) {
  Severity worst = Severity::Ok;
  for (const EnclosureReading& each : all) {
    worst = std::max(worst, WorstOf(FindingsOf(each.reading, options.ignored)));
  }
  return worst;
}

/// A fault counts for more than what was not read, and what was not read for more than that all
/// else is well.
int HealthExitCode(Severity worst, int exitCodeOfReading) {
  if (worst >= Severity::Warning) {
    return ExitCode::FaultFound;
  }
  const bool isUnknown = worst == Severity::Unknown && exitCodeOfReading == ExitCode::Success;
  return isUnknown ? ExitCode::QueryFailed : exitCodeOfReading;
}

int CodeOf(const std::vector<EnclosureReading>& all, const std::vector<Ending>& endings,
           const Options& options) {
  if (options.isForNagios) {
    return NagiosExitCode(WorstOfAll(all, options));
  }
  if (Interrupt::Happened()) {
    return ExitCode::Interrupted;
  }
  const int exitCode = ExitCodeOf(endings);
  return options.IsAboutHealth() ? HealthExitCode(WorstOfAll(all, options), exitCode) : exitCode;
}

}  // namespace

FleetPrinter::FleetPrinter(const Options& options, Console& console)
    : options_(options),
      console_(console),
      lines_(console, options.ShownLogLevel()),
      showsProgress_(ShowsProgress(options)),
      progressOfOne_(console, options.ShownLogLevel()),
      progressOfSeveral_(console, NamesOf(options.targets)),
      waitsForAll_(WaitsForAll(options)),
      ended_(options.targets.size()) {
  if (!waitsForAll_) {
    std::cout << options.format->several.begin << std::flush;
  }
}

void FleetPrinter::Noted(const std::string& text) { console_.ShowLine("smm-inventory: " + text); }

void FleetPrinter::EnclosureBegins(std::size_t index) {
  progressOfSeveral_.Begins(index);
  if (showsProgress_ && IsForOne()) {
    const Target& target = options_.targets[index];
    console_.ShowStatus("connecting to " + AddressText(target.host, target.port) + " ...");
  }
}

Observer* FleetPrinter::ObserverOf(std::size_t index) {
  if (IsForOne()) {
    return showsProgress_ ? &progressOfOne_ : &lines_;
  }
  lines_.TellAbout(NameOf(options_.targets[index]));
  return &lines_;
}

void FleetPrinter::EnclosureEnded(std::size_t index, Reading&& reading) {
  const Target& target = options_.targets[index];
  ended_[index] = {std::move(reading), index, NameOf(target), target.group};
  const Ending ending = EndingOf(ended_[index]->reading);
  progressOfSeveral_.Ended(index, ending == Ending::Read);
  const bool isTold = ending != Ending::Read && ending != Ending::Stopped;
  if (isTold && !IsForOne()) {
    console_.ShowLine(NamedFailureLines(ended_[index]->reading));
  }
  if (!waitsForAll_) {
    PrintWhatIsDue(index);
  }
}

void FleetPrinter::PrintWhatIsDue(std::size_t index) {
  console_.EndStatus();
  const FormatOfSeveral& format = options_.format->several;
  if (format.order == Order::AsEnded) {
    std::cout << format.enclosure(*ended_[index], Context()) << std::flush;
    return;
  }
  for (; printed_ < ended_.size() && ended_[printed_]; ++printed_) {
    std::cout << format.enclosure(*ended_[printed_], Context()) << std::flush;
  }
}

void FleetPrinter::TimePasses() {
  if (showsProgress_ && !IsForOne()) {
    progressOfSeveral_.Show();
  }
}

int FleetPrinter::Finish() {
  console_.EndStatus();
  std::vector<EnclosureReading> all;
  std::vector<Ending> endings;
  for (std::optional<EnclosureReading>& each : ended_) {
    endings.push_back(EndingOf(each->reading));
    all.push_back(std::move(*each));
  }
  PrintReport(all);
  if (!options_.isForNagios) {
    ShowFailures(all, endings);
  }
  const bool isWritten = IsFailedHostsFileWritten(endings);
  const int exitCode = CodeOf(all, endings, options_);
  return isWritten || exitCode != ExitCode::Success ? exitCode : ExitCode::Exception;
}

/// What was found counts for more than that a file cannot be written, which is told.
bool FleetPrinter::IsFailedHostsFileWritten(const std::vector<Ending>& endings) const {
  try {
    if (options_.failedTo) {
      WriteFailedHostsFile(*options_.failedTo, FailedHosts(options_.targets, endings));
    }
    return true;
  } catch (const UsageError& error) {
    std::cerr << "smm-inventory: " << error.what() << '\n';
    return false;
  }
}

/// Those of several have been told as each of them ended.
void FleetPrinter::ShowFailures(const std::vector<EnclosureReading>& all,
                                const std::vector<Ending>& endings) const {
  std::cerr << (IsForOne() ? FailureLines(all.front().reading)
                           : SummaryLine(options_.targets, endings))
            << std::flush;
}

void FleetPrinter::PrintReport(const std::vector<EnclosureReading>& all) const {
  const FormatOfSeveral& format = options_.format->several;
  if (!waitsForAll_) {
    std::cout << format.end(all, Context());
  } else if (options_.isForNagios) {
    std::cout << NagiosLine(all.front().reading, options_.ignored);
  } else if (!options_.groupField.empty()) {
    std::cout << GroupLines(options_.groupField, all, options_.targets);
  } else {
    PrintHealthAndTables(all);
  }
  std::cout << std::flush;
}

void FleetPrinter::PrintHealthAndTables(const std::vector<EnclosureReading>& all) const {
  if (options_.ShowsHealthFirst()) {
    std::cout << HealthOnTerminal(HealthLines(all, options_.ignored), HasColours());
  }
  if (!options_.IsText() || !options_.IsAboutHealth()) {
    std::cout << (options_.ShowsHealthFirst() ? "\n" : "");
    PrintTables(all);
  }
}

void FleetPrinter::PrintTables(const std::vector<EnclosureReading>& all) const {
  if (IsForOne()) {
    std::cout << options_.format->document(all.front(), Context());
    return;
  }
  const FormatOfSeveral& format = options_.format->several;
  std::cout << format.begin;
  for (const EnclosureReading& each : all) {
    std::cout << format.enclosure(each, Context());
  }
  std::cout << format.end(all, Context());
}

ReportContext FleetPrinter::Context() const {
  return {SMM_INVENTORY_VERSION, options_.ignored, options_.IsAboutHealth()};
}

}  // namespace Tavrin
