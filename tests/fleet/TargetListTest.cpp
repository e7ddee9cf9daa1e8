#include "fleet/TargetList.h"

#include <gmock/gmock.h>

#include <initializer_list>

#include "reading/EnclosureSettings.h"
#include "support/HostAndPort.h"
#include "support/HostRange.h"
#include "tests/support/Refusal.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;

constexpr const char* kFile = R"(
spare
[a]
n[1-2] user=ann
n3:6230 user=bob cipher-suite=17
[b]
n[4-5] port=6231
[2001:db8::1]
)";

HostsFile File() { return ParseHostsFile(kFile, "f"); }

Texts PlacesOf(const TargetList& list) {
  Texts places;
  for (const Target& target : list.targets) {
    places.push_back(AddressText(target.host, target.port));
  }
  return places;
}

Texts PlacesOf(const TargetRequest& request) { return PlacesOf(MakeTargetList(request)); }

std::string RequestRefusal(const TargetRequest& request) {
  return RefusalOf([&] { MakeTargetList(request); });
}

TEST(TargetList, HostsAreAskedInTheOrderNamed) {
  const TargetList list = MakeTargetList({{"n[2-3],a", "[::1]:6230", "b:1"}, {}, {}, {}});
  EXPECT_THAT(PlacesOf(list), ElementsAre("n2:623", "n3:623", "a:623", "[::1]:6230", "b:1"));
  EXPECT_THAT(list.notes, IsEmpty());
}

/// What a run of the request would say of all its hosts, to be pasted behind -H.
std::string Written(const TargetRequest& request) {
  std::vector<HostAndPort> places;
  for (const Target& target : MakeTargetList(request).targets) {
    places.push_back(PlaceOf(target));
  }
  return FoldHosts(places);
}

TEST(TargetList, UsualPortIsLeftOutOnlyWhereTheHostAloneMeansIt) {
  EXPECT_EQ(Written({{"a,b:7"}, {}, {}, {}}), "a,b:7");
  EXPECT_EQ(Written({{"a:623,b"}, {}, {}, 7}), "a:623,b:7");
  const HostsFile file = ParseHostsFile("n1\nn2 port=6230\nn2:623\nn3:623\nn3:7\n", "file");
  EXPECT_EQ(Written({{}, {}, file, {}}), "n1,n2:[6230,623],n3:[623,7]");
  EXPECT_EQ(Written({{"n2:623"}, {}, file, {}}), "n2:623");
}

TEST(TargetList, WhatIsWrittenOfThemNamesThemAgain) {
  const HostsFile file = ParseHostsFile("n1\nn2 port=6230\nn2:623\nn3:623\nn3:7\n", "file");
  for (const std::optional<std::uint16_t>& port : {std::optional<std::uint16_t>(), {7}}) {
    const std::vector<std::string> all = PlacesOf({{}, {}, file, port});
    EXPECT_EQ(PlacesOf({{Written({{}, {}, file, port})}, {}, file, port}), all);
  }
}

TEST(TargetList, PortIsForHostsWithoutOne) {
  EXPECT_THAT(PlacesOf({{"a,b:7"}, {}, {}, 8}), ElementsAre("a:8", "b:7"));
  EXPECT_THAT(PlacesOf({{}, {}, File(), 7}), ElementsAre("spare:7", "n1:7", "n2:7", "n3:6230",
                                                         "n4:6231", "n5:6231", "[2001:db8::1]:7"));
}

TEST(TargetList, SameAddressAndPortIsAskedOnceAndThatIsSaid) {
  const TargetList list = MakeTargetList({{"n[1-3]", "N[2-4],n3:624,n2,n1"}, {}, {}, {}});
  EXPECT_THAT(PlacesOf(list), ElementsAre("n1:623", "n2:623", "n3:623", "N4:623", "n3:624"));
  EXPECT_THAT(list.notes, ElementsAre("named more than once and asked once: N[2-3]:623,n1:623"));
}

TEST(TargetList, AddressIsTheSameHoweverItIsWritten) {
  EXPECT_THAT(
      PlacesOf({{"2001:db8::1,2001:0DB8:0::1,fe80::1%a,fe80:0::1%a,fe80::1%b"}, {}, {}, {}}),
      ElementsAre("[2001:db8::1]:623", "[fe80::1%a]:623", "[fe80::1%b]:623"));
}

