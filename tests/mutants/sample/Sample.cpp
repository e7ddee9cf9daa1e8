// What the operators are tried on: every mutant of this program changes what it prints.
#include <cstdio>
#include <string>

#define SAMPLE_LOG(level, text) std::printf("%d:%d %s\n", __LINE__, (level), text)

namespace {

constexpr int kQuiet = 1;
constexpr int kLoud = 2;

struct Pair {
  int left;
  int right;
};

bool IsInside(int number, int limit) {
  return number >= 1 &&  // a comment, which must not swallow what follows
         number < limit;
}

int Distance(const Pair& pair) {
  if (!IsInside(pair.left, 9)) {
    return -1;
  }
  SAMPLE_LOG(kLoud, "distance");
  return pair.right - pair.left;
}

std::string Steps(int count) {
  std::string steps;
  steps += "ab";
  steps += 'c';
  if (count != 1) {
    ++count;
    steps += std::to_string(count * 4 | 1);
  }
  return steps;
}

const char* Name(int number) {
  switch (number) {
    case kQuiet:
      return "quiet";
    default:
      return nullptr;
  }
}

}  // namespace

int main() {
  for (const int left : {0, 1, 4, 8, 9}) {
    std::printf("%d %d\n", left, Distance({left, 9}));
  }
  std::printf("%s %s %s\n", Steps(1).c_str(), Steps(2).c_str(), Name(kQuiet));
}
