#include "tests/secrets/FreedMemory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/support/AllocationFunctions.h"

namespace Tavrin {
namespace {

constexpr std::size_t kPartLength = 8;

/// In front of each block, which stays aligned behind it.
struct alignas(std::max_align_t) Header {
  std::size_t size;
};

std::atomic<const char*> secretBytes{nullptr};
std::atomic<std::size_t> secretSize{0};
std::atomic<std::size_t> blockCount{0};
std::atomic<std::size_t> traceCount{0};

bool HoldsPart(const void* block, std::size_t size, const char* secret) {
  for (std::size_t begin = 0; begin + kPartLength <= secretSize; ++begin) {
    if (memmem(block, size, secret + begin, kPartLength) != nullptr) {
      return true;
    }
  }
  return false;
}

}  // namespace

FreedMemory::FreedMemory(std::string_view secret) {
  blockCount = 0;
  traceCount = 0;
  secretSize = secret.size();
  secretBytes = secret.data();
}

FreedMemory::~FreedMemory() { secretBytes = nullptr; }

std::size_t FreedMemory::BlockCount() const { return blockCount; }

std::size_t FreedMemory::TraceCount() const { return traceCount; }

void* Allocate(std::size_t size) noexcept {
  void* const memory = std::calloc(1, sizeof(Header) + size);
  if (memory == nullptr) {
    return nullptr;
  }
  return new (memory) Header{size} + 1;
}

void Free(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  Header* const header = static_cast<Header*>(block) - 1;
  const char* const secret = secretBytes;
  if (secret != nullptr) {
    ++blockCount;
    traceCount += HoldsPart(block, header->size, secret) ? 1 : 0;
  }
  std::free(header);
}

}  // namespace Tavrin
