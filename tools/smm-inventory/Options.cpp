#include "tools/smm-inventory/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "fleet/Settings.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "report/Format.h"
#include "report/Nagios.h"
#include "support/EscapeControlBytes.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/GroupLines.h"
#include "tools/smm-inventory/RawOptions.h"
#include "tools/smm-inventory/Targets.h"

namespace Tavrin {
namespace {

constexpr int kLowestPsu = 1;
constexpr int kHighestPsu = 9;

std::string FormatNames() {
  std::vector<std::string_view> names;
  for (const Format& format : Formats()) {
    names.push_back(format.name);
  }
  return fmt::format("{}", fmt::join(names, ", "));
}

/// The parser takes a flag's value for a count, "true" and negative numbers among them.
void RefuseFlagValues(int argc, const char* const* argv) {
  for (const std::string_view argument :
       std::vector<std::string_view>(argv, std::next(argv, argc))) {
    const std::string_view start = argument.substr(0, argument.find('=') + 1);
    const std::array<std::string_view, 5> flags = {
        "--json=", "--verbose=", "--quiet=", "--nagios=", "--no-ping="};
    if (std::find(flags.begin(), flags.end(), start) != flags.end()) {
      throw UsageError(fmt::format("argument is \"{}\"; expected the option without a value",
                                   EscapeControlBytes(std::string(argument))));
    }
  }
}

[[noreturn]] void RefuseUse(const std::exception& error) {
  throw UsageError(
      fmt::format("wrong use of an option ({}); expected each option once, and with a value where "
                  "--help lists one",
                  EscapeControlBytes(error.what())));
}

const Format* ChooseFormat(const RawOptions& raw) {
  const std::string json = "json";
  const std::string name =
      raw.format.value_or(raw.isJson ? json : std::string(Formats().front().name));
  const Format* const format = FindFormat(name);
  if (format == nullptr) {
    throw UsageError(fmt::format("format is \"{}\"; expected one of {}", EscapeControlBytes(name),
                                 FormatNames()));
  }
  if (raw.isJson && name != json) {
    throw UsageError(
        fmt::format("--format is \"{}\" and --json is given; expected only one of them", name));
  }
  return format;
}

void TakeFleetSettings(const RawOptions& raw, Options& options) {
  constexpr int longest = 86400;
  options.isQuiet = raw.isQuiet;
  options.asksPresence = !raw.leavesPresenceOut;
  if (raw.fanout) {
    options.fanout = static_cast<std::size_t>(
        ParseWholeNumber("fan-out", *raw.fanout, 1, static_cast<int>(kMaxFanout)));
  }
  if (raw.timeout) {
    options.timeout = std::chrono::seconds(ParseWholeNumber("time-out", *raw.timeout, 1, longest));
  }
  options.failedTo = raw.failedTo;
  options.hostsFile = raw.hostsFile;
}

IgnoredFinding ParseIgnored(const std::string& text) {
  try {
    return ParseIgnoredFinding(text);
  } catch (const std::invalid_argument& error) {
    throw UsageError(error.what());
  }
}

void TakeHealthSettings(const RawOptions& raw, Options& options) {
  options.isForNagios = raw.isForNagios;
  std::transform(raw.ignored.begin(), raw.ignored.end(), std::back_inserter(options.ignored),
                 ParseIgnored);
  const std::vector<std::string_view>& fields = GroupFields();
  if (raw.groupBy && std::find(fields.begin(), fields.end(), *raw.groupBy) == fields.end()) {
    throw UsageError(fmt::format("--group-by is \"{}\"; expected one of {}",
                                 EscapeControlBytes(*raw.groupBy), fmt::join(fields, ", ")));
  }
  options.groupField = raw.groupBy.value_or("");
}

/// An option, and whether it is given.
using GivenOption = std::pair<const char*, bool>;

/// What an option would have to change, and cannot, is refused rather than left out.
void RefuseOptionsOfReading(const RawOptions& raw, const Command& command) {
  std::vector<GivenOption> options = {{"fanout", raw.fanout.has_value()},
                                      {"timeout", raw.timeout.has_value()},
                                      {"failed-to", raw.failedTo.has_value()},
                                      {"ignore", !raw.ignored.empty()}};
  if (command.AsksNobody()) {
    options.insert(options.end(), {{"format", raw.format.has_value()},
                                   {"json", raw.isJson},
                                   {"no-ping", raw.leavesPresenceOut}});
  }
  for (const auto& [name, isGiven] : options) {
    if (isGiven) {
      throw UsageError(
          fmt::format("--{} is given with the command {}; expected it with one that reads", name,
                      command.name));
    }
  }
}

void RefuseWhatDoesNotGoTogether(const RawOptions& raw, const Options& options) {
  const Command& command = *options.task.command;
  const bool isForAll = &command == &Commands().front();
  if (raw.groupBy && (!isForAll || !options.IsText() || raw.isForNagios)) {
    throw UsageError("--group-by is given with a command, a format or --nagios; expected it alone");
  }
  if (raw.isForNagios && !(isForAll || options.IsAboutHealth())) {
    throw UsageError(
        fmt::format("--nagios is given with the command {}; expected it alone", command.name));
  }
  if (raw.isForNagios && !options.IsText()) {
    throw UsageError("--nagios is given with a format; expected it alone");
  }
  if (options.IsAboutHealth() && options.format->name == "csv") {
    throw UsageError(
        "format is \"csv\" with the command health; expected one that holds health: text, json, "
        "jsonl or html");
  }
  if (command.isForOne || command.AsksNobody()) {
    RefuseOptionsOfReading(raw, command);
  }
}

void RequireOneForNagios(const Options& options) {
  if (options.isForNagios && options.targets.size() != 1) {
    throw UsageError(fmt::format("{} hosts are named; expected exactly one with --nagios",
                                 options.targets.size()));
  }
}

Options Interpret(const RawOptions& raw, const Task& task) {
  RequireHosts(raw);
  Options options;
  options.task = task;
  options.format = ChooseFormat(raw);
  options.verbosity = static_cast<unsigned int>(raw.verbosity);
  TakeFleetSettings(raw, options);
  TakeHealthSettings(raw, options);
  RefuseWhatDoesNotGoTogether(raw, options);
  TakeTargets(raw, options);
  RequireOneForNagios(options);
  return options;
}

[[noreturn]] void RefuseArgument(const std::string& argument, const std::string& suggestion) {
  throw UsageError(
      fmt::format("argument is \"{}\"; expected one command, and the options that --help lists{}",
                  EscapeControlBytes(argument),
                  suggestion.empty() ? "" : fmt::format("; did you mean {}?", suggestion)));
}

/// Reads the command and what belongs to it from the words that are no options. A negative number
/// is among them, too.
Task ParseTask(const std::vector<std::string>& words) {
  if (words.empty()) {
    return {&Commands().front(), 0};
  }
  Task task{FindCommand(words[0]), 0};
  if (task.command == nullptr) {
    RefuseArgument(words[0], LikeliestCommand(words[0]));
  }
  std::size_t known = 1;
  if (!task.command->argument.empty()) {
    if (words.size() == known) {
      throw UsageError(fmt::format("no PSU given; expected select-psu with a number from {} to {}",
                                   kLowestPsu, kHighestPsu));
    }
    task.psu = ParseWholeNumber("PSU", words[known], kLowestPsu, kHighestPsu);
    ++known;
  }
  if (words.size() > known) {
    RefuseArgument(words[known], "");
  }
  return task;
}

/// The help on the command that is among the words, or on all.
Notice Help(const CLI::App& app) {
  const std::vector<std::string> words = app.remaining();
  const Command* const command = words.empty() ? nullptr : FindCommand(words[0]);
  return {command == nullptr ? app.help() : CommandHelp(*command)};
}

}  // namespace

unsigned int Options::ShownLogLevel() const {
  // The first -v shows warnings beside errors, since errors alone say no more than the tool does in
  // its own words.
  return verbosity == 0 ? 0 : std::min(verbosity + 1, Standalone::LogLevel::Debug);
}

bool Options::IsText() const { return format == &Formats().front(); }

bool Options::IsAboutHealth() const { return task.command->name == kHealthCommand; }

bool Options::ShowsHealthFirst() const {
  return IsText() && (IsAboutHealth() || task.command == &Commands().front());
}

std::vector<Part> Options::Parts() const {
  if (isForNagios) {
    return {kNagiosParts.begin(), kNagiosParts.end()};
  }
  return groupField.empty() ? task.command->parts.Parts() : std::vector<Part>{Part::Identity};
}

bool IsForNagios(int argc, const char* const* argv) {
  return std::find(argv, std::next(argv, argc), std::string_view("--nagios")) !=
         std::next(argv, argc);
}

std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv) {
  CLI::App app("", "smm-inventory");
  RawOptions raw;
  Declare(app, raw);
  RefuseFlagValues(argc, argv);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return Help(app);
  } catch (const CLI::CallForVersion& version) {
    return Notice{std::string(version.what()) + '\n'};
  } catch (const UsageError&) {
    throw;
  } catch (const std::exception& error) {
    RefuseUse(error);
  }
  return Interpret(raw, ParseTask(app.remaining()));
}

}  // namespace Tavrin
