#include "support/HostRange.h"

#include <gmock/gmock.h>

#include <random>

#include "tests/support/Refusal.h"

namespace Tavrin {

static bool operator==(const HostAndPort& one, const HostAndPort& other) {
  return one.host == other.host && one.port == other.port;
}

static void PrintTo(const HostAndPort& place, std::ostream* stream) {
  *stream << place.host << " port " << place.port.value_or(0);
}

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

using Texts = std::vector<std::string>;

/// As they would be written one by one.
Texts Expanded(const std::string& text) {
  Texts hosts;
  for (const HostAndPort& place : ExpandHosts(text)) {
    hosts.push_back(place.port ? AddressText(place.host, *place.port) : place.host);
  }
  return hosts;
}

std::string RangeRefusal(const std::string& text) {
  return RefusalOf([&] { ExpandHosts(text); });
}

TEST(HostRange, HostWithoutBracketsIsItself) {
  for (const std::string text : {"smm1", "smm1:6230", "192.0.2.7", "2001:db8::1", "fe80::1%eth0"}) {
    EXPECT_THAT(Expanded(text), ElementsAre(text));
  }
}

TEST(HostRange, BracketAtTheStartIsAnAddress) {
  EXPECT_THAT(Expanded("[2001:db8::1]:623"), ElementsAre("[2001:db8::1]:623"));
  EXPECT_THAT(Expanded("[2001:db8::1]"), ElementsAre("2001:db8::1"));
  EXPECT_THAT(RangeRefusal("[1-3]n"), HasSubstr("host is \"[1-3]n\"; expected a host name"));
}

TEST(HostRange, NumbersAreExpandedInTheOrderWritten) {
  EXPECT_THAT(Expanded("n[1-3,7]"), ElementsAre("n1", "n2", "n3", "n7"));
  EXPECT_THAT(Expanded("n[7,2-3,1]"), ElementsAre("n7", "n2", "n3", "n1"));
  EXPECT_THAT(Expanded("b,a[2-3],c"), ElementsAre("b", "a2", "a3", "c"));
}

TEST(HostRange, WidthIsThatOfTheEndsWithALeadingZero) {
  const Texts racks = Expanded("rack[01-40]");
  ASSERT_THAT(racks, SizeIs(40));
  EXPECT_EQ(racks[0], "rack01");
  EXPECT_EQ(racks[9], "rack10");
  EXPECT_EQ(racks[39], "rack40");
  EXPECT_THAT(Expanded("n[08-10]"), ElementsAre("n08", "n09", "n10"));
  EXPECT_THAT(Expanded("n[8-10]"), ElementsAre("n8", "n9", "n10"));
  EXPECT_THAT(Expanded("n[0-1]"), ElementsAre("n0", "n1"));
  EXPECT_THAT(Expanded("n[007,7]"), ElementsAre("n007", "n7"));
  EXPECT_THAT(Expanded("n[000-002/2]"), ElementsAre("n000", "n002"));
}

TEST(HostRange, SeveralBracketsVaryLikeACounter) {
  EXPECT_THAT(Expanded("r[1-2]n[1-4]"),
              ElementsAre("r1n1", "r1n2", "r1n3", "r1n4", "r2n1", "r2n2", "r2n3", "r2n4"));
  EXPECT_THAT(Expanded("n[1-2][3,5]"), ElementsAre("n13", "n15", "n23", "n25"));
}

TEST(HostRange, StepLeavesNumbersOut) {
  EXPECT_THAT(Expanded("n[1-9/4]"), ElementsAre("n1", "n5", "n9"));
  EXPECT_THAT(Expanded("n[1-8/4,2]"), ElementsAre("n1", "n5", "n2"));
  EXPECT_THAT(Expanded("n[1-2/999999999999999999]"), ElementsAre("n1"));
}

TEST(HostRange, AddressesAndPortsCanVaryToo) {
  const Texts addresses = Expanded("10.0.0.[1-30]");
  ASSERT_THAT(addresses, SizeIs(30));
  EXPECT_EQ(addresses[29], "10.0.0.30");
  EXPECT_THAT(Expanded("n[1-2]-bmc:6230"), ElementsAre("n1-bmc:6230", "n2-bmc:6230"));
  EXPECT_THAT(Expanded("127.0.0.1:[6230-6231]"), ElementsAre("127.0.0.1:6230", "127.0.0.1:6231"));
}

TEST(HostRange, WhatIsNoRangeIsRefusedWithItsPosition) {
  const std::string range = "host range is ";
  const std::string list = "host list is ";
  const std::vector<std::pair<std::string, std::string>> table = {
      {"n[9-5]",
       range +
           R"("n[9-5]", wrong at character 3 ("9-5" is reversed); expected the lower number first)"},
      {"n[2-1]",
       range +
           R"("n[2-1]", wrong at character 3 ("2-1" is reversed); expected the lower number first)"},
      {"n[1,9-05]",
       range + R"("n[1,9-05]", wrong at character 5 ("9-05" has a leading zero and two widths); )"
               "expected as many digits in both numbers"},
      {"n[01-100]",
       range + R"("n[01-100]", wrong at character 3 ("01-100" has a leading zero and two widths); )"
               "expected as many digits in both numbers"},
      {"n[]", range + R"("n[]", wrong at character 3 ("]" stands there); expected a number)"},
      {"n[-3]", range + R"("n[-3]", wrong at character 3 ("-" stands there); expected a number)"},
      {"n[1-]", range + R"("n[1-]", wrong at character 5 ("]" stands there); expected a number)"},
      {"n[1,]", range + R"("n[1,]", wrong at character 5 ("]" stands there); expected a number)"},
      {"n[1,,2]",
       range + R"("n[1,,2]", wrong at character 5 ("," stands there); expected a number)"},
      {"n[1-", range + R"("n[1-", wrong at character 5 (nothing stands there); expected a number)"},
      {"n[1-3,b",
       range + R"("n[1-3,b", wrong at character 7 ("b" stands there); expected a number)"},
      {"n[1-3",
       range + R"("n[1-3", wrong at character 2 (that bracket stays open); expected ] behind the )"
               "numbers"},
      {"n1]", range + R"("n1]", wrong at character 3 ("]" stands there); expected [ before it)"},
      {"n[[1]]", range + R"("n[[1]]", wrong at character 3 ("[" stands there); expected a number)"},
      {"n[1a]",
       range +
           R"("n[1a]", wrong at character 4 ("a" stands there); expected a digit, "-", "/", "," )"
           R"(or "]")"},
      {"n[5/2]",
       range +
           R"("n[5/2]", wrong at character 4 ("/" stands there); expected a digit, "-", "/", "," )"
           R"(or "]")"},
      {"n[1-9/0]",
       range + R"("n[1-9/0]", wrong at character 7 (the step is 0); expected at least 1)"},
      {"n[1-9/]",
       range + R"("n[1-9/]", wrong at character 7 ("]" stands there); expected a number)"},
      {"n[1-1234567890123456789]",
       range +
           R"("n[1-1234567890123456789]", wrong at character 5 (19 digits stand there); expected )"
           "a number of at most 18"},
      {"n[1-2\x1b]",
       range +
           R"("n[1-2\x1b]", wrong at character 6 ("\x1b" stands there); expected a digit, "-", )"
           R"("/", "," or "]")"},
      {"", list + R"("", wrong at character 1 (nothing stands there); expected a host)"},
      {"a,,b", list + R"("a,,b", wrong at character 3 (nothing stands there); expected a host)"},
      {"a[1,2],",
       list + R"("a[1,2],", wrong at character 8 (nothing stands there); expected a host)"},
      {",a", list + R"(",a", wrong at character 1 (nothing stands there); expected a host)"},
  };
  for (const auto& [text, refusal] : table) {
    EXPECT_EQ(RangeRefusal(text), refusal);
  }
}

