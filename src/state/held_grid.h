// A displacement grid that the library holds from its setter to its conversion.
#ifndef VQ3900_STATE_HELD_GRID_H
#define VQ3900_STATE_HELD_GRID_H

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace vq3900 {

// What keeps somebody else's arrays alive, and how it is deleted.
using GridOwner = std::unique_ptr<void, void (*)(void*)>;

template <typename Owner>
GridOwner grid_owner(std::unique_ptr<Owner> owner) {
  return {owner.release(), [](void* released) { delete static_cast<Owner*>(released); }};
}

// Two arrays of as many samples; one that was never given is null. Like HeldArray it is released, not destroyed.
class HeldGrid {
 public:
  constexpr HeldGrid() = default;
  HeldGrid(const HeldGrid&) = delete;
  HeldGrid& operator=(const HeldGrid&) = delete;

  const double* dx() const { return dx_; }
  const double* dy() const { return dy_; }
  bool kept() const { return delete_owner_ != nullptr; }  // else the arrays are copies

  // Holds copies, of what is held already if need be. False: no memory, and what was held before stays.
  bool assign(const double* dx, const double* dy, std::size_t samples) {
    Samples dx_copy;
    Samples dy_copy;
    if (!copy(dx, samples, dx_copy) || !copy(dy, samples, dy_copy)) return false;
    release();
    dx_ = dx_copy.release();
    dy_ = dy_copy.release();
    return true;
  }

  // Holds the arrays themselves, which live as long as the owner.
  void keep(const double* dx, const double* dy, GridOwner owner) {
    release();
    dx_ = dx;
    dy_ = dy;
    delete_owner_ = owner.get_deleter();
    owner_ = owner.release();
  }

  void release() {
    if (kept()) {
      GridOwner(std::exchange(owner_, nullptr), std::exchange(delete_owner_, nullptr)).reset();
    } else {
      delete[] dx_;
      delete[] dy_;
    }
    dx_ = dy_ = nullptr;
  }

 private:
  using Samples = std::unique_ptr<double[]>;

  static bool copy(const double* from, std::size_t samples, Samples& to) {
    if (from == nullptr) return true;
    if (samples > std::numeric_limits<std::ptrdiff_t>::max() / sizeof *from) return false;
    to.reset(new (std::nothrow) double[samples]);
    if (to != nullptr) std::copy_n(from, samples, to.get());
    return to != nullptr;
  }

  const double* dx_ = nullptr;
  const double* dy_ = nullptr;
  void* owner_ = nullptr;
  void (*delete_owner_)(void*) = nullptr;  // null: the arrays are copies
};

}  // namespace vq3900

#endif
