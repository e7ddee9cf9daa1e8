#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Tavrin {

enum class Part;

enum class Command { Identity, Power, Caps, Nodes, Fans, Psus, All, SelectPsu };

/// The command of that name, in exactly that spelling.
std::optional<Command> FindCommand(const std::string& name);

/// The name of the command that `word` was probably meant to be; empty when it is like none.
std::string LikeliestCommand(const std::string& word);

/// What the command reads, in the order of Part, beside the detection that every command begins
/// with.
std::vector<Part> PartsOf(Command command);

/// One line a command, for the help on all of them.
std::string CommandList();

/// The help on one command.
std::string CommandHelp(Command command);

}  // namespace Tavrin
