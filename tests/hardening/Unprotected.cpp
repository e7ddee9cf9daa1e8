#include <cstring>

int main(int argc, char** argv) {
  char copy[16];
  std::strncpy(copy, argv[argc - 1], sizeof copy);
  explicit_bzero(copy, sizeof copy);
}
