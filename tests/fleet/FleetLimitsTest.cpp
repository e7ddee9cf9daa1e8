#include "fleet/FleetLimits.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "fleet/FleetReader.h"

namespace Tavrin {
namespace {

/// In a process of its own, since a hard limit is never raised again.
class LowLimit : public testing::Test {
 protected:
  static void Set(rlim_t soft, rlim_t hard) {
    const rlimit limit{soft, hard};
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  static rlim_t Soft() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur;
  }
  [[noreturn]] static void End(bool holds) { std::_Exit(holds ? 0 : 1); }
};

using LowLimitDeathTest = LowLimit;

TEST_F(LowLimitDeathTest, SoftOneIsRaisedAsFarAsNeeded) {
  EXPECT_EXIT(
      {
        Set(64, 4096);
        const DescriptorLimit room = MakeRoomForDescriptors(500);
        End(room.enclosures == 500 && room.limit == room.needed && Soft() == room.limit &&
            room.needed >= 500 * kDescriptorsOfEnclosure && room.needed < 2200);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(LowLimitDeathTest, EnoughOfOneIsLeftAsItIs) {
  EXPECT_EXIT(
      {
        Set(4000, 4096);
        const DescriptorLimit room = MakeRoomForDescriptors(10);
        End(room.enclosures == 10 && room.limit == 4000 && Soft() == 4000);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(LowLimitDeathTest, HardOneBoundsHowManyFit) {
  EXPECT_EXIT(
      {
        Set(64, 200);
        const DescriptorLimit room = MakeRoomForDescriptors(500);
        End(room.limit == 200 && Soft() == 200 && room.enclosures > 20 && room.enclosures < 50);
      },
      testing::ExitedWithCode(0), "");
}

class Notes : public FleetObserver {
 public:
  void Noted(const std::string& text) override { notes.push_back(text); }
  void EnclosureEnded(std::size_t /*index*/, Reading&& /*reading*/) override { ++ended; }

  std::vector<std::string> notes;
  int ended = 0;
};

/// Enclosures without a host, which nobody asks anything.
std::vector<EnclosureSettings> Nowhere(std::size_t count) {
  return std::vector<EnclosureSettings>(count);
}

FleetReader Reader() {
  FleetSettings settings;
  settings.spread = std::chrono::milliseconds(0);
  return FleetReader(settings);
}

TEST_F(LowLimitDeathTest, FewerAreReadAtOnceAndTheObserverIsTold) {
  EXPECT_EXIT(
      {
        Set(200, 200);
        Notes observer;
        Reader().Read(Nowhere(100), observer);
        const std::string note = observer.notes.empty() ? "" : observer.notes.front();
        End(observer.notes.size() == 1 && observer.ended == 100 &&
            note.rfind("the limit of open files is \"200\"; expected at least ", 0) == 0 &&
            note.find(" to read 100 at once; ") != std::string::npos);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(LowLimitDeathTest, WithoutRoomForOneItIsSaid) {
  EXPECT_EXIT(
      {
        Set(8, 8);
        Notes observer;
        std::string words;
        try {
          Reader().Read(Nowhere(1), observer);
        } catch (const std::runtime_error& error) {
          words = error.what();
        }
        End(words.rfind("the limit of open files is \"8\"; expected at least ", 0) == 0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Tavrin