TEST(TargetList, WholeFileIsAskedWithoutHosts) {
  const TargetList list = MakeTargetList({{}, {}, File(), {}});
  EXPECT_THAT(PlacesOf(list), ElementsAre("spare:623", "n1:623", "n2:623", "n3:6230", "n4:6231",
                                          "n5:6231", "[2001:db8::1]:623"));
  EXPECT_THAT(PlacesOf({{"@all"}, {}, File(), {}}), PlacesOf(list));
}

TEST(TargetList, OnlyWhatHostsNameIsAskedOfAFile) {
  EXPECT_THAT(PlacesOf({{"@b"}, {}, File(), {}}),
              ElementsAre("n4:6231", "n5:6231", "[2001:db8::1]:623"));
  EXPECT_THAT(PlacesOf({{"x,@a,n5"}, {}, File(), {}}),
              ElementsAre("x:623", "n1:623", "n2:623", "n3:6230", "n5:6231"));
}

TEST(TargetList, TargetHasGroupAndSettingsOfItsLine) {
  const TargetList list = MakeTargetList({{"@a", "spare"}, {}, File(), {}});
  ASSERT_THAT(list.targets, SizeIs(4));
  EXPECT_EQ(list.targets[1].group, "a");
  EXPECT_EQ(list.targets[1].settings.userName, "ann");
  EXPECT_EQ(list.targets[2].settings.userName, "bob");
  EXPECT_EQ(list.targets[2].settings.cipherSuite, 17);
  EXPECT_EQ(list.targets[2].writtenSettings, "user=bob cipher-suite=17");
  EXPECT_EQ(list.targets[3].group, "");
  EXPECT_EQ(list.targets[3].settings.userName, std::nullopt);
}

TEST(TargetList, HostThatTheFileNamesHasItsSettingsAndPortFromThere) {
  const TargetList list = MakeTargetList({{"N3,n[3-4],2001:db8:0::1,n9"}, {}, File(), {}});
  EXPECT_THAT(PlacesOf(list), ElementsAre("n3:6230", "n4:6231", "[2001:db8::1]:623", "n9:623"));
  EXPECT_EQ(list.targets[0].settings.userName, "bob");
  EXPECT_EQ(list.targets[0].group, "a");
  EXPECT_EQ(list.targets[3].group, "");
}

TEST(TargetList, HostWithAPortIsThatOfTheFileOnlyWithTheSamePort) {
  const TargetList list = MakeTargetList({{"n3:6230,n3:7,n1:623"}, {}, File(), {}});
  EXPECT_THAT(PlacesOf(list), ElementsAre("n3:6230", "n3:7", "n1:623"));
  EXPECT_EQ(list.targets[0].settings.userName, "bob");
  EXPECT_EQ(list.targets[1].settings.userName, std::nullopt);
  EXPECT_EQ(list.targets[2].settings.userName, "ann");
}

TEST(TargetList, HostWithoutAPortStandsForAllThatTheFileGivesIt) {
  const HostsFile file = ParseHostsFile("smm:[6230-6231]\n", "f");
  EXPECT_THAT(PlacesOf({{"smm"}, {}, file, {}}), ElementsAre("smm:6230", "smm:6231"));
}

TEST(TargetList, WhatIsExcludedIsLeftOut) {
  EXPECT_THAT(PlacesOf({{"n[1-5]"}, {"n[2-3]", "N5,x"}, {}, {}}), ElementsAre("n1:623", "n4:623"));
  EXPECT_THAT(PlacesOf({{"n:[1-3],m:2"}, {"n:2"}, {}, {}}), ElementsAre("n:1", "n:3", "m:2"));
  EXPECT_THAT(PlacesOf({{"n:[1-3],m:2"}, {"n"}, {}, {}}), ElementsAre("m:2"));
  EXPECT_THAT(PlacesOf({{"a,b"}, {"a:623"}, {}, {}}), ElementsAre("b:623"));
  EXPECT_THAT(PlacesOf({{}, {"@a,n4"}, File(), {}}),
              ElementsAre("spare:623", "n5:6231", "[2001:db8::1]:623"));
}

