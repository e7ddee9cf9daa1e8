#include "fleet/FleetMailbox.h"

#include <algorithm>
#include <utility>

namespace Tavrin {

void FleetMailbox::Post(FleetMail mail) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!slots_.at(mail.index).isClosed) {
    mail_.push_back(std::move(mail));
    arrival_.notify_one();
  }
}

void FleetMailbox::Post(std::size_t index, Part part, const Reading& soFar) {
  const auto copy = std::make_shared<const Reading>(soFar);
  PassEvent event = [copy, part](Observer& observer) { observer.PartRead(*copy, part); };
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!slots_.at(index).isClosed) {
    slots_.at(index).soFar = copy;
    mail_.push_back({index, std::move(event)});
    arrival_.notify_one();
  }
}

Reading FleetMailbox::Close(std::size_t index) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Slot& slot = slots_.at(index);
  slot.isClosed = true;
  mail_.erase(std::remove_if(mail_.begin(), mail_.end(),
                             [index](const FleetMail& mail) { return mail.index == index; }),
              mail_.end());
  const std::shared_ptr<const Reading> soFar = std::move(slot.soFar);
  return soFar ? *soFar : Reading();
}

std::vector<FleetMail> FleetMailbox::Take(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock<std::mutex> lock(mutex_);
  arrival_.wait_until(lock, deadline, [this] { return !mail_.empty(); });
  return std::exchange(mail_, {});
}

}  // namespace Tavrin
