#include "tools/smm-inventory/Password.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <system_error>

#include "reading/EnclosureSettings.h"
#include "reading/Wiping.h"
#include "support/EscapeControlBytes.h"
#include "support/FileDescriptor.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/terminal/Capabilities.h"
#include "tools/smm-inventory/terminal/Prompt.h"

namespace Tavrin {
namespace {

/// The bytes of a line on their way into the password: wiped when done.
class LineBuffer {
 public:
  LineBuffer() = default;
  ~LineBuffer() { explicit_bzero(bytes_.data(), bytes_.size()); }
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;

  [[nodiscard]] bool Full() const { return size_ == bytes_.size(); }
  void Append(char byte) { bytes_[size_++] = byte; }
  void DropTrailingCarriageReturn() {
    if (size_ > 0 && bytes_[size_ - 1] == '\r') {
      --size_;
    }
  }
  [[nodiscard]] std::string_view Text() const { return {bytes_.data(), size_}; }

 private:
  // Room for a carriage return after the longest password, and for one byte too many.
  std::array<char, kMaxPasswordLength + 2> bytes_{};
  std::size_t size_ = 0;
};

ByteSource BytesOf(int descriptor) {
  return [descriptor](char& byte) { return read(descriptor, &byte, 1); };
}

/// Reads one byte; false at the end of the source.
bool ReadByte(const ByteSource& bytes, const std::string& source, char& byte) {
  ssize_t count = 0;
  do {
    count = bytes(byte);
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    throw UsageError(fmt::format("{} cannot be read ({}); expected the password on one line",
                                 source, std::generic_category().message(errno)));
  }
  return count == 1;
}

void Accept(std::string_view text, const std::string& source, std::string& password) {
  if (text.empty()) {
    throw UsageError(fmt::format("the password from {} is empty; expected 1 to {} bytes", source,
                                 kMaxPasswordLength));
  }
  if (text.size() > kMaxPasswordLength) {
    throw UsageError(
        fmt::format("the password from {} is longer than {} bytes; expected 1 to {} bytes, the "
                    "most that IPMI 2.0 carries",
                    source, kMaxPasswordLength, kMaxPasswordLength));
  }
  if (text.find('\0') != std::string_view::npos) {
    throw UsageError(
        fmt::format("the password from {} holds a NUL byte; expected one line of text", source));
  }
  password.assign(text);
}

FileDescriptor OpenPrivateFile(const std::string& path, const std::string& source) {
  FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  struct stat status {};
  if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
    throw UsageError(
        fmt::format("{} cannot be opened ({}); expected a file that holds the password", source,
                    std::generic_category().message(errno)));
  }
  if ((status.st_mode & (S_IRGRP | S_IROTH)) != 0) {
    throw UsageError(
        fmt::format("{} can be read by its group or by others (mode {:04o}); expected a file that "
                    "only its owner can read (chmod 600)",
                    source, status.st_mode & 07777U));
  }
  return file;
}

}  // namespace

void ReadPasswordLine(const ByteSource& bytes, const std::string& source, std::string& password) {
  LineBuffer line;
  char byte = 0;
  while (!line.Full() && ReadByte(bytes, source, byte)) {
    if (byte == '\n') {
      line.DropTrailingCarriageReturn();
      break;
    }
    line.Append(byte);
  }
  explicit_bzero(&byte, sizeof byte);
  Accept(line.Text(), source, password);
}

void ReadPasswordLine(int descriptor, const std::string& source, std::string& password) {
  ReadPasswordLine(BytesOf(descriptor), source, password);
}

void ReadPasswordFile(const std::string& path, std::string& password) {
  const std::string source = fmt::format("password file \"{}\"", EscapeControlBytes(path));
  const FileDescriptor file = OpenPrivateFile(path, source);
  ReadPasswordLine(file.Get(), source, password);
  char byte = 0;
  const bool more = ReadByte(BytesOf(file.Get()), source, byte);
  explicit_bzero(&byte, sizeof byte);
  if (more) {
    WipeText(password);
    throw UsageError(fmt::format(
        "{} holds more than one line; expected the password alone on one line", source));
  }
}

void TakeEnvironmentPassword(const char* value, std::string& password) {
  Accept(value, "the environment variable IPMI_PASSWORD", password);
}

void ObtainPassword(const std::optional<std::string>& file, const std::string& prompt,
                    std::string& password) {
  // Typed there, it would be shown.
  if (file == "-" && IsTerminal(STDIN_FILENO)) {
    PromptForPassword(prompt, password);
    return;
  }
  if (file == "-") {
    ReadPasswordLine(STDIN_FILENO, "standard input", password);
    return;
  }
  if (file) {
    ReadPasswordFile(*file, password);
    return;
  }
  // The tool has a single thread until the password is there, and nothing changes its environment.
  const char* const value = std::getenv("IPMI_PASSWORD");
  if (value != nullptr) {
    TakeEnvironmentPassword(value, password);
    return;
  }
  PromptForPassword(prompt, password);
}

}  // namespace Tavrin