TEST(TargetList, ExcludedGroupLeavesOtherPortsOfItsHosts) {
  EXPECT_THAT(PlacesOf({{"@all,n1:7"}, {"@a,@b"}, File(), {}}), ElementsAre("spare:623", "n1:7"));
}

TEST(TargetList, WhatIsExcludedAndNamedTwiceIsNotSaid) {
  EXPECT_THAT(MakeTargetList({{"a,b,a"}, {"a"}, {}, {}}).notes, IsEmpty());
}

TEST(TargetList, NothingLeftIsRefused) {
  const std::string refusal =
      "no host is left; expected at least one that is named and not excluded";
  EXPECT_EQ(RequestRefusal({{"n[1-3]"}, {"n[1-9]"}, {}, {}}), refusal);
  EXPECT_EQ(RequestRefusal({{"@empty"}, {}, ParseHostsFile("[empty]\n[b]\nn1", "f"), {}}), refusal);
  EXPECT_EQ(RequestRefusal({{}, {}, HostsFile{}, {}}), refusal);
}

TEST(TargetList, GroupThatIsNotThereIsRefused) {
  EXPECT_EQ(RequestRefusal({{"@c"}, {}, File(), {}}),
            "group is \"@c\"; expected one of @all, @a, @b");
  EXPECT_EQ(RequestRefusal({{"@"}, {}, File(), {}}),
            "group is \"@\"; expected one of @all, @a, @b");
  EXPECT_EQ(RequestRefusal({{"x"}, {"@\x1b"}, HostsFile{}, {}}),
            "group is \"@\\x1b\"; expected one of @all");
  for (const std::string item : {"@a", "@all"}) {
    EXPECT_EQ(RequestRefusal({{item}, {}, {}, {}}),
              "group is \"" + item + "\"; expected a hosts file that has its heading");
  }
}

TEST(TargetList, BadListIsRefused) {
  EXPECT_THAT(RequestRefusal({{"a,"}, {}, {}, {}}), testing::StartsWith("host list is \"a,\""));
  EXPECT_THAT(RequestRefusal({{"a"}, {"b[2-1]"}, {}, {}}),
              testing::StartsWith("host range is \"b[2-1]\""));
}

TEST(TargetList, MoreThanThereMayBeAreRefused) {
  EXPECT_THAT(MakeTargetList({{"n[1-4096]", "n[1-4096]"}, {}, {}, {}}).targets, SizeIs(4096));
  EXPECT_EQ(RequestRefusal({{"n[1-4096]", "m"}, {}, {}, {}}),
            "more than 4096 hosts are named; expected at most that many");
  EXPECT_THAT(MakeTargetList({{"n[1-4096]", "m"}, {"n4096"}, {}, {}}).targets, SizeIs(4096));
}

TEST(Target, SettingsThatALineLeavesOpenAreCompleted) {
  TargetSettings settings;
  settings.userName = "ann";
  settings.attempts = 1;
  Complete(settings, {"bob", "file", 17, 2, 0x10, 5, 100});
  EXPECT_EQ(settings.userName, "ann");
  EXPECT_EQ(settings.attempts, 1);
  EXPECT_EQ(settings.passwordFile, "file");
  EXPECT_EQ(settings.cipherSuite, 17);
  EXPECT_EQ(settings.privilegeLevel, 2);
  EXPECT_EQ(settings.workaroundFlags, 0x10);
  EXPECT_EQ(settings.sessionTimeoutMs, 100);
}

TEST(Target, WhatItSaysIsAppliedAndNothingElse) {
  EnclosureSettings enclosure;
  enclosure.password = "sesame";
  enclosure.attempts = 7;
  Apply({"n1", 6230, "a", {"ann", "file", 17, 2, 0x10, {}, 100}, ""}, enclosure);
  EXPECT_EQ(enclosure.host, "n1");
  EXPECT_EQ(enclosure.port, 6230);
  EXPECT_EQ(enclosure.userName, "ann");
  EXPECT_EQ(enclosure.password, "sesame");
  EXPECT_EQ(enclosure.cipherSuite, 17);
  EXPECT_EQ(enclosure.privilegeLevel, 2);
  EXPECT_EQ(enclosure.workaroundFlags, 0x10);
  EXPECT_EQ(enclosure.attempts, 7);
  EXPECT_EQ(enclosure.sessionTimeoutMs, 100);
}

}  // namespace
}  // namespace Tavrin
