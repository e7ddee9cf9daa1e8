// Runs a program and prints, behind its output, a line with the most memory that it had resident,
// in KiB. Ends with the program's exit code, or with 1 when a signal ended it.
//
// usage: peak_memory PROGRAM ARGUMENT...

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 2) {
    static_cast<void>(std::fputs("usage: peak_memory PROGRAM ARGUMENT...\n", stderr));
    return 2;
  }
  const pid_t process = fork();
  if (process == 0) {
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(process, &status, 0, &usage) != process || !WIFEXITED(status)) {
    static_cast<void>(std::fprintf(stderr, "peak_memory: %s failed\n", argv[1]));
    return 1;
  }
  std::printf("%ld\n", usage.ru_maxrss);
  return WEXITSTATUS(status);
}
