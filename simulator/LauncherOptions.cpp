#include "simulator/LauncherOptions.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <charconv>
#include <optional>
#include <system_error>

#include "simulator/LoopbackPort.h"
#include "simulator/Scenario.h"
#include "support/FileDescriptor.h"

namespace Tavrin::Simulator {
namespace {

constexpr std::size_t kMaxUserName = 16;
constexpr std::size_t kMaxPassword = 20;
constexpr std::size_t kMaxFileSize = std::size_t{1} << 20U;

/// The options as typed.
struct Texts {
  std::optional<std::string> generation;
  std::optional<std::string> platform;
  std::string address = "127.0.0.1";
  std::string port = "0";
  std::string userName = "admin";
  std::optional<std::string> passwordFile;
  std::optional<std::string> scenarioFile;
};

[[noreturn]] void Refuse(const std::string& option, const std::string& value,
                         const std::string& expected) {
  throw UsageError(option + " is \"" + value + "\"; expected " + expected);
}

EnclosureKind ReadKind(const Texts& texts) {
  if (!texts.generation) {
    throw UsageError("--generation is missing; expected 1 or 2");
  }
  if (texts.generation == "1") {
    // It reports no platform id; its readers count it as 254.
    if (texts.platform.value_or("254") != "254") {
      Refuse("--platform", *texts.platform, "254 or none with --generation 1");
    }
    return EnclosureKind::FirstGeneration;
  }
  if (texts.generation != "2") {
    Refuse("--generation", *texts.generation, "1 or 2");
  }
  if (texts.platform.value_or("253") == "253") {
    return EnclosureKind::SecondGeneration253;
  }
  if (texts.platform != "254") {
    Refuse("--platform", *texts.platform, "253 or 254");
  }
  return EnclosureKind::SecondGeneration254;
}

std::uint16_t ReadPort(const std::string& text) {
  std::uint16_t port{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end) {
    Refuse("--port", text, "a number from 0 (any free one) to 65535");
  }
  return port;
}

[[noreturn]] void RefuseUnreadable(const std::string& option, const std::string& path) {
  Refuse(option, path, "a readable file (" + std::generic_category().message(errno) + ")");
}

/// By the system's own calls, since a stream does not tell why it failed.
std::string ReadFile(const std::string& option, const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (file.Get() < 0) {
    RefuseUnreadable(option, path);
  }
  std::string content;
  std::array<char, 4096> chunk{};
  ssize_t count = 0;
  while ((count = read(file.Get(), chunk.data(), chunk.size())) > 0) {
    content.append(chunk.data(), static_cast<std::size_t>(count));
    if (content.size() > kMaxFileSize) {
      Refuse(option, path, "a file of at most " + std::to_string(kMaxFileSize) + " bytes");
    }
  }
  if (count < 0) {
    RefuseUnreadable(option, path);
  }
  return content;
}

std::string LengthsUpTo(std::size_t longest) {
  return "1 to " + std::to_string(longest) + " bytes";
}

std::string CheckedUserName(const std::string& name) {
  if (name.empty() || name.size() > kMaxUserName) {
    throw UsageError("--user is " + std::to_string(name.size()) + " bytes long; expected " +
                     LengthsUpTo(kMaxUserName));
  }
  return name;
}

/// The first line of the file. No sentence shows any of it.
std::string ReadPassword(const std::optional<std::string>& path) {
  if (!path) {
    return "simulated";
  }
  const std::string content = ReadFile("--password-file", *path);
  std::string password = content.substr(0, content.find('\n'));
  if (!password.empty() && password.back() == '\r') {
    password.pop_back();
  }
  if (password.empty() || password.size() > kMaxPassword) {
    Refuse("--password-file", *path, "a first line of " + LengthsUpTo(kMaxPassword));
  }
  if (password.find('\0') != std::string::npos) {
    Refuse("--password-file", *path, "a first line without 0x00 bytes");
  }
  return password;
}

std::string ReadScenario(const std::optional<std::string>& path, EnclosureKind kind) {
  if (!path) {
    return {};
  }
  std::string content = ReadFile("--scenario", *path);
  ParseScenario(content, *path, MakeEnclosure(kind));
  return content;
}

void Define(CLI::App& app, Texts& texts) {
  app.add_option("--generation", texts.generation, "Generation of the SMM: 1 or 2 (required)");
  app.add_option("--platform", texts.platform,
                 "Platform id: 253 (default) or 254; with --generation 1 only 254");
  app.add_option("--address", texts.address, "Loopback address to listen on (default 127.0.0.1)");
  app.add_option("--port", texts.port, "UDP port to listen on (default 0: a free one)");
  app.add_option("--user", texts.userName, "IPMI user name (default admin)");
  app.add_option("--password-file", texts.passwordFile,
                 "File whose first line is the password (default password: simulated)");
  app.add_option("--scenario", texts.scenarioFile,
                 "JSON file that changes the enclosure or its answers");
}

}  // namespace

LauncherOptions ParseLauncherOptions(int argc, const char* const* argv) {
  CLI::App app("Simulates the SMM of an enclosure over IPMI 2.0 on loopback.", "smm-simulator");
  Texts texts;
  Define(app, texts);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    throw HelpWanted(app.help());
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what() + std::string("; --help lists what is expected"));
  }
  if (!IsLoopbackAddress(texts.address)) {
    Refuse("--address", texts.address, "a loopback address such as 127.0.0.1 or ::1");
  }
  const EnclosureKind kind = ReadKind(texts);
  return {kind,
          texts.address,
          ReadPort(texts.port),
          CheckedUserName(texts.userName),
          ReadPassword(texts.passwordFile),
          ReadScenario(texts.scenarioFile, kind)};
}

}  // namespace Tavrin::Simulator
