#include "state/engine.h"

namespace vq3900 {

namespace {
constinit Engine process_engine;
}

void release_held_memory(Engine& engine) {
  for (RectifyLut& lut : engine.rectify_lut.camera)
    lut.grid.release();
  engine.calib.optimized_d2d.release();
  engine.flash.alignment_records.release();
  for (HeldSection& section : engine.rectify_lut.sections) {
    section.room.release();
    section.encoded = 0;
  }
}

Engine& engine() {
  return process_engine;
}

}  // namespace vq3900
