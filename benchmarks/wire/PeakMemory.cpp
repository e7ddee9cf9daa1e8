// Runs a program, whose output is dropped, and prints the most memory that it had resident, in KiB.
// usage: peak_memory PROGRAM ARGUMENT...

#include <fcntl.h>
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
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(process, &status, 0, &usage) != process || status != 0) {
    static_cast<void>(std::fprintf(stderr, "peak_memory: %s failed\n", argv[1]));
    return 1;
  }
  std::printf("%ld\n", usage.ru_maxrss);
  return 0;
}
