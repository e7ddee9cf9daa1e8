#include "simulator/LauncherOptions.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include "simulator/LoopbackPort.h"
#include "simulator/ScenarioValue.h"
#include "support/FileDescriptor.h"
#include "support/TemporaryFile.h"
#include "tests/support/UdpPort.h"

namespace Tavrin::Simulator {
namespace {

using Texts = std::vector<std::string>;

LauncherOptions Parse(const Texts& arguments) {
  std::vector<const char*> pointers = {"smm-simulator"};
  for (const std::string& argument : arguments) {
    pointers.push_back(argument.c_str());
  }
  return ParseLauncherOptions(static_cast<int>(pointers.size()), pointers.data());
}

std::string Complaint(const Texts& arguments) {
  try {
    Parse(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "no complaint";
}

std::string PasswordOf(const std::string& content) {
  const TemporaryFile file(content);
  return Parse({"--generation", "1", "--password-file", file.Path()}).password;
}

TEST(LauncherOptions, DefaultsAreAdminOnAFreePortOfLoopback) {
  const LauncherOptions options = Parse({"--generation", "1"});
  EXPECT_EQ(options.kind, EnclosureKind::FirstGeneration);
  EXPECT_EQ(options.address, "127.0.0.1");
  EXPECT_EQ(options.port, 0);
  EXPECT_EQ(options.userName, "admin");
  EXPECT_EQ(options.password, "simulated");
  EXPECT_EQ(options.scenario, "");
}

TEST(LauncherOptions, SecondGenerationWithoutPlatformIs253) {
  EXPECT_EQ(Parse({"--generation", "2"}).kind, EnclosureKind::SecondGeneration253);
}

TEST(LauncherOptions, FirstGenerationCountsAsPlatform254) {
  EXPECT_EQ(Parse({"--generation", "1", "--platform", "254"}).kind, EnclosureKind::FirstGeneration);
}

TEST(LauncherOptions, PlatformChoosesTheSecondGenerationEnclosure) {
  EXPECT_EQ(Parse({"--generation", "2", "--platform", "253"}).kind,
            EnclosureKind::SecondGeneration253);
  EXPECT_EQ(Parse({"--generation", "2", "--platform", "254"}).kind,
            EnclosureKind::SecondGeneration254);
}

TEST(LauncherOptions, GivenValuesAreTaken) {
  const TemporaryFile scenario(R"({"overrides": []})");
  const LauncherOptions options =
      Parse({"--generation", "1", "--address", "::1", "--port", "65535", "--user",
             "0123456789abcdef", "--scenario", scenario.Path()});
  EXPECT_EQ(options.address, "::1");
  EXPECT_EQ(options.port, 65535);
  EXPECT_EQ(options.userName, "0123456789abcdef");
  EXPECT_EQ(options.scenario, R"({"overrides": []})");
}

TEST(LauncherOptions, PasswordIsTheFilesFirstLine) {
  EXPECT_EQ(PasswordOf("sesame\nsecond\n"), "sesame");
  EXPECT_EQ(PasswordOf("0123456789\"$ '\x01\xFF..."), "0123456789\"$ '\x01\xFF...");
}

TEST(LauncherOptions, CarriageReturnBehindThePasswordDoesNotBelongToIt) {
  EXPECT_EQ(PasswordOf("0123456789abcdefghij\r\nsecond\r\n"), "0123456789abcdefghij");
  EXPECT_EQ(PasswordOf("ses\rame\r"), "ses\rame");
}

TEST(LauncherOptions, PasswordWithoutBytesOrOver20BytesIsRefusedWithoutShowingIt) {
  for (const char* const content : {"", "\nsesame\n", "\r\n", "0123456789abcdefghijk\n"}) {
    const TemporaryFile file(content);
    EXPECT_EQ(Complaint({"--generation", "1", "--password-file", file.Path()}),
              "--password-file is \"" + file.Path() + "\"; expected a first line of 1 to 20 bytes");
  }
}

TEST(LauncherOptions, PasswordWithAZeroByteIsRefused) {
  const TemporaryFile file(std::string("ab\0c", 4));
  EXPECT_EQ(Complaint({"--generation", "1", "--password-file", file.Path()}),
            "--password-file is \"" + file.Path() + "\"; expected a first line without 0x00 bytes");
}

TEST(LauncherOptions, PasswordThatIsTooLongIsToldAsThatWhateverIsInIt) {
  const TemporaryFile file(std::string("0123456789\0abcdefghij", 21));
  EXPECT_EQ(Complaint({"--generation", "1", "--password-file", file.Path()}),
            "--password-file is \"" + file.Path() + "\"; expected a first line of 1 to 20 bytes");
}

/// Descriptor 0 is free as long as it lives.
class ClosedInput {
 public:
  ClosedInput() : input_(fcntl(0, F_DUPFD_CLOEXEC, 3)) { close(0); }
  ~ClosedInput() { dup2(input_.Get(), 0); }
  ClosedInput(const ClosedInput&) = delete;
  ClosedInput& operator=(const ClosedInput&) = delete;

 private:
  FileDescriptor input_;
};

TEST(LauncherOptions, FilesAndPortsAreToBeHadWithoutStandardInput) {
  EXPECT_EQ(PasswordOf("sesame"), "sesame");
  const ClosedInput closed;
  EXPECT_EQ(PasswordOf("sesame"), "sesame");
  EXPECT_TRUE(PortReservation::Take("127.0.0.1", 0));
}

TEST(LauncherOptions, BadScenarioFileIsNamed) {
  const TemporaryFile file("[]");
  try {
    Parse({"--generation", "1", "--scenario", file.Path()});
    FAIL() << "accepted";
  } catch (const ScenarioError& error) {
    EXPECT_EQ(error.what(),
              file.Path() +
                  ": the document is []; expected an object with the keys enclosure, overrides");
  }
}

TEST(LauncherOptions, FileOfOneMebibyteIsReadAndAGreaterOneRefused) {
  std::string content = R"({"overrides": []})";
  content.resize(1048576, ' ');
  const TemporaryFile greatest(content);
  const TemporaryFile tooGreat(content + " ");
  EXPECT_EQ(Parse({"--generation", "1", "--scenario", greatest.Path()}).scenario, content);
  EXPECT_EQ(Complaint({"--generation", "1", "--scenario", tooGreat.Path()}),
            "--scenario is \"" + tooGreat.Path() + "\"; expected a file of at most 1048576 bytes");
}

TEST(LauncherOptions, HelpNamesEveryOptionWithItsDefault) {
  try {
    Parse({"--help"});
    FAIL() << "no help";
  } catch (const HelpWanted& help) {
    std::string words;
    std::istringstream text(help.what());
    for (std::string word; text >> word;) {
      words += word + " ";
    }
    EXPECT_EQ(words,
              "Simulates the SMM of an enclosure over IPMI 2.0 on loopback. "
              "Usage: smm-simulator [OPTIONS] Options: "
              "-h,--help Print this help message and exit "
              "--generation TEXT Generation of the SMM: 1 or 2 (required) "
              "--platform TEXT Platform id: 253 (default) or 254; with --generation 1 only 254 "
              "--address TEXT Loopback address to listen on (default 127.0.0.1) "
              "--port TEXT UDP port to listen on (default 0: a free one) "
              "--user TEXT IPMI user name (default admin) "
              "--password-file TEXT File whose first line is the password (default password: "
              "simulated) "
              "--scenario TEXT JSON file that changes the enclosure or its answers ");
  }
}

struct BadArguments {
  std::string name;
  Texts arguments;
  std::string complaint;
};

class BadOption : public testing::TestWithParam<BadArguments> {};

TEST_P(BadOption, GetsOneSentenceWithValueAndExpectation) {
  EXPECT_EQ(Complaint(GetParam().arguments), GetParam().complaint);
}

const std::string kPort = "; expected a number from 0 (any free one) to 65535";
const std::string kLongPath = "/" + std::string(5000, 'a');
const std::string kLoopback = "; expected a loopback address such as 127.0.0.1 or ::1";

INSTANTIATE_TEST_SUITE_P(
    All, BadOption,
    testing::Values(
        BadArguments{"NoGeneration", {}, "--generation is missing; expected 1 or 2"},
        BadArguments{
            "Generation3", {"--generation", "3"}, R"(--generation is "3"; expected 1 or 2)"},
        BadArguments{"GenerationWithoutValue",
                     {"--generation"},
                     "--generation: 1 required TEXT missing; --help lists what is expected"},
        BadArguments{"Platform253OfFirstGeneration",
                     {"--generation", "1", "--platform", "253"},
                     R"(--platform is "253"; expected 254 or none with --generation 1)"},
        BadArguments{"Platform252",
                     {"--generation", "2", "--platform", "252"},
                     R"(--platform is "252"; expected 253 or 254)"},
        BadArguments{
            "PortNoNumber", {"--generation", "1", "--port", "62x"}, R"(--port is "62x")" + kPort},
        BadArguments{"PortTooLarge",
                     {"--generation", "1", "--port", "65536"},
                     R"(--port is "65536")" + kPort},
        BadArguments{
            "PortNegative", {"--generation", "1", "--port", "-1"}, R"(--port is "-1")" + kPort},
        BadArguments{"EveryAddress",
                     {"--generation", "1", "--address", "0.0.0.0"},
                     R"(--address is "0.0.0.0")" + kLoopback},
        BadArguments{"AddressByName",
                     {"--generation", "1", "--address", "localhost"},
                     R"(--address is "localhost")" + kLoopback},
        BadArguments{"EmptyUser",
                     {"--generation", "1", "--user", ""},
                     "--user is 0 bytes long; expected 1 to 16 bytes"},
        BadArguments{"UserTooLong",
                     {"--generation", "1", "--user", "0123456789abcdefg"},
                     "--user is 17 bytes long; expected 1 to 16 bytes"},
        BadArguments{"NoPasswordFile",
                     {"--generation", "1", "--password-file", "/none"},
                     R"(--password-file is "/none"; expected a readable file (No such file or )"
                     "directory)"},
        BadArguments{"ScenarioIsADirectory",
                     {"--generation", "1", "--scenario", "/tmp"},
                     R"(--scenario is "/tmp"; expected a readable file (Is a directory))"},
        BadArguments{
            "PathTooLong",
            {"--generation", "1", "--scenario", kLongPath},
            "--scenario is \"" + kLongPath + "\"; expected a readable file (File name too long)"},
        BadArguments{
            "FileThatCannotBeRead",
            {"--generation", "1", "--password-file", "/proc/self/mem"},
            R"(--password-file is "/proc/self/mem"; expected a readable file (Input/output )"
            "error)"},
        BadArguments{"FileWithoutEnd",
                     {"--generation", "1", "--scenario", "/dev/zero"},
                     R"(--scenario is "/dev/zero"; expected a file of at most 1048576 bytes)"},
        BadArguments{"UnknownOption",
                     {"--generation", "1", "--speed"},
                     "The following argument was not expected: --speed; --help lists what is "
                     "expected"}),
    [](const auto& instance) { return instance.param.name; });

TEST(LoopbackAddress, WholeLoopbackNetIsOne) {
  EXPECT_TRUE(IsLoopbackAddress("127.0.0.1"));
  EXPECT_TRUE(IsLoopbackAddress("127.255.0.9"));
  EXPECT_TRUE(IsLoopbackAddress("::1"));
  EXPECT_FALSE(IsLoopbackAddress("128.0.0.1"));
  EXPECT_FALSE(IsLoopbackAddress("::2"));
  EXPECT_FALSE(IsLoopbackAddress(""));
}

TEST(LoopbackEndpoint, IsMadeOfAnAddressInNumbersAlone) {
  try {
    MakeEndpoint("localhost", 623);
    FAIL() << "accepted";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "no address in numbers: localhost");
  }
}

TEST(LoopbackEndpoint, IsWrittenWithBracketsWhereTheAddressHasColons) {
  EXPECT_EQ(EndpointText("127.0.0.1", 623), "127.0.0.1:623");
  EXPECT_EQ(EndpointText("::1", 623), "[::1]:623");
}

/// Whether the bytes, sent as the answer to a ping, count as one.
bool CountsAsPong(const std::string& answer) {
  const UdpPort port;
  const LoopbackEndpoint endpoint = MakeEndpoint("127.0.0.1", port.Number());
  std::string ping(64, '\0');
  std::thread controller([&] {
    LoopbackEndpoint asker;
    asker.length = sizeof asker.storage;
    const ssize_t length = recvfrom(port.Descriptor(), ping.data(), ping.size(), 0,
                                    reinterpret_cast<sockaddr*>(&asker.storage), &asker.length);
    ping.resize(static_cast<std::size_t>(length));
    sendto(port.Descriptor(), answer.data(), answer.size(), 0, asker.Address(), asker.length);
  });
  const bool answers = AnswersPing(endpoint, 10000);
  controller.join();
  EXPECT_EQ(ping, std::string("\x06\0\xFF\x06\0\0\x11\xBE\x80\0\0\0", 12));
  return answers;
}

TEST(PresencePing, IsAnsweredByAMessageOfThePongsTypeAlone) {
  EXPECT_TRUE(CountsAsPong(std::string(8, '\x11') + '\x40'));
  EXPECT_TRUE(CountsAsPong(std::string(8, '\x11') + '\x40' + std::string(19, '\x11')));
  EXPECT_FALSE(CountsAsPong(std::string(8, '\x40')));
  EXPECT_FALSE(CountsAsPong(std::string(8, '\x40') + '\x41'));
  EXPECT_FALSE(CountsAsPong(""));
}

TEST(PresencePing, WaitsNoLongerThanItsTime) {
  UdpPort port;
  const LoopbackEndpoint endpoint = MakeEndpoint("127.0.0.1", port.Number());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(AnswersPing(endpoint, 200));
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(200));
  EXPECT_LT(took, std::chrono::seconds(5));
  port.Refuse();
  EXPECT_FALSE(AnswersPing(endpoint, 60000));
  LoopbackEndpoint cutOff = endpoint;
  cutOff.length = 1;
  EXPECT_FALSE(AnswersPing(cutOff, 60000));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(PortReservation, IsRefusedWhereAnotherSimulatorHasItsName) {
  const std::uint16_t port = PortReservation::Take("127.0.0.1", 0).value().Port();
  const std::string name = "poveixme-smm-simulator 127.0.0.1:" + std::to_string(port);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::copy(name.begin(), name.end(), &address.sun_path[1]);
  const FileDescriptor other(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(other.Get(), reinterpret_cast<const sockaddr*>(&address),
                 static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size())),
            0);
  EXPECT_FALSE(PortReservation::Take("127.0.0.1", port));
}

TEST(PortReservation, IsRefusedAlsoWhereAnotherProgramHasThePort) {
  const UdpPort port;
  EXPECT_FALSE(PortReservation::Take("127.0.0.1", port.Number()));
}

TEST(PresencePing, WithoutASocketItsReasonIsTold) {
  try {
    AnswersPing(LoopbackEndpoint(), 0);
    FAIL() << "a socket of no address family";
  } catch (const std::system_error& error) {
    EXPECT_STREQ(error.what(), "no socket: Address family not supported by protocol");
  }
}

TEST(PortReservation, ReservedPortCannotBeReservedAgainUntilItIsGivenBack) {
  auto reserved = PortReservation::Take("127.0.0.1", 0);
  ASSERT_TRUE(reserved);
  const std::uint16_t port = reserved->Port();
  EXPECT_NE(port, 0);
  EXPECT_FALSE(PortReservation::Take("127.0.0.1", port));
  reserved.reset();
  EXPECT_TRUE(PortReservation::Take("127.0.0.1", port));
}

}  // namespace
}  // namespace Tavrin::Simulator
