// Everything that the library remembers.
#ifndef VQ3900_STATE_ENGINE_H
#define VQ3900_STATE_ENGINE_H

#include "state/access_state.h"
#include "state/block_state.h"
#include "state/calib_input_state.h"
#include "state/calib_state.h"
#include "state/de_input_state.h"
#include "state/flash_state.h"
#include "state/group_state.h"
#include "state/rectify_lut_state.h"
#include "state/rectify_state.h"
#include "state/register_tables.h"

namespace vq3900 {

struct Engine {
  AccessState access;
  RegisterTables registers;

  DeBasicParams_S basic{};
  D2cState d2c;
  D2dConfig d2d{};
  DeDispCalcParams_S disparity{};
  PrefilterState prefilter;
  ExtendChopState extend_chop;
  GpmState gpm;
  RectifyState rectify;
  RectifyLutState rectify_lut;

  DeInputConfig input;
  CalibInputConfig calib_input;
  CalibState calib;
  D2cGroups d2c_groups;
  IrPreGroups ir_pre_groups;
  FlashState flash;
};

// Releases every array that the state holds.
void release_held_memory(Engine& engine);

// The state that the calling thread works on: today that of the process.
Engine& engine();

}  // namespace vq3900

#endif
