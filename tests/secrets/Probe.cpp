// A program as any user of the library: asks an SMM everything, then speaks to it through the
// client alone. Its log goes where the standalone logger puts it; nothing else is printed. It stays
// for a moment before it ends, so that whoever watches it gets to see it however quickly it was
// refused.
//
// usage: secrets_probe HOST PORT USER < password
#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/IpmiClient.h"
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

void AskThroughClient(const TavrinConnection::ConnectionInfo& info) {
  IpmiClient client(info.address, info.userName, info.password, std::to_string(info.port), 3);
  client.connect();
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0;
  client.send({0xA8, {}, 0x32}, response, completionCode);
  client.disconnect();
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
  Tavrin::AskThroughClient(info);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
}