TEST(HostRange, ExpandedHostThatIsNoneIsRefusedByName) {
  EXPECT_THAT(RangeRefusal("10.0.0.[254-256]"), HasSubstr("host is \"10.0.0.256\"; expected"));
  EXPECT_THAT(RangeRefusal("10.0.0.[01-02]"), HasSubstr("host is \"10.0.0.01\"; expected"));
  EXPECT_THAT(RangeRefusal("n[1-2] "), HasSubstr("host is \"n1 \"; expected"));
  EXPECT_THAT(RangeRefusal("n:[0-1]"), HasSubstr("port is \"0\"; expected"));
  EXPECT_THAT(RangeRefusal("a,b c"), HasSubstr("host is \"b c\"; expected"));
  EXPECT_THAT(RangeRefusal(std::string("n[1]\0", 5)), HasSubstr("host is \"n1\\x00\"; expected"));
}

TEST(HostRange, Ipv6AddressHoldsNoRanges) {
  for (const std::string text :
       {"2001:db8::[1-2]:623", "2001:db8::[1-2]", "[2001:db8::[1-2]]:623"}) {
    EXPECT_THAT(RangeRefusal(text), HasSubstr("host is \"" + text + "\"; expected a host name"));
  }
}

TEST(HostRange, AsManyAsThereMayBeAreTaken) {
  EXPECT_THAT(ExpandHosts("n[1-4096]"), SizeIs(4096));
  EXPECT_THAT(ExpandHosts("n[1-2048],m[1-2048]"), SizeIs(4096));
  EXPECT_THAT(ExpandHosts("r[1-64]n[1-64]"), SizeIs(4096));
}

TEST(HostRange, MoreThanThereMayBeAreRefusedAtOnce) {
  for (const std::string item :
       {"n[1-4097]", "n[1-1000000000]", "n[0-999999999999999999]", "r[1-64]n[1-65]",
        "a[1-1000000000]b[1-1000000000]c[1-1000000000]", "n[1-2048,1-2049]",
        "n[0-999999999999999999,0-999999999999999999]"}) {
    EXPECT_EQ(RangeRefusal(item),
              "host range is \"" + item +
                  "\", which names more than 4096 hosts; expected at most that many");
  }
  EXPECT_EQ(RangeRefusal("n[1-4096],m"),
            "host list is \"n[1-4096],m\", which names more than 4096 hosts; expected at most that "
            "many");
}

