#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

namespace Tavrin {

// The functions that read a password fill a text of the caller's instead of returning one, so that
// no moved-from copy of it stays behind; the caller wipes that text. They throw UsageError, whose
// sentence names the source and never the password, when the source cannot be read or the password
// is empty, too long or holds a NUL byte.

/// Reads the password that is the file's one line. A file that the group or others can read is
/// refused.
void ReadPasswordFile(const std::string& path, std::string& password);

/// Gives the next byte of a source, with the results of read(2): 1, or 0 at the end, or -1 and
/// errno.
using ByteSource = std::function<ssize_t(char& byte)>;

/// Reads the first line of the bytes, or of an open descriptor, as password; `source` names where
/// they are from in a refusal. What follows the line stays unread.
void ReadPasswordLine(const ByteSource& bytes, const std::string& source, std::string& password);
void ReadPasswordLine(int descriptor, const std::string& source, std::string& password);

/// Takes the password from the value of the environment variable IPMI_PASSWORD.
void TakeEnvironmentPassword(const char* value, std::string& password);

/// Takes the password from the first of these that is there: the file (`-` is standard input, and
/// the prompt where that is a terminal), the environment, a prompt on the terminal.
void ObtainPassword(const std::optional<std::string>& file, const std::string& prompt,
                    std::string& password);

}  // namespace Tavrin
