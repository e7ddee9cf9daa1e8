#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"
#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "tests/doubles/Operations.h"
#include "tests/unit/PlatformTest.h"

// Callers, and the libraries behind the platform, were compiled with these types: which members a
// record has, in which order and of which width. Where the compiler can, it checks them.

namespace Tavrin {
namespace {

using TavrinConnection::ConnectionInfo;
using Text = std::string;
using Bytes = std::vector<std::uint8_t>;

/// Whether RECORD holds a member of TYPE so many bytes from its beginning.
#define EXPECT_MEMBER(RECORD, TYPE, MEMBER, OFFSET)                       \
  static_assert(std::is_same_v<decltype(RECORD::MEMBER), TYPE>, #MEMBER); \
  static_assert(offsetof(RECORD, MEMBER) == (OFFSET), #MEMBER)

static_assert(sizeof(ConnectionInfo) == 3 * sizeof(Text) + 24);
EXPECT_MEMBER(ConnectionInfo, Text, address, 0);
EXPECT_MEMBER(ConnectionInfo, std::uint16_t, port, sizeof(Text));
EXPECT_MEMBER(ConnectionInfo, Text, userName, sizeof(Text) + 8);
EXPECT_MEMBER(ConnectionInfo, Text, password, 2 * sizeof(Text) + 8);
EXPECT_MEMBER(ConnectionInfo, std::uint16_t, aux16A, 3 * sizeof(Text) + 8);
EXPECT_MEMBER(ConnectionInfo, std::uint16_t, aux16B, 3 * sizeof(Text) + 10);
EXPECT_MEMBER(ConnectionInfo, std::int32_t, aux32A, 3 * sizeof(Text) + 12);
EXPECT_MEMBER(ConnectionInfo, std::int32_t, connectionKind, 3 * sizeof(Text) + 16);
EXPECT_MEMBER(ConnectionInfo, std::int32_t, aux32B, 3 * sizeof(Text) + 20);

static_assert(sizeof(IPMICOMMAND) == sizeof(Bytes) + 16);
EXPECT_MEMBER(IPMICOMMAND, std::uint8_t, cmd, 0);
EXPECT_MEMBER(IPMICOMMAND, Bytes, data, 8);
EXPECT_MEMBER(IPMICOMMAND, std::uint8_t, netFn, 8 + sizeof(Bytes));

static_assert(std::is_same_v<std::underlying_type_t<SMMIype>, std::int32_t>);
static_assert(SMM_FIRST_GENERATION == 0 && SMM_SECOND_GENERATION == 1);

// Each platform object is one pointer to what its implementation holds.
static_assert(sizeof(IpmiClient) == sizeof(void*));
static_assert(sizeof(Log) == sizeof(void*));
static_assert(sizeof(SMMInfo) == sizeof(void*));

static_assert(std::is_same_v<decltype(&IpmiClient::connect), int (IpmiClient::*)()>);
static_assert(std::is_same_v<decltype(&IpmiClient::send),
                             int (IpmiClient::*)(const IPMICOMMAND&, Bytes&, std::uint8_t&)>);
static_assert(std::is_same_v<decltype(&IpmiClient::disconnect), int (IpmiClient::*)()>);
static_assert(std::is_same_v<decltype(&Log::Stream), std::ostream& (Log::*)()>);
static_assert(std::is_same_v<decltype(&Log::GetMinLogLevel), unsigned int (*)()>);
static_assert(std::is_same_v<decltype(&SMMInfo::GetSmmType), int (SMMInfo::*)(SMMIype&)>);
static_assert(std::is_same_v<decltype(&GetGlobalConfigValue), int (*)(const Text&, int)>);

// The facade holds its implementation by Boost's shared pointer, and nothing else: callers copy and
// destroy it in code of their own.
static_assert(sizeof(SMMInventory) == sizeof(boost::shared_ptr<SMMInventoryImpl>));
template <auto member>
struct HoldsImplementationByBoostsPointer {
  static_assert(
      std::is_same_v<decltype(member), boost::shared_ptr<SMMInventoryImpl> SMMInventory::*>);
};
template struct HoldsImplementationByBoostsPointer<&SMMInventory::implementation_>;

struct ExpectedImplementation : ConnectionInfo {
  SMMIype smmType;
  SMMStatus smmStatus;
  std::uint64_t psuSlotCount;
  std::uint64_t nodeCount;
};
static_assert(sizeof(SMMInventoryImpl) == sizeof(ExpectedImplementation));
static_assert(!std::is_polymorphic_v<SMMInventoryImpl>);
static_assert(std::is_same_v<decltype(SMMInventoryImpl::smmType), SMMIype>);
static_assert(std::is_same_v<decltype(SMMInventoryImpl::smmStatus), SMMStatus>);
static_assert(std::is_same_v<decltype(SMMInventoryImpl::psuSlotCount), std::uint64_t>);
static_assert(std::is_same_v<decltype(SMMInventoryImpl::nodeCount), std::uint64_t>);

void ExpectMembersAsListed(const std::monostate& /*nothing*/) {}
void ExpectMembersAsListed(const Text& /*text*/) {}

template <typename Record>
void ExpectMembersAsListed(const Record& record) {
  std::size_t end = 0;
  Double::ForEachMember(record, [&](const char* name, const auto& member) {
    const auto* const begin = reinterpret_cast<const char*>(&record);
    EXPECT_EQ(reinterpret_cast<const char*>(&member) - begin, static_cast<std::ptrdiff_t>(end))
        << name;
    end += sizeof(member);
  });
  constexpr std::size_t kUnit = alignof(Record);
  EXPECT_EQ(sizeof(Record), (end + kUnit - 1) / kUnit * kUnit);
}

template <typename Record>
void ExpectMembersAsListed(const std::vector<Record>& /*records*/) {
  ExpectMembersAsListed(Record());
}

class Layout : public Double::PlatformTest {};

TEST_F(Layout, RecordsHoldTheirMembersOneAfterTheOtherAndNothingElse) {
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    SCOPED_TRACE(operation.name);
    std::visit([](const auto& output) { ExpectMembersAsListed(output); }, operation.fresh);
  }
}

TEST_F(Layout, MembersOfTheImplementationFollowTheConnectionSettings) {
  platform.ExpectStatusReads(1, {0x01});
  const SMMInventoryImpl inventory(Double::TestSettings());
  const auto offset = [&](const void* member) {
    return static_cast<const char*>(member) - reinterpret_cast<const char*>(&inventory);
  };
  EXPECT_EQ(offset(static_cast<const ConnectionInfo*>(&inventory)), 0);
  EXPECT_EQ(offset(&inventory.smmType), static_cast<std::ptrdiff_t>(sizeof(ConnectionInfo)));
  EXPECT_EQ(offset(&inventory.smmStatus), offset(&inventory.smmType) + 4);
  EXPECT_EQ(offset(&inventory.psuSlotCount), offset(&inventory.smmType) + 16);
  EXPECT_EQ(offset(&inventory.nodeCount), offset(&inventory.smmType) + 24);
}

}  // namespace
}  // namespace Tavrin
