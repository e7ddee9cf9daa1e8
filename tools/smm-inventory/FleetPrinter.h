#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "fleet/FleetObserver.h"
#include "report/EnclosureReading.h"
#include "report/Format.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/terminal/FleetProgress.h"
#include "tools/smm-inventory/terminal/Progress.h"

namespace Tavrin {

/// Prints the readings of many enclosures as they end, in the order of the format, and tells
/// meanwhile on standard error what fails and how it goes on.
class FleetPrinter : public FleetObserver {
 public:
  /// Both outlive the printer. Progress is shown only where the console is a terminal.
  FleetPrinter(const Options& options, Console& console, bool isTerminal);

  void Noted(const std::string& text) override;
  void EnclosureBegins(std::size_t index) override { progress_.Begins(index); }
  void LineWritten(std::size_t index, const Standalone::LogLine& line) override;
  void EnclosureEnded(FleetResult&& result) override;
  void TimePasses() override;

  /// Prints what comes behind the last enclosure. Returns the run's exit code.
  int Finish();

 private:
  void PrintWhatIsDue(std::size_t index);
  void PrintReport(const std::vector<EnclosureReading>& all) const;
  void PrintHealthAndTables(const std::vector<EnclosureReading>& all) const;
  void PrintTables(const std::vector<EnclosureReading>& all) const;
  [[nodiscard]] ReportContext Context() const;

  const Options& options_;
  Console& console_;
  Progress lines_;
  FleetProgress progress_;
  bool showsProgress_;
  bool waitsForAll_;
  std::vector<std::optional<EnclosureReading>> ended_;
  std::size_t printed_ = 0;  ///< So many of the first ones, where they are printed as asked.
};

}  // namespace Tavrin
