// A depth engine in memory: a register bank behind the library's two callbacks.
//
// It logs every transfer, honours or ignores the masks of writes and reports bits written outside them, and fails the
// transfers that a test asks it to. Registers that were never written read as 0.
#ifndef VQ3900_TOOLS_SIM_DEVICE_H
#define VQ3900_TOOLS_SIM_DEVICE_H

#include "vq3900_depth_engine.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace vq3900::sim {

enum class Direction : std::uint8_t { kRead, kWrite };

// One call of a callback: the elements as the library handed them over (write) or as they went back (read).
struct Transfer {
  Direction direction;
  std::vector<DeRegElement_S> elements;
  std::int32_t result;
};

// What a write does with bits outside its element's mask.
enum class MaskMode : std::uint8_t { kStoreAll, kStoreMasked };

// A write that carried bits outside its mask.
struct StrayBits {
  std::uint32_t address;
  std::uint32_t mask;
  std::uint32_t value;
};

class SimDevice {
 public:
  SimDevice() = default;
  ~SimDevice() { detach(); }
  SimDevice(const SimDevice&) = delete;
  SimDevice& operator=(const SimDevice&) = delete;

  // The read and write callbacks; their context is the device.
  static std::int32_t read(DeRegElement_S* elements, std::uint32_t count, void* device);
  static std::int32_t write(DeRegElement_S* elements, std::uint32_t count, void* device);

  // Registers this device's callbacks with the library, until detach() or the device's end.
  std::int32_t attach();
  void detach();

  std::uint32_t peek(std::uint32_t address) const;
  void poke(std::uint32_t address, std::uint32_t value) { bank_[address] = value; }
  const std::map<std::uint32_t, std::uint32_t>& bank() const { return bank_; }

  void set_mask_mode(MaskMode mode) { mask_mode_ = mode; }

  // The transfer with that index, counted from 0 since the last clear_log(), answers the code and moves nothing.
  void fail_transfer(std::size_t index, std::int32_t code);
  void fail_none() { failing_.reset(); }

  // Called with every transfer before its elements go back: tests change addresses and masks with it.
  using Tamper = std::function<void(std::size_t index, Direction, DeRegElement_S* elements, std::uint32_t count)>;
  void set_tamper(Tamper tamper) { tamper_ = std::move(tamper); }

  const std::vector<Transfer>& log() const { return log_; }
  const std::vector<StrayBits>& stray_bits() const { return stray_bits_; }
  void clear_log();

 private:
  struct Failure {
    std::size_t index;
    std::int32_t code;
  };

  std::int32_t transfer(Direction direction, DeRegElement_S* elements, std::uint32_t count);
  void store(const DeRegElement_S& element);

  bool attached_ = false;
  std::map<std::uint32_t, std::uint32_t> bank_;
  MaskMode mask_mode_ = MaskMode::kStoreAll;
  std::optional<Failure> failing_;
  Tamper tamper_;
  std::vector<Transfer> log_;
  std::vector<StrayBits> stray_bits_;
};

}  // namespace vq3900::sim

#endif
