#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/TemporaryFile.h"
#include "tests/cli/Terminal.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::string>;

// Clears the screen, resets the terminal, sets its title, rings, goes back, hides in bytes above
// 0x7F and forges a line.
constexpr const char* kHostileAnswers = R"({"overrides": [
  {"command": "0xA8", "response": "01 1b 5b 32 4a 07 0d 0a 1b 63 9b 32 4a 08 7f 0a"},
  {"command": "0xB0", "data": "05 00", "response": "1b 5b 32 4a 0d 0a 1b 63"},
  {"command": "0xB0", "data": "05 01", "response": "1b 5d 30 3b 78 07 9b 32 4a 7f 08 00"},
  {"command": "0xB0", "data": "05 0B",
   "response": "0a 5b 65 72 72 6f 72 5d 20 66 6f 72 67 65 64 0a 1b 5b 32 4a 0d 07 08 9b"},
  {"command": "0x98", "data": "01", "completionCode": "0x1B", "response": "1b 5b 32 4a"},
  {"command": "0x98", "data": "05", "completionCode": "0x07"},
  {"command": "0xA7", "data": "01", "response": "1b 0a 0d 9b"},
  {"command": "0xA5", "data": "01", "response": "1b 5b 32 4a 07 0d"},
  {"command": "0x91", "response": "1b 5b 32 4a 0d 0a"},
  {"command": "0xF4", "completionCode": "0x1B", "response": "1b 5b 32 4a"},
  {"netFn": "0x06", "command": "0x52", "data": "0F D0 05 99", "response": "04 1b 0a 9b 4a"},
  {"netFn": "0x06", "command": "0x52", "data": "0F D0 02 FC", "response": "1b 9b"}
]})";

/// The bytes that could do something to a terminal, or begin a line where none began.
std::string ControlBytes(const std::string& text) {
  std::string bytes;
  for (const char c : text) {
    bytes += c == '\n' || (c >= ' ' && c <= '~') ? "" : std::string(1, c);
  }
  return bytes;
}

/// The text without any of these, and with line ends as a file has them.
std::string Without(const Texts& parts, std::string text) {
  for (const std::string& part : parts) {
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos;) {
      text.erase(at, part.size());
    }
  }
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) {
    text.erase(at, 1);
  }
  return text;
}

auto IsEscaped() {
  return AllOf(HasSubstr("\\x1b"), HasSubstr("\\x9b"), HasSubstr("\\n"),
               Not(HasSubstr("\n[error] forged")), testing::ResultOf(ControlBytes, ""));
}

std::string ContentOf(const TemporaryFile& file) {
  std::ifstream stream(file.Path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

const Texts kEnvironment = {"TAVRIN_LOG_LEVEL=4", "IPMI_PASSWORD=sesame", "TERM=xterm",
                            "IPMI_WORKAROUND_FLAGS=16", "SMM_TYPE=0"};

const Texts kColours = {"\x1b[m", "\x1b[1m", "\x1b[31m", "\x1b[32m", "\x1b[33m", "\x1b[36m"};

class Escaping : public testing::Test {
 protected:
  Texts ToolCall() const {
    return {SMM_INVENTORY, "-vvv", "-H", simulator_.Address(), "-U", "admin"};
  }
  Texts LibraryCall() const {
    return {SECRETS_PROBE, simulator_.Host(), std::to_string(simulator_.Port()), "admin"};
  }

 private:
  SimulatedSmm simulator_{{"--generation", "1"}, kHostileAnswers};
};

TEST_F(Escaping, HostileAnswersReachATerminalFromTheToolOnlyEscaped) {
  Terminal terminal;
  Child tool(AsScript(R"(exec "$0" "$@" >/dev/tty)", ToolCall()), kEnvironment, {},
             terminal.Name());
  terminal.ReadToEnd();
  tool.Wait();
  // The tool itself rewrites the line of its progress and colours faults, and the terminal ends
  // lines with two bytes.
  EXPECT_THAT(Without({"\r\x1b[K", "\x1b[31m", "\x1b[0m"}, terminal.Seen()), IsEscaped());
  EXPECT_THAT(terminal.Seen(), HasSubstr("machine type "));
}

TEST_F(Escaping, HostileAnswersReachAFileFromTheToolOnlyEscaped) {
  const TemporaryFile file("");
  Child(AsScript(R"(exec "$0" "$@" >>)" + file.Path() + " 2>&1", ToolCall()), kEnvironment).Wait();
  EXPECT_THAT(ContentOf(file), AllOf(IsEscaped(), HasSubstr("machine type ")));
}

TEST_F(Escaping, HostileAnswersReachATerminalFromTheLibraryOnlyEscaped) {
  Terminal terminal;
  Child program(LibraryCall(), kEnvironment, {}, terminal.Name());
  terminal.Type("sesame\n");
  terminal.ReadToEnd();
  program.Wait();
  // The logger itself colours the names of the levels.
  EXPECT_THAT(Without(kColours, terminal.Seen()), IsEscaped());
}

TEST_F(Escaping, HostileAnswersReachALogFileFromTheLibraryOnlyEscaped) {
  const TemporaryFile file("");
  Child(AsScript(R"(exec "$0" "$@" 2>>)" + file.Path(), LibraryCall()), kEnvironment, "sesame\n")
      .Wait();
  EXPECT_THAT(ContentOf(file), IsEscaped());
}

}  // namespace
}  // namespace Tavrin
