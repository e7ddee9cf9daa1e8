#include "benchmarks/support/WholeInventory.h"

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <variant>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/doubles/Operations.h"
#include "tests/support/Gate.h"

namespace Tavrin {
namespace {

constexpr int kNodes = 12;
constexpr std::size_t kPsus = 9;

void Require(bool holds, const char* query) {
  if (!holds) {
    throw std::runtime_error(std::string(query) + " did not give what the enclosure has");
  }
}

template <typename Record>
bool HasAnEntryAPsu(const Record& /*record*/) {
  return true;
}

template <typename Record>
bool HasAnEntryAPsu(const std::vector<Record>& records) {
  return records.size() == kPsus;
}

void Query(SMMInventory& inventory, const Double::Operation<SMMInventory>& operation,
           int argument) {
  Double::Output output = operation.fresh;
  Require(operation.call(inventory, argument, output) == StatusCode::Success &&
              std::visit([](const auto& filled) { return HasAnEntryAPsu(filled); }, output),
          operation.name);
}

void QueryAll(SMMInventory& inventory) {
  Require(inventory.GetNodeNub() == kNodes, "GetNodeNub");
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    const int last = operation.argument == Double::Argument::Node ? kNodes : 1;
    for (int argument = 1; argument <= last && operation.argument != Double::Argument::Psu;
         ++argument) {
      Query(inventory, operation, argument);
    }
  }
}

}  // namespace

void ReadWholeInventory(const TavrinConnection::ConnectionInfo& settings) {
  SMMInventory inventory(settings);
  QueryAll(inventory);
}

ReadingCost ReadAtOnce(const std::vector<TavrinConnection::ConnectionInfo>& enclosures) {
  const std::size_t count = enclosures.size();
  Gate start;
  Gate end;
  std::vector<std::exception_ptr> failures(count);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.Pass();
      std::unique_ptr<SMMInventory> inventory;
      try {
        inventory = std::make_unique<SMMInventory>(enclosures[i]);
        QueryAll(*inventory);
      } catch (...) {
        failures[i] = std::current_exception();
      }
      end.Pass();
    });
  }
  start.WaitFor(count);
  const Meter meter;
  start.Open();
  end.WaitFor(count);
  const ReadingCost reading = {meter.Read(), ResidentKib()};
  end.Open();
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const std::exception_ptr& failure : failures) {
    if (failure) {
      std::rethrow_exception(failure);
    }
  }
  return reading;
}

}  // namespace Tavrin
