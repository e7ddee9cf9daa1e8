#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <string>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {
namespace {

/// What docs/reliability.md asks of a thread's stack.
constexpr std::size_t kStack = std::size_t{256} * 1024;
constexpr std::uint8_t kUntouched = 0xA7;

/// Memory for a stack, which shows how much of it was in use.
class PaintedStack {
 public:
  PaintedStack()
      : memory_(static_cast<std::uint8_t*>(mmap(nullptr, kStack, PROT_READ | PROT_WRITE,
                                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0))) {
    std::fill_n(memory_, kStack, kUntouched);
  }
  ~PaintedStack() { munmap(memory_, kStack); }
  PaintedStack(const PaintedStack&) = delete;
  PaintedStack& operator=(const PaintedStack&) = delete;

  void Run(void* (*function)(void*), void* argument) const {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, memory_, kStack);
    pthread_t thread = 0;
    ASSERT_EQ(pthread_create(&thread, &attributes, function, argument), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
  }

  /// A stack grows downwards.
  std::size_t Used() const {
    const auto* const end = memory_ + kStack;
    return static_cast<std::size_t>(
        end - std::find_if(memory_, memory_ + kStack,
                           [](std::uint8_t byte) { return byte != kUntouched; }));
  }

 private:
  std::uint8_t* memory_;
};

using Stack = WireTest;

TEST_F(Stack, OfTheStatedSizeIsEnoughForAQuery) {
  const SimulatedSmm simulator({"--generation", "1"});
  SMMInventory inventory(SettingsOf(simulator));
  const PaintedStack stack;
  stack.Run(
      [](void* object) -> void* {
        std::string machineType;
        EXPECT_EQ(static_cast<SMMInventory*>(object)->GetSmmMT(machineType), StatusCode::Success);
        return nullptr;
      },
      &inventory);
  std::cout << stack.Used() << " bytes of the stack used\n";
  EXPECT_LT(stack.Used(), kStack);
}

}  // namespace
}  // namespace Tavrin
