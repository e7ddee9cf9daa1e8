#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "reading/Reading.h"

namespace Tavrin {

/// What a command reads, in the order of Part, beside the detection that every command begins with.
class PartList {
 public:
  template <typename... Parts>
  constexpr explicit PartList(Parts... those) : parts_{those...}, count_(sizeof...(those)) {}
  template <std::size_t count>
  constexpr explicit PartList(const std::array<Part, count>& those) : parts_{}, count_(count) {
    for (std::size_t index = 0; index < count; ++index) {
      parts_[index] = those[index];
    }
  }

  [[nodiscard]] std::vector<Part> Parts() const {
    return {parts_.begin(), parts_.begin() + count_};
  }

 private:
  std::decay_t<decltype(kPartsToAskFor)> parts_;
  std::size_t count_;
};

/// All that the tool knows of a command; what concerns every one is derived from it.
struct Command {
  std::string_view name;

  /// As it follows the name: the number of a PSU, or nothing.
  std::string_view argument;

  /// One line of the list of commands; what stands behind a line break goes into its column.
  std::string_view summary;

  /// Whole sentences for the help on the command alone, in lines of at most 100 characters.
  std::string_view details;

  /// A command line behind the tool's name.
  std::string_view example;

  PartList parts;

  /// Whether it is for a single enclosure, which is named by itself.
  bool isForOne = false;

  /// Whether it sends nothing, and so needs neither user nor password.
  [[nodiscard]] bool AsksNobody() const { return parts.Parts().empty(); }
};

/// The command that judges instead of showing.
constexpr std::string_view kHealthCommand = "health";

/// All commands, the default first.
const std::vector<Command>& Commands();

/// The command of that name, in exactly that spelling; nullptr when there is none.
const Command* FindCommand(std::string_view name);

/// The name of the command that `word` was probably meant to be; empty when it is like none.
std::string LikeliestCommand(const std::string& word);

/// One line a command, for the help on all of them.
std::string CommandList();

/// The help on one command.
std::string CommandHelp(const Command& command);

}  // namespace Tavrin
