#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "fleet/FleetObserver.h"
#include "report/EnclosureReading.h"
#include "report/Format.h"
#include "tools/smm-inventory/Ending.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/terminal/FleetProgress.h"
#include "tools/smm-inventory/terminal/Progress.h"

namespace Tavrin {

/// Prints the readings of enclosures in the order of the format, as they end or all at the end, and
/// tells meanwhile on standard error what fails and, to a person at a terminal, how it goes on.
class FleetPrinter : public FleetObserver {
 public:
  /// Both outlive the printer. `console` is that of standard error.
  FleetPrinter(const Options& options, Console& console);

  void Noted(const std::string& text) override;
  void EnclosureBegins(std::size_t index) override;
  Observer* ObserverOf(std::size_t index) override;
  void EnclosureEnded(std::size_t index, Reading&& reading) override;
  void TimePasses() override;

  /// Prints what comes behind the last enclosure. Returns the run's exit code.
  int Finish();

 private:
  [[nodiscard]] bool IsForOne() const { return ended_.size() == 1; }
  void PrintWhatIsDue(std::size_t index);
  void PrintReport(const std::vector<EnclosureReading>& all) const;
  void PrintHealthAndTables(const std::vector<EnclosureReading>& all) const;
  void PrintTables(const std::vector<EnclosureReading>& all) const;
  [[nodiscard]] bool IsFailedHostsFileWritten(const std::vector<Ending>& endings) const;
  void ShowFailures(const std::vector<EnclosureReading>& all,
                    const std::vector<Ending>& endings) const;
  [[nodiscard]] ReportContext Context() const;

  const Options& options_;
  Console& console_;
  LogLines lines_;
  bool showsProgress_;
  Progress progressOfOne_;
  FleetProgress progressOfSeveral_;
  bool waitsForAll_;
  std::vector<std::optional<EnclosureReading>> ended_;
  std::size_t printed_ = 0;  ///< So many of the first ones, where they are printed as asked.
};

}  // namespace Tavrin
