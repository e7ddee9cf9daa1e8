// A program as any user of the library: asks an SMM everything. Its log goes where the standalone
// logger puts it; nothing else is printed. It stays for a moment before it ends, so that whoever
// watches it gets to see it however quickly it was refused.
//
// usage: secrets_probe HOST PORT USER < password
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/doubles/Operations.h"

namespace Tavrin {
namespace {

void AskEverything(const TavrinConnection::ConnectionInfo& info) {
  SMMInventory inventory(info);
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    Double::Output output = operation.fresh;
    operation.call(inventory, 1, output);
  }
}

}  // namespace
}  // namespace Tavrin

int main(int /*argc*/, char** argv) {
  Tavrin::TavrinConnection::ConnectionInfo info;
  info.address = argv[1];
  info.port = static_cast<std::uint16_t>(std::stoul(argv[2]));
  info.userName = argv[3];
  std::getline(std::cin, info.password);
  info.connectionKind = 7;
  Tavrin::AskEverything(info);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
}
