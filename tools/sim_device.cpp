#include "sim_device.h"

#include <span>
#include <utility>

namespace vq3900::sim {

std::int32_t SimDevice::read(DeRegElement_S* elements, std::uint32_t count, void* device) {
  return static_cast<SimDevice*>(device)->transfer(Direction::kRead, elements, count);
}

std::int32_t SimDevice::write(DeRegElement_S* elements, std::uint32_t count, void* device) {
  return static_cast<SimDevice*>(device)->transfer(Direction::kWrite, elements, count);
}

std::int32_t SimDevice::attach() {
  attached_ = true;
  return de_register_read_write_functon(read, write, this);
}

void SimDevice::detach() {
  if (!attached_) return;
  attached_ = false;
  de_register_read_write_functon(nullptr, nullptr, nullptr);
}

std::uint32_t SimDevice::peek(std::uint32_t address) const {
  const auto at = bank_.find(address);
  return at == bank_.end() ? 0 : at->second;
}

void SimDevice::fail_transfer(std::size_t index, std::int32_t code) {
  failing_ = Failure{index, code};
}

void SimDevice::clear_log() {
  log_.clear();
  stray_bits_.clear();
}

std::int32_t SimDevice::transfer(Direction direction, DeRegElement_S* elements, std::uint32_t count) {
  const std::size_t index = log_.size();
  const bool fails = failing_ && failing_->index == index;
  if (!fails) {
    for (DeRegElement_S& element : std::span{elements, count}) {
      if (direction == Direction::kRead) {
        element.value = peek(element.address);
      } else {
        store(element);
      }
    }
  }
  if (tamper_) tamper_(index, direction, elements, count);
  const std::int32_t result = fails ? failing_->code : 0;
  log_.push_back({direction, {elements, elements + count}, result});
  return result;
}

void SimDevice::store(const DeRegElement_S& element) {
  if ((element.value & ~element.mask) != 0) stray_bits_.push_back({element.address, element.mask, element.value});
  std::uint32_t& cell = bank_[element.address];
  cell = mask_mode_ == MaskMode::kStoreAll ? element.value : (cell & ~element.mask) | (element.value & element.mask);
}

}  // namespace vq3900::sim