TEST(HostRange, ListIsTakenApartOutsideBrackets) {
  EXPECT_THAT(SplitHostList("@all,n[1,2]:6230,[2001:db8::1],x"),
              ElementsAre("@all", "n[1,2]:6230", "[2001:db8::1]", "x"));
}

TEST(HostRange, FormTellsARangeFromAHost) {
  for (const std::string range : {"n[1]", "n[1-2]", "a,b", "a,", "n]", "[::1],a"}) {
    EXPECT_TRUE(IsHostRange(range)) << range;
  }
  for (const std::string host : {"n1", "n1:6230", "2001:db8::1", "[2001:db8::1]:6230", ""}) {
    EXPECT_FALSE(IsHostRange(host)) << host;
  }
}

TEST(HostRangeFolding, NeighboursThatDifferInOneNumberAreFolded) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"rack03,rack17,rack18", "rack[03,17-18]"},
      {"n1,n2,n3,n7", "n[1-3,7]"},
      {"n7,n3,n4,n1", "n[7,3-4,1]"},
      {"n8,n9,n10", "n[8-10]"},
      {"n08,n09,n10", "n[08-10]"},
      {"n99,n100", "n[99-100]"},
      {"n099,n100", "n[099-100]"},
      {"n09,n10,n011", "n[09-10,011]"},
      {"n01,n2", "n[01,2]"},
      {"r1n1,r1n2,r2n1,r2n2", "r1n[1-2],r2n[1-2]"},
      {"10.0.0.1,10.0.0.2", "10.0.0.[1-2]"},
      {"127.0.0.1:6230,127.0.0.1:6231", "127.0.0.1:[6230-6231]"},
      {"n1-bmc:6230,n2-bmc:6230", "n[1-2]-bmc:6230"},
      {"n1,n2:623", "n1,n2:623"},
      {"smm", "smm"},
      {"a,b", "a,b"},
      {"n1,n1", "n1,n1"},
      {"n1,n2,n1", "n[1-2],n1"},
      {"[2001:db8::1]:623,[2001:db8::2]:623", "[2001:db8::1]:623,[2001:db8::2]:623"},
      {"2001:db8::1,2001:db8::2", "2001:db8::1,2001:db8::2"},
  };
  for (const auto& [written, folded] : table) {
    EXPECT_EQ(FoldHosts(ExpandHosts(written)), folded);
  }
  EXPECT_EQ(FoldHosts({}), "");
}

TEST(HostRangeFolding, NumberAtTheStartIsNotFoldedSinceABracketThereIsAnAddress) {
  EXPECT_EQ(FoldHosts({{"1a", {}}, {"2a", {}}}), "1a,2a");
  EXPECT_EQ(FoldHosts({{"10.0.0.1", {}}, {"11.0.0.1", {}}}), "10.0.0.1,11.0.0.1");
}

TEST(HostRangeFolding, NumberOfMoreDigitsThanARangeTakesStaysAsItIs) {
  const std::vector<HostAndPort> hosts = {{"n1234567890123456789", {}},
                                          {"n1234567890123456790", {}}};
  EXPECT_EQ(FoldHosts(hosts), "n1234567890123456789,n1234567890123456790");
  EXPECT_EQ(ExpandHosts(FoldHosts(hosts)), hosts);
}

/// A host made of few digits and letters, so that neighbours are often alike.
HostAndPort AnyHost(std::mt19937& random) {
  static const Texts kFixed = {"n", "r0", "1", "10.0.0.", "9x", "a-", "::", "0"};
  const auto upTo = [&random](unsigned int most) {
    return static_cast<unsigned int>(random() % (most + 1));
  };
  HostAndPort place;
  const std::string& fixed = kFixed[upTo(static_cast<unsigned int>(kFixed.size()) - 1)];
  const std::string zeros(fixed == "10.0.0." ? 0 : upTo(2), '0');
  place.host = fixed + zeros + std::to_string(upTo(12));
  if (fixed == "1" || fixed == "0" || upTo(2) == 0) {
    place.host += fixed == "10.0.0." || fixed == "::" ? "" : 'b' + std::to_string(upTo(2));
  }
  if (upTo(1) == 0) {
    place.port = static_cast<std::uint16_t>(8 + upTo(3));
  }
  return place;
}

TEST(HostRangeFolding, FoldedHostsExpandToTheSame) {
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    std::vector<HostAndPort> hosts(1 + random() % 12);
    std::generate(hosts.begin(), hosts.end(), [&random] { return AnyHost(random); });
    std::sort(hosts.begin(), hosts.end(), [&](const HostAndPort& one, const HostAndPort& other) {
      return round % 2 == 0 && one.host < other.host;
    });
    const std::string folded = FoldHosts(hosts);
    ASSERT_EQ(ExpandHosts(folded), hosts) << folded;
  }
}

}  // namespace
}  // namespace Tavrin
