#include "fleet/HostsFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>
#include <utility>

#include "fleet/Settings.h"
#include "support/EscapeControlBytes.h"
#include "support/HostRange.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

constexpr const char* kBlanks = " \t";

std::vector<std::string> SplitAt(char separator, const std::string& text) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (std::size_t end = 0; end != std::string::npos; start = end + 1) {
    end = text.find(separator, start);
    pieces.push_back(text.substr(start, end - start));
  }
  return pieces;
}

std::string ParsePasswordFile(const std::string& text) {
  if (text.empty() || text == "-" || text.find('\0') != std::string::npos) {
    throw UsageError(fmt::format("password file is \"{}\"; expected the path of a file",
                                 EscapeControlBytes(text)));
  }
  return text;
}

void SetPort(HostsLine& line, const std::string& text) {
  const std::uint16_t port = ParsePort(text);
  for (HostAndPort& place : line.hosts) {
    RequireOnePort(place, port);
    place.port = port;
  }
}

/// A key of a line, and what becomes of its value.
struct Key {
  std::string_view name;
  void (*set)(HostsLine& line, const std::string& value);
};

constexpr std::array<Key, 8> kKeys = {{
    {"user", [](HostsLine& line,
                const std::string& value) { line.settings.userName = ParseUserName(value); }},
    {"password-file",
     [](HostsLine& line, const std::string& value) {
       line.settings.passwordFile = ParsePasswordFile(value);
     }},
    {"port", SetPort},
    {"cipher-suite",
     [](HostsLine& line, const std::string& value) {
       line.settings.cipherSuite = ParseCipherSuite(value);
     }},
    {"privilege",
     [](HostsLine& line, const std::string& value) {
       line.settings.privilegeLevel = ParsePrivilege(value);
     }},
    {"workaround",
     [](HostsLine& line, const std::string& value) {
       line.settings.workaroundFlags = ParseWorkarounds(SplitAt(',', value));
     }},
    {"session-timeout",
     [](HostsLine& line, const std::string& value) {
       line.settings.sessionTimeoutMs = ParseSessionTimeout(value);
     }},
    {"attempts", [](HostsLine& line,
                    const std::string& value) { line.settings.attempts = ParseAttempts(value); }},
}};

const Key& FindKey(const std::string& name) {
  const auto* const key = std::find_if(kKeys.begin(), kKeys.end(),
                                       [&name](const Key& known) { return known.name == name; });
  if (key == kKeys.end()) {
    std::vector<std::string_view> names;
    std::transform(kKeys.begin(), kKeys.end(), std::back_inserter(names),
                   [](const Key& known) { return known.name; });
    throw UsageError(fmt::format("key is \"{}\"; expected one of {}, each with = and a value",
                                 EscapeControlBytes(name), fmt::join(names, ", ")));
  }
  return *key;
}

/// The line without its comment, its line end and the blanks around it.
std::string Content(std::string line) {
  if (!line.empty() && line.back() == '\r') {
    line.pop_back();
  }
  for (std::size_t at = line.find('#'); at != std::string::npos; at = line.find('#', at + 1)) {
    if (at == 0 || line[at - 1] == ' ' || line[at - 1] == '\t') {
      line.resize(at);
      break;
    }
  }
  const std::size_t first = std::min(line.find_first_not_of(kBlanks), line.size());
  const std::size_t end = line.find_last_not_of(kBlanks) + 1;
  return line.substr(first, end - std::min(first, end));
}

std::vector<std::string> WordsOf(const std::string& content) {
  std::vector<std::string> words;
  for (std::size_t start = 0; start != std::string::npos;) {
    const std::size_t end = content.find_first_of(kBlanks, start);
    words.push_back(content.substr(start, end - start));
    start = content.find_first_not_of(kBlanks, std::min(end, content.size()));
  }
  return words;
}

bool IsHeading(const std::string& content) {
  return content.front() == '[' &&
         content.substr(0, content.find(']')).find(':') == std::string::npos;
}

std::string HeadingOf(const std::string& content) {
  constexpr const char* nameCharacters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  const std::size_t end = content.find_first_not_of(nameCharacters, 1);
  std::string name = content.substr(1, end - 1);
  if (end == 1 || end == std::string::npos || content.substr(end) != "]" || name == "all") {
    throw UsageError(fmt::format(
        "heading is \"{}\"; expected [NAME] alone on its line, with a name other than all, of "
        "letters, digits, -, _ and .",
        EscapeControlBytes(content)));
  }
  return name;
}

HostsLine LineOf(const std::vector<std::string>& words, const std::string& group) {
  HostsLine line = {ExpandHosts(words.front()), group, {}, {}};
  std::vector<const Key*> given;
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    const std::size_t equals = word->find('=');
    const Key& key = FindKey(word->substr(0, equals));
    if (equals == std::string::npos) {
      throw UsageError(fmt::format(
          "key is \"{}\" without a value; expected {}=VALUE, without blanks", key.name, key.name));
    }
    if (std::find(given.begin(), given.end(), &key) != given.end()) {
      throw UsageError(fmt::format("key \"{}\" stands there twice; expected it once", key.name));
    }
    given.push_back(&key);
    key.set(line, word->substr(equals + 1));
    if (key.set != SetPort) {
      line.writtenSettings += (line.writtenSettings.empty() ? "" : " ") + *word;
    }
  }
  return line;
}

/// Takes the lines of a file one after the other.
class LineReader {
 public:
  void Take(const std::string& text) {
    const std::string content = Content(text);
    if (content.empty()) {
      return;
    }
    if (IsHeading(content)) {
      TakeHeading(HeadingOf(content));
      return;
    }
    file_.lines.push_back(LineOf(WordsOf(content), group_));
    count_ += file_.lines.back().hosts.size();
    if (count_ > kMostHosts) {
      throw UsageError(fmt::format("the file names {} hosts up to here; expected at most {}",
                                   count_, kMostHosts));
    }
  }

  [[nodiscard]] HostsFile Result() && { return std::move(file_); }

 private:
  void TakeHeading(std::string name) {
    group_ = std::move(name);
    if (std::find(file_.groups.begin(), file_.groups.end(), group_) == file_.groups.end()) {
      file_.groups.push_back(group_);
    }
  }

  HostsFile file_;
  std::string group_;
  std::size_t count_ = 0;
};

/// Editors on other systems put one in front of UTF-8.
std::string WithoutByteOrderMark(const std::string& text) {
  const std::string_view mark = "\xEF\xBB\xBF";
  return text.substr(text.compare(0, mark.size(), mark) == 0 ? mark.size() : 0);
}

}  // namespace

HostsFile ParseHostsFile(const std::string& text, const std::string& source) {
  LineReader reader;
  std::istringstream lines(WithoutByteOrderMark(text));
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    try {
      reader.Take(line);
    } catch (const UsageError& error) {
      throw UsageError(fmt::format("{}, line {}: {}", source, number, error.what()));
    }
  }
  return std::move(reader).Result();
}

}  // namespace Tavrin
