#pragma once

#include <freeipmi/freeipmi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Tavrin {
namespace Standalone {

/// A message or header as FreeIPMI holds it: named fields after a template. Without memory for one
/// there is none, and what FreeIPMI is then asked to do with it fails.
class FiidObject {
 public:
  explicit FiidObject(const fiid_field_t* fieldsOfTemplate)
      : object_(fiid_obj_create(const_cast<fiid_field_t*>(fieldsOfTemplate))) {}

  [[nodiscard]] fiid_obj_t Get() const { return object_.get(); }

  /// The number in a field; nothing when the message ends before it.
  [[nodiscard]] std::optional<std::uint64_t> Number(const char* field) const {
    std::uint64_t value{};
    const bool isThere = fiid_obj_get(Get(), field, &value) == 1;
    return isThere ? std::optional<std::uint64_t>(value) : std::nullopt;
  }

  /// The number in a field of a message that is whole.
  template <typename Integer>
  [[nodiscard]] Integer NumberAs(const char* field) const {
    return static_cast<Integer>(Number(field).value_or(0));
  }

  /// The bytes in a field, as many as there are.
  [[nodiscard]] std::vector<std::uint8_t> Bytes(const char* field) const {
    const int length = fiid_obj_field_len_bytes(Get(), field);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::max(length, 0)));
    if (!bytes.empty()) {
      fiid_obj_get_data(Get(), field, bytes.data(), static_cast<unsigned int>(bytes.size()));
    }
    return bytes;
  }

 private:
  struct Destroyer {
    void operator()(fiid_obj_t object) const { fiid_obj_destroy(object); }
  };
  std::unique_ptr<fiid_obj, Destroyer> object_;
};

}  // namespace Standalone
}  // namespace Tavrin
