#include "platform/standalone/ipmi_client/HostAddress.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin::Standalone {
namespace {

using ::testing::ElementsAre;

/// What the system knows of one host: an error, or addresses.
struct Resolver {
  int numericError = EAI_NONAME;
  int nameError = 0;
  std::vector<std::string> addresses;
  std::vector<int> flags;  ///< Of each call.
};
Resolver resolver;

addrinfo* NewEntry(const std::string& address, addrinfo* next) {
  auto* const storage = new sockaddr_storage{};
  auto* const entry = new addrinfo{};
  entry->ai_next = next;
  entry->ai_addr = reinterpret_cast<sockaddr*>(storage);
  auto* const v6 = reinterpret_cast<sockaddr_in6*>(storage);
  auto* const v4 = reinterpret_cast<sockaddr_in*>(storage);
  const bool isV6 = inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1;
  const bool isV4 = inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1;
  EXPECT_NE(isV6, isV4) << address;
  storage->ss_family = isV6 ? AF_INET6 : AF_INET;
  entry->ai_addrlen = isV6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  return entry;
}

class HostAddress : public ::testing::Test {
 protected:
  HostAddress() { resolver = Resolver{}; }

  Failure Resolve() { return ResolveHost("smm", addresses); }

  std::vector<std::string> addresses = {"as before"};
};

TEST_F(HostAddress, Ipv4AddressesComeFirstAndOtherwiseInTheSystemsOrder) {
  resolver.addresses = {"::1", "192.0.2.2", "2001:db8::1", "192.0.2.1"};
  EXPECT_EQ(Resolve().result, 0);
  EXPECT_THAT(addresses, ElementsAre("192.0.2.2", "192.0.2.1", "::1", "2001:db8::1"));
}

TEST_F(HostAddress, TextThatIsNoHostNameIsToldWithoutAskingTheSystem) {
  EXPECT_EQ(ResolveHost("", addresses).words, "the host name does not resolve (it is empty)");
  EXPECT_EQ(ResolveHost(std::string("smm\0", 4), addresses).words,
            "the host name does not resolve (it holds a zero byte)");
  EXPECT_THAT(resolver.flags, ElementsAre());
}

TEST_F(HostAddress, AddressIsTakenWithoutRegardToTheMachinesOwn) {
  resolver.numericError = 0;
  resolver.addresses = {"::1"};
  EXPECT_EQ(Resolve().result, 0);
  EXPECT_THAT(addresses, ElementsAre("::1"));
  EXPECT_THAT(resolver.flags, ElementsAre(AI_NUMERICHOST));
}

TEST_F(HostAddress, NameIsLookedUpAfterItTurnedOutToBeNoAddress) {
  resolver.addresses = {"192.0.2.1"};
  Resolve();
  EXPECT_THAT(resolver.flags, ElementsAre(AI_NUMERICHOST, AI_ADDRCONFIG));
}

struct ResolverError {
  int error;
  int result;
  FailureCause cause;
  const char* words;
  const char* advice;
};

TEST_F(HostAddress, ErrorOfTheSystemIsToldApart) {
  const std::vector<ResolverError> rows = {
      {EAI_NONAME, ConnectResult::BadHostName, FailureCause::HostName,
       "the host name does not resolve (", "check it, or give the address"},
      {EAI_FAIL, ConnectResult::BadHostName, FailureCause::HostName,
       "the host name does not resolve (", "check it, or give the address"},
      {EAI_AGAIN, ConnectResult::WorthRetrying, FailureCause::NameServer,
       "no name server could resolve the host name (", "try again later, or give the address"},
      {EAI_MEMORY, ConnectResult::Failed, FailureCause::Other,
       "this machine cannot resolve host names (", ""},
      {EAI_SYSTEM, ConnectResult::Failed, FailureCause::Other,
       "this machine cannot resolve host names (", ""},
  };
  for (const ResolverError& row : rows) {
    resolver.nameError = row.error;
    const Failure failure = Resolve();
    EXPECT_EQ(failure.result, row.result) << row.error;
    EXPECT_EQ(failure.cause, row.cause) << row.error;
    EXPECT_EQ(failure.words, std::string(row.words) + gai_strerror(row.error) + ")");
    EXPECT_EQ(failure.advice, row.advice) << row.error;
  }
  EXPECT_THAT(addresses, ElementsAre("as before"));
}

}  // namespace
}  // namespace Tavrin::Standalone

extern "C" int getaddrinfo(const char* /*node*/, const char* /*service*/, const addrinfo* hints,
                           addrinfo** list) {
  using Tavrin::Standalone::resolver;
  resolver.flags.push_back(hints->ai_flags);
  const int error = hints->ai_flags == AI_NUMERICHOST ? resolver.numericError : resolver.nameError;
  *list = nullptr;
  if (error == 0) {
    // Unless it is told the kind of socket, the system names each address once for each kind.
    const int kinds = hints->ai_socktype == SOCK_DGRAM ? 1 : 3;
    for (auto address = resolver.addresses.rbegin(); address != resolver.addresses.rend();
         ++address) {
      for (int kind = 0; kind < kinds; ++kind) {
        *list = Tavrin::Standalone::NewEntry(*address, *list);
      }
    }
  }
  return error;
}

extern "C" void freeaddrinfo(addrinfo* list) {
  while (list != nullptr) {
    addrinfo* const next = list->ai_next;
    delete reinterpret_cast<sockaddr_storage*>(list->ai_addr);
    delete list;
    list = next;
  }
}
