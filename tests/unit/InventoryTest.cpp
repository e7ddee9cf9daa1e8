#include "tests/unit/InventoryTest.h"

#include <map>
#include <new>

#include "module/smm/smm_inventory/StatusCode.h"

namespace Tavrin::Double {
namespace {

class DotBehindNumbers : public std::num_put<char> {
 protected:
  iter_type do_put(iter_type out, std::ios_base& format, char fill, long number) const override {
    return PutDot(std::num_put<char>::do_put(out, format, fill, number));
  }
  iter_type do_put(iter_type out, std::ios_base& format, char fill,
                   unsigned long number) const override {
    return PutDot(std::num_put<char>::do_put(out, format, fill, number));
  }

 private:
  static iter_type PutDot(iter_type out) {
    *out = '.';
    return ++out;
  }
};

std::string Raw(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += std::string{static_cast<char>(byte), ' '};
  }
  return text;
}

// A length that no row speaks of would go untried without a word.
void ExpectNoLengthLeftOut(const std::vector<LengthRow>& rows, std::size_t answerLength) {
  std::map<std::int32_t, std::size_t> next;
  for (const LengthRow& row : rows) {
    EXPECT_EQ(row.shortest, next[row.smmType]) << "start of a row of SMM type " << row.smmType;
    EXPECT_LE(row.shortest, row.longest) << "a row of SMM type " << row.smmType;
    next[row.smmType] = row.longest + 1;
  }
  for (const auto& [smmType, end] : next) {
    EXPECT_EQ(end, answerLength + 1) << "length behind the last row of SMM type " << smmType;
  }
}

}  // namespace

std::vector<Line> ExchangeLines(const std::string& request, const Bytes& response) {
  return {{4, "Send impi cmd suceess: " + request},
          {4, "Response=" + Raw(response)},
          {4, "Response=" + HexText(response)}};
}

std::vector<Line> TrimLines(const Bytes& shortened) {
  return {{4, "it is smm2..."},
          {4, "New response=" + Raw(shortened)},
          {4, "New response=" + HexText(shortened)}};
}

std::vector<Line> operator+(std::vector<Line> first, const std::vector<Line>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

DottedNumbers::DottedNumbers()
    : before_(std::locale::global(std::locale(std::locale::classic(), new DotBehindNumbers))) {}

void InventoryTest::ExpectOutcomes(const std::vector<LengthRow>& rows, const Bytes& answer,
                                   const std::function<int(const Bytes&, std::uint8_t)>& run,
                                   const std::function<std::string()>& describeOutput) {
  ExpectNoLengthLeftOut(rows, answer.size());
  for (const LengthRow& row : rows) {
    inventory.smmType = static_cast<SMMIype>(row.smmType);
    for (std::size_t length = row.shortest; length <= row.longest; ++length) {
      ASSERT_LE(length, answer.size());
      const Bytes part(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(length));
      for (const std::uint8_t completionCode : Bytes{0x00, 0xC1, 0xFF}) {
        Outcome outcome;
        try {
          outcome.first = run(part, completionCode);
        } catch (const std::bad_alloc&) {
          outcome.first = kRaisesBadAlloc;
        }
        outcome.second = describeOutput();
        EXPECT_EQ(outcome, completionCode == 0 ? row.ofCode0 : row.ofOtherCodes)
            << "SMM type " << row.smmType << ", " << length << " bytes, completion code "
            << int{completionCode};
      }
    }
  }
}

void InventoryTest::ExpectExchangeStatusesHandedOn(const std::function<int()>& operation) {
  inventory.connectionKind = 3;
  EXPECT_EQ(operation(), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_THAT(platform.lines, ::testing::IsEmpty());

  inventory.connectionKind = 1;
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(operation(), StatusCode::NotConnected);
  EXPECT_THAT(platform.lines, ::testing::ElementsAre(Line{1, "connect failed with error:5"}));
}

std::string InventoryTest::Ask(const std::string& operation, int argument) {
  const auto& asked = OperationNamed<Implementation>(operation);
  Output output = Marked(asked.fresh);
  std::string status;
  try {
    status = "status " + std::to_string(asked.call(inventory, argument, output));
  } catch (const std::bad_alloc&) {
    status = "raises std::bad_alloc";
  }
  return status + '\n' + Text(output);
}

}  // namespace Tavrin::Double
