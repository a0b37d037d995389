/**
 * @file vq3900_depth_engine.h
 * @brief Host-side driver helper of the VQ3900 stereo depth engine.
 *
 * The library keeps one parameter record for each hardware block of the depth engine, converts the records into
 * register tables in fixed point and back, and moves the tables through two callbacks of the caller. It never touches
 * the hardware itself: the caller owns the transport. It also loads the engine's configuration from INI texts and
 * applies it to the records.
 *
 * This header is the manual. It compiles as C11 and as C++17.
 *
 * @section quick_start Quick start
 *
 * @code{.c}
 * static int32_t read_registers(DeRegElement_S* elements, uint32_t count, void* user) {
 *   for (uint32_t i = 0; i < count; ++i) elements[i].value = my_bus_read(user, elements[i].address);
 *   return 0;
 * }
 *
 * static int32_t write_registers(DeRegElement_S* elements, uint32_t count, void* user) {
 *   for (uint32_t i = 0; i < count; ++i) my_bus_write(user, elements[i].address, elements[i].mask, elements[i].value);
 *   return 0;
 * }
 *
 * int bring_up(void* bus) {
 *   DeDispCalcParams_S disparity;
 *   if (de_register_read_write_functon(read_registers, write_registers, bus) != 0) return 1;
 *   if (load_de_input_configs("stereo_1280x800.ini") != 0) return 1;
 *   if (set_depth_engine_config() != 0) return 1;
 *   de_copy_disp_calc_params(&disparity);
 *   if (de_set_disp_calc_params_to_registers(&disparity) != 0) return 1;  // de_get_error_str() may say why
 *   return 0;
 * }
 * @endcode
 *
 * @section rules Rules that hold everywhere
 *
 * - **Threads.** The library has no threads and no locks. The caller makes one call at a time; a register callback must
 *   not call back into the library, save for the fixed-point helpers, which keep nothing.
 * - **State.** All parameter records, register tables and loaded configurations live in the library from load to
 *   unload, and every record crosses the interface by copy. The library keeps no pointer that it is given, save the
 *   two callbacks and their context.
 * - **Two steps to the device.** A setter (set_min_disp(), set_d2c_config(), ...) changes a record. A converter
 *   (convert_calc_disp_float_to_registers(), ...) turns the record into register values. Only a set entry point
 *   (de_set_disp_calc_params_to_registers(), ...) also writes them to the device.
 * - **Return codes.** 0 is success. A negative code names the failing step; ::VQ3900_FIXED_POINT_OVERFLOW (4096) says
 *   that a value did not fit its fixed-point field.
 * - **Null pointers.** A function that returns `int32_t` answers a null pointer with -2 and changes nothing, unless its
 *   description says otherwise; a function that returns nothing does nothing. A null path is one that cannot be opened.
 *   An array may be null when its count is 0. An entry point looks at its callback first, then at its pointers.
 * - **What a failure leaves behind.** Everything that was done before the failing step stays done, as each function
 *   says; nothing is rolled back, nothing is retried.
 * - **Printed texts** are written through C stdio, one call a message, and never flushed by the library. They are
 *   quoted here exactly; `\n` stands for the line end.
 * - **Memory.** No setter, converter, table function or entry point allocates.
 * - **Exceptions.** None leaves the library, save what a log callback throws, and std::bad_function_call where a log
 *   callback is null or empty. A register callback that throws counts as a failed transfer; the cancellation of its
 *   thread passes through. A lack of memory is a failure code, as each function says.
 * - **Byte order and layout.** Records have the natural C layout of a little-endian 64-bit machine; their sizes are
 *   given with them. Padding bytes are copied with the record.
 *
 * @section order Order of calls
 *
 * 1. de_register_read_write_functon() before any set or get entry point.
 * 2. set_camera_mode() before set_upsample(), set_rectify_status() and set_rectify_sbg2r_config().
 * 3. set_input_ir_resolution() before set_prefilter_size_speckleTh(), and that before set_extend_chop_params().
 * 4. load_de_input_configs() before set_depth_engine_config().
 * 5. de_set_disp_calc_params_to_registers() before an entry point that writes the control table (D2C, D2D, basic): the
 *    matcher's smoothing flag lies there.
 * 6. The D2C read-back last: it sets the camera mode from other bits.
 */
#ifndef VQ3900_DEPTH_ENGINE_H
#define VQ3900_DEPTH_ENGINE_H

#include <stdbool.h>
#include <stdint.h>
#ifdef __cplusplus
#include <functional>
#endif

/** @brief Marks an exported function. VQ3900_STATIC: the caller may have the functions inside, nothing is imported. */
#if defined(VQ3900_STATIC)
#define VQ3900_API
#elif defined(_WIN32)
#if defined(VQ3900_BUILDING_LIBRARY)
#define VQ3900_API __declspec(dllexport)
#else
#define VQ3900_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define VQ3900_API __attribute__((visibility("default")))
#else
#define VQ3900_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup constants Codes, sizes and versions
 * @{
 */

/** @brief Version of this header; de_get_version() answers that of the library that was loaded. */
#define VQ3900_VERSION "2.1.4.5"
/** @brief Number that changes with an incompatible change of the interface. */
#define VQ3900_VERSION_MAJOR 2

/** @brief Success. */
#define VQ3900_OK 0
/** @brief The callback that the call needs is not registered. */
#define VQ3900_ERROR_CALLBACK (-1)
/** @brief Invalid argument, count above a table's size, or a register element that is not the table's. */
#define VQ3900_ERROR_ARGUMENT (-2)
/** @brief The callback reported a failure, or the status record, which is read only, was to be stored. */
#define VQ3900_ERROR_TRANSFER (-3)
/** @brief Extend-chop parameters were set before any image size was known. */
#define VQ3900_ERROR_IMAGE_SIZE (-4)
/** @brief A decoder of read-back registers reported a failure. */
#define VQ3900_ERROR_READ_BACK (-5)
/** @brief A value did not fit its fixed-point field. The encoder printed which. */
#define VQ3900_FIXED_POINT_OVERFLOW 4096

/** @brief load_de_input_configs(): the file cannot be opened. Loaders have codes of their own. */
#define VQ3900_LOAD_CANNOT_OPEN (-1)
/** @brief load_de_input_configs(): the grammar, or the type or range of a value. */
#define VQ3900_LOAD_BAD_TEXT (-5)
/** @brief load_de_input_configs(): a section is missing. */
#define VQ3900_LOAD_NO_SECTION (-6)
/** @brief load_de_input_configs(): section mode. */
#define VQ3900_LOAD_MODE (-7)
/** @brief load_de_input_configs(): section basic. */
#define VQ3900_LOAD_BASIC (-8)
/** @brief load_de_input_configs(): section disparity. */
#define VQ3900_LOAD_DISPARITY (-9)
/** @brief load_de_input_configs(): section extend_chop. */
#define VQ3900_LOAD_EXTEND_CHOP (-10)
/** @brief load_de_input_configs(): section gpm. */
#define VQ3900_LOAD_GPM (-11)
/** @brief load_de_input_configs(): section scheme. */
#define VQ3900_LOAD_SCHEME (-12)

/** @brief Register elements of the basic / D2C-D2D control table. */
#define VQ3900_BASIC_CTRL_REGISTERS 5
/** @brief Register elements of the D2D parameter table. */
#define VQ3900_D2D_REGISTERS 2
/** @brief Register elements of the D2C parameter table. */
#define VQ3900_D2C_REGISTERS 12
/** @brief Register elements of the prefilter table. */
#define VQ3900_PREFILTER_REGISTERS 18
/** @brief Register elements of the extend-chop table. */
#define VQ3900_EXTEND_CHOP_REGISTERS 7
/** @brief Register elements of the disparity-calculation table. */
#define VQ3900_DISP_CALC_REGISTERS 12
/** @brief Register elements of the global-point-matching table. */
#define VQ3900_GPM_REGISTERS 30
/** @brief Register elements of the global-point status table. */
#define VQ3900_GP_STATUS_REGISTERS 261
/** @brief Register elements of the rectification control table. */
#define VQ3900_RECTIFY_CTRL_REGISTERS 3
/** @brief Register elements of each camera's rectification parameter table. */
#define VQ3900_RECTIFY_REGISTERS 23
/** @brief Register elements of each camera's rectification LUT information table. */
#define VQ3900_RECTIFY_LUT_INFO_REGISTERS 7

/** @brief Result code of the functions that copy records of the loaded configuration. */
typedef int32_t DRIVER_HELPER_ERRNO;

/** @} */

/**
 * @defgroup records Records
 *
 * Plain records, copied whole across the interface. Sizes in bytes stand behind each name. A record that is copied out,
 * changed and stored keeps everything else as it was:
 *
 * @code{.c}
 * DeDispCalcParams_S matcher;
 * de_copy_disp_calc_params(&matcher);
 * matcher.win_size = 11;
 * de_update_disp_calc_params(&matcher);
 * @endcode
 * @{
 */

/**
 * @brief One register element (12). Arrays of it are what the callbacks receive.
 *
 * Registers 0x5000xxxx belong to the engine's core, 0x5200xxxx to camera 1's rectification block, 0x5208xxxx to
 * camera 0's.
 */
typedef struct DeRegElement_S {
  uint32_t address; /**< Register address in the depth engine. */
  uint32_t mask;    /**< Bits of the register that the library owns. */
  uint32_t value;   /**< Write: the value to store. Read: the value found. */
} DeRegElement_S;

/** @brief Operating mode of the engine and the stereo geometry of its depth stage (44). */
typedef struct DeBasicParams_S {
  float baseline;           /**< Stereo baseline in depth units, signed; magnitude 1 to 500. */
  float focal_length_pix;   /**< Focal length in pixels, at least 10. */
  uint32_t cam_mode;        /**< 0 single camera, 1 stereo. */
  uint8_t depth_mode;       /**< 0: depth relative to a reference plane, else absolute. Bit 31 of 0x50001200. */
  float ref_plane_dist;     /**< Distance of the reference plane in depth units. */
  uint8_t upsample_enable;  /**< Upsampling of the input images: 0 off, else on. */
  float pbf;                /**< 1 / (baseline * focal_length_pix), per depth unit and pixel. */
  uint8_t upsample_aux_en;  /**< Second upsampling path, used in camera mode 1: 0 or 1. */
  uint8_t upsample_main_en; /**< Main upsampling path: 0 or 1. */
  uint32_t scale_mode;      /**< Output scale mode, 0 to 3. */
  uint16_t in_ir_width;     /**< Width of the input IR image in pixels. */
  uint16_t in_ir_height;    /**< Height of the input IR image in pixels. */
  uint32_t sbg2r_rotate;    /**< 1 while the rectifier rotates the image by 90 degrees; the low byte is used. */
} DeBasicParams_S;

/** @brief Prefilter window and speckle threshold (2). */
typedef struct DePrefilterParams_S {
  uint8_t pre_win_size; /**< Window size in pixels: 5, 7 or 9. */
  uint8_t speckleTh;    /**< Speckle threshold; kept by the library, written to no register. */
} DePrefilterParams_S;

/** @brief Extension of the images before matching and chopping of the result, in pixels (48). */
typedef struct DeExtendChopParams_S {
  int32_t extend_ref[4]; /**< Reference image: two values for the width, two for the height. */
  int32_t chop[4];       /**< Chopped off the output, same order. */
  int32_t extend_tar[4]; /**< Target image, same order. Values 2 and 3 act through the extended height alone. */
} DeExtendChopParams_S;

/**
 * @brief Tuning of the stereo matcher (152). Widths are those of the register fields; higher bits are cut. Thresholds,
 * counts and masks are plain numbers of the device.
 */
typedef struct DeDispCalcParams_S {
  uint32_t win_size;                /**< Matching window in pixels, 5 bits. */
  int32_t min_disparity;            /**< Minimum disparity in pixels, -128 to 127. */
  uint32_t cost_strong_t;           /**< Grow match: strong cost threshold, 12 bits. */
  uint32_t cost_weak_t;             /**< Grow match: weak cost threshold, 12 bits. */
  uint32_t conf_region_t;           /**< Grow match: region confidence threshold, 8 bits. */
  uint32_t conf_strong_t;           /**< Grow match: strong confidence threshold, 8 bits. */
  uint32_t conf_grow_t;             /**< Grow match: growing confidence threshold, 8 bits. */
  uint32_t grow_disp_diff_thr;      /**< Grow match: disparity difference, 2 bits. */
  uint8_t shadow_en;                /**< Shadow check on, 1 bit. */
  uint8_t shadow_ring_base;         /**< Shadow check: ring base, 1 bit. */
  uint32_t shadow_win_size;         /**< Shadow check: window, 5 bits. */
  uint32_t shadow_smooth_size;      /**< Shadow check: smoothing size, 4 bits. */
  uint32_t shadow_tex_thresh;       /**< Shadow check: texture threshold, 8 bits. */
  uint32_t shadow_diff_per;         /**< Shadow check: difference, 4 bits. */
  uint32_t shadow_edge_preserving;  /**< Shadow check: edge preservation, 7 bits. */
  uint32_t cost_shadow1_t;          /**< Shadow check: first cost threshold, 12 bits. */
  uint32_t cost_shadow2_t;          /**< Shadow check: second cost threshold, 12 bits. */
  uint32_t arm_len;                 /**< Support arm length, 4 bits. */
  uint32_t arm_short_en;            /**< Short-arm rule on, 1 bit; never read back. */
  uint32_t arm_short_mask;          /**< Short-arm mask, 30 bits; never read back. */
  uint32_t tile_width;              /**< Tile width in pixels, 12 bits. */
  uint32_t tile_overlap_x;          /**< Horizontal tile overlap, 3 bits. */
  uint32_t tile_overlap_x_fast;     /**< Fast horizontal overlap, 1 bit. */
  uint32_t tile_overlap_y_traverse; /**< Vertical overlap of the traversal, 8 bits. */
  uint32_t lrc_en;                  /**< Left-right consistency check on, 1 bit. */
  uint32_t lrc_thresh;              /**< Left-right consistency threshold, 2 bits. */
  uint32_t max_see_num;             /**< Seeds, 8 bits. */
  uint32_t max_seed_try_num;        /**< Seed attempts, 12 bits. */
  uint32_t max_seed_valid_try_num;  /**< Valid seed attempts, 12 bits. */
  uint8_t smooth_enable;            /**< Smoothing filter on, 1 bit. */
  uint8_t smooth_win_size;          /**< Smoothing window, 4 bits. */
  uint8_t smooth_enable_flag;       /**< Copy of smooth_enable in the control table: 0 or 1. */
  double sp_coef[4]; /**< Sub-pixel coefficients a0 to a3, fixed point: 13 bits (a3: 11), 10 fraction bits. */
} DeDispCalcParams_S;

/** @brief Grow-match group of the matcher (24); see DeDispCalcParams_S. */
typedef struct DeGrowMatchParams_S {
  uint32_t cost_strong_t;      /**< Strong cost threshold, 12 bits. */
  uint32_t cost_weak_t;        /**< Weak cost threshold, 12 bits. */
  uint32_t conf_region_t;      /**< Region confidence threshold, 8 bits. */
  uint32_t conf_strong_t;      /**< Strong confidence threshold, 8 bits. */
  uint32_t conf_grow_t;        /**< Growing confidence threshold, 8 bits. */
  uint32_t grow_disp_diff_thr; /**< Disparity difference, 2 bits. */
} DeGrowMatchParams_S;

/** @brief Shadow-check group of the matcher (32); see DeDispCalcParams_S. */
typedef struct DeShadowCheckParams_S {
  uint8_t shadow_en;               /**< Check on, 1 bit. */
  uint8_t shadow_ring_base;        /**< Ring base, 1 bit. */
  uint32_t shadow_win_size;        /**< Window, 5 bits. */
  uint32_t shadow_smooth_size;     /**< Smoothing size, 4 bits. */
  uint32_t shadow_tex_thresh;      /**< Texture threshold, 8 bits. */
  uint32_t shadow_diff_per;        /**< Difference, 4 bits. */
  uint32_t shadow_edge_preserving; /**< Edge preservation, 7 bits. */
  uint32_t cost_shadow1_t;         /**< First cost threshold, 12 bits. */
  uint32_t cost_shadow2_t;         /**< Second cost threshold, 12 bits. */
} DeShadowCheckParams_S;

/** @brief Short-arm group of the matcher (12); see DeDispCalcParams_S. */
typedef struct DeArmShortParams_S {
  uint32_t arm_len;        /**< Support arm length, 4 bits. */
  uint32_t arm_short_en;   /**< Short-arm rule on, 1 bit. */
  uint32_t arm_short_mask; /**< Short-arm mask, 30 bits. */
} DeArmShortParams_S;

/** @brief Tile group of the matcher (16); see DeDispCalcParams_S. */
typedef struct DeTileParams_S {
  uint32_t tile_width;              /**< Tile width in pixels, 12 bits. */
  uint32_t tile_overlap_x;          /**< Horizontal overlap, 3 bits. */
  uint32_t tile_overlap_x_fast;     /**< Fast horizontal overlap, 1 bit. */
  uint32_t tile_overlap_y_traverse; /**< Vertical overlap of the traversal, 8 bits. */
} DeTileParams_S;

/** @brief Seed group of the matcher (12); see DeDispCalcParams_S. */
typedef struct DeSeedParams_S {
  uint32_t max_see_num;            /**< Seeds, 8 bits. */
  uint32_t max_seed_try_num;       /**< Seed attempts, 12 bits. */
  uint32_t max_seed_valid_try_num; /**< Valid seed attempts, 12 bits. */
} DeSeedParams_S;

/** @brief Left-right consistency group of the matcher (8), passed by value to set_lrc_params(). */
typedef struct DeLrcParams_S {
  uint32_t lrc_en;     /**< Check on, 1 bit. */
  uint32_t lrc_thresh; /**< Threshold, 2 bits. */
} DeLrcParams_S;

/** @brief Smoothing-filter group of the matcher (3); see DeDispCalcParams_S. */
typedef struct DeSmoothFilterParams_S {
  uint8_t smooth_enable;      /**< Filter on, 1 bit. */
  uint8_t smooth_win_size;    /**< Window, 4 bits. */
  uint8_t smooth_enable_flag; /**< Ignored by the setter, which derives it. */
} DeSmoothFilterParams_S;

/** @brief Global-point matching (216). Widths are those of the register fields; higher bits are cut. */
typedef struct DeGpmParams_S {
  uint8_t enable;                   /**< Matching on, 1 bit. */
  uint8_t enable_mirror;            /**< Copy of enable, written by set_gpm_enable() alone. */
  int32_t x_coordinate[16];         /**< Columns of the points in pixels, 12 bits; read back unsigned. */
  int32_t y_coordinate[16];         /**< Rows of the points in pixels, 12 bits; read back unsigned. */
  uint16_t enable_bits_per_row[16]; /**< For each row of points, bit k enables column k. */
  uint8_t gp_enabled_cols;          /**< Number of enabled columns, 5 bits. */
  uint8_t gp_col_enabled[16];       /**< Column k in use: 0 or 1. */
  uint32_t texture_t0;              /**< First texture threshold, 11 bits. */
  uint32_t texture_t1;              /**< Second texture threshold, 11 bits. */
  uint32_t active_t;                /**< Activity threshold, 9 bits. */
  uint32_t ncost_t;                 /**< Cost threshold, 10 bits. */
  uint32_t hist_dy_dist;            /**< Histogram distance, 5 bits. */
  int32_t gp_ref_dy_t_neg;          /**< Negated gp_ref_dy_t, 12 bits; read back unsigned. */
  int32_t gp_ref_dy_t;              /**< Vertical tolerance against the reference, 12 bits; read back unsigned. */
  uint8_t gpm_config_flag;          /**< Second argument of set_gpm_config(), 1 bit. */
} DeGpmParams_S;

/** @brief Thresholds of the global-point matching (28); see DeGpmParams_S. */
typedef struct DeGpmConfig_S {
  uint32_t texture_t0;     /**< First texture threshold, 11 bits. */
  uint32_t texture_t1;     /**< Second texture threshold, 11 bits. */
  uint32_t active_t;       /**< Activity threshold, 9 bits. */
  uint32_t ncost_t;        /**< Cost threshold, 10 bits. */
  uint32_t hist_dy_dist;   /**< Histogram distance, 5 bits. */
  int32_t gp_ref_dy_t_neg; /**< Negated gp_ref_dy_t, 12 bits; not derived. */
  int32_t gp_ref_dy_t;     /**< Vertical tolerance against the reference, 12 bits. */
} DeGpmConfig_S;

/**
 * @brief Decoded status of the global-point matching (3128).
 *
 * Signed with 12 bits: words 0 and 2 of status. With the device's 6-bit sign rule, though they are wider: words 3 and 4
 * of status, word 1 of each triple, word 1 of each point; bit 5 then makes a negative number of the low 5 bits, and
 * without it the whole field counts. The others are unsigned.
 */
typedef struct DeGpStatusParams_S {
  int32_t status[5];     /**< Words of 0x5000137C and 0x50001380: bits 31-20 and 16-8; bits 31-20, 19-14 and 12-0. */
  int32_t triple[3][3];  /**< Words of 0x50001384, 0x50001388, 0x5000138C: bits 28-20, 18-6, 4-0 of each. */
  int32_t point[256][3]; /**< Words of 0x50001400 + 4 j: bits 9-0, 31-24, 22-12 of each. */
} DeGpStatusParams_S;

/** @brief Configuration of the depth-to-colour block (32). */
typedef struct D2cConfig {
  uint32_t reserved;               /**< Not used; zeroed by a read-back. */
  uint32_t recovery_mode_2;        /**< 1 in recovery mode 2 (expand), else 0. */
  uint32_t recovery_mode_1;        /**< 1 in recovery mode 1, else 0. */
  float d2c_recovery_expand_width; /**< Expand width, 0 to 255/256 in steps of 1/256. */
  uint32_t d2c_buffer_position;    /**< Row position in the line buffer, 12 bits. */
  uint32_t d2c_total_buffer_rows;  /**< Rows of the line buffer, 12 bits. */
  uint8_t depth_sign;              /**< 1 when depth is negated (the baseline is not positive), else 0. */
  uint8_t reserved2[7];            /**< Not used. */
} D2cConfig;

/** @brief Configuration of the disparity-to-depth block (3). */
typedef struct D2dConfig {
  uint8_t unit_shift;    /**< Depth unit as a shift: 0, 1, 2, 3, 4 stand for 0.1, 0.2, 0.4, 0.8, 1.6. */
  uint8_t in_R;          /**< Bit 21 of 0x50001000 as last read; never written by the library. */
  uint8_t hw_d2d_enable; /**< 1 when the hardware stage is on; read back from bit 0 of 0x5000188C, never written. */
} D2dConfig;

/** @brief Pinhole intrinsics and image size of a camera (20). */
typedef struct DeCameraIntrinsic_S {
  float fx;        /**< Focal length in pixels, horizontal. */
  float fy;        /**< Focal length in pixels, vertical. */
  float cx;        /**< Principal point in pixels, horizontal. */
  float cy;        /**< Principal point in pixels, vertical. */
  uint16_t width;  /**< Image width in pixels. */
  uint16_t height; /**< Image height in pixels. */
} DeCameraIntrinsic_S;

/** @brief Intrinsics of a rectified (virtual) camera. */
typedef DeCameraIntrinsic_S RectifyIntrinsic;

/** @brief Pose between two cameras (48): X_to = rotation * X_from + translation. */
typedef struct DeExtrinsic_S {
  float rotation[9];    /**< Rotation, row-major. */
  float translation[3]; /**< Translation in depth units. */
} DeExtrinsic_S;

/** @brief Rectification of both cameras (44). Camera 1 is the reference camera. */
typedef struct DeRectifyParams_S {
  uint8_t cam1_en;          /**< Rectification of camera 1 on: 0 or 1. */
  uint8_t cam0_en;          /**< Rectification of camera 0 on: 0 or 1. */
  uint8_t unused[2];        /**< Zero on copy-out. */
  DeCameraIntrinsic_S cam0; /**< Rectified intrinsics and output size of camera 0. */
  DeCameraIntrinsic_S cam1; /**< Rectified intrinsics and output size of camera 1. */
} DeRectifyParams_S;

/** @brief Control of the rectifier (12). */
typedef struct DeRectifyCtrlParams_S {
  uint8_t unused[2];        /**< Zero on copy-out. */
  uint8_t sbg_en;           /**< sbg2r stage on, 1 bit. */
  uint8_t rotate_90_en;     /**< Rotation by 90 degrees on, 1 bit; single-camera mode only. */
  uint8_t rotate_clockwise; /**< Sense of the rotation, 1 bit. */
  uint8_t sub_mode_sel;     /**< Sub-mode, 1 bit. */
  uint8_t unused2[2];       /**< Zero on copy-out. */
  uint32_t start_rows;      /**< Rows buffered before the output starts, 12 bits. */
} DeRectifyCtrlParams_S;

/** @brief Mode record of a depth-engine configuration (32). */
typedef struct dpu_mode {
  char dpu_desc[16];                 /**< Description, zero-padded, not terminated when 16 bytes long. */
  uint32_t laser_type;               /**< Type of the laser projector. */
  uint16_t in_ir_res[2];             /**< Input IR image: width, height in pixels. */
  uint16_t rectify_out_valid_res[2]; /**< Valid area after rectification: width, height in pixels. */
  uint16_t chop_out_res[2];          /**< Output after chopping: width, height in pixels. */
} dpu_mode;

/** @brief Output scheme of a depth-engine configuration (24). */
typedef struct dpu_scheme_config {
  uint32_t disp_offset;     /**< Disparity offset, a multiple of 10. */
  uint32_t d2d_params_unit; /**< Unit of the D2D parameters in hundredths; 0 when it is not in R. */
  uint32_t ref_dist;     /**< Reference distance in depth units, a multiple of 100; 0 in camera mode 1 once applied. */
  uint32_t scheme_flags; /**< Bit 0 distort_type, 1 sbg_en, 2 mono_lut_sbg2r, 3 mono_lut_rectify, 4 hw_d2d_en,
                                 5 mipi_channel_status. */
  double reserved;       /**< 0. */
} dpu_scheme_config;

/**
 * @brief One depth-to-colour output configuration (72). Offsets are those of its flash image.
 *
 * The library carries all of it from the groups file into the image and computes nothing from it; what the device makes
 * of scale and extend is the device's.
 */
typedef struct d2c_cfg_item {
  uint8_t md5[16];              /**< Zero in memory; in an image the MD5 of bytes 16 to 51. */
  char desc[16];                /**< Description, zero-padded, not terminated when 16 bytes long. */
  uint16_t res_chop_out[2];     /**< Output of the chop stage: width, height in pixels. */
  uint16_t res_depth[2];        /**< Depth image: width, height in pixels. */
  uint16_t res_rgb[2];          /**< Colour image: width, height in pixels. */
  uint32_t d2d_params_unit;     /**< Unit of the D2D parameters in hundredths; 0 when it is not in R. */
  uint32_t mipi_channel_status; /**< Bit 0: MIPI channel. */
  uint16_t res_d2c_in[2];       /**< Input of the D2C stage: width, height in pixels. */
  uint16_t res_d2c_valid[2];    /**< Valid area of the D2C stage: width, height in pixels. */
  float scale;                  /**< Scale, a plain number, as in the file. */
  uint16_t extend[4];           /**< Extend margins, as in the file. */
} d2c_cfg_item;

/**
 * @brief Automatic-exposure settings of the infrared pre-processing (156). Offsets are those of its flash image.
 *
 * The library carries the numbers from the groups file into the image as they stand. Units of exposure, gain and
 * current and the order within the lists are the device's.
 */
typedef struct ir_pre_cfg_item {
  uint8_t md5[16];                /**< Zero in memory; in an image the MD5 of bytes 16 to 35. */
  char dpu_desc[16];              /**< Description, zero-padded, not terminated when 16 bytes long. */
  uint32_t reserved;              /**< 0. */
  int32_t exp_time_range[4];      /**< Range of the exposure time. */
  int32_t gain_range[4];          /**< Range of the gain. */
  int32_t laser_current_range[4]; /**< Range of the laser current. */
  uint32_t target_brightness;     /**< Brightness aimed at. */
  uint32_t target_th;             /**< Tolerance of the brightness. */
  uint32_t center_weight;         /**< Weight of the centre when metering. */
  uint32_t skip_frame;            /**< Frames to skip. */
  uint32_t smooth_steps;          /**< Steps of a change. */
  uint32_t delay_ms;              /**< Delay in milliseconds. */
  uint32_t meter_method;          /**< Number of the metering method. */
  uint32_t enable_bits;           /**< Bit 0 exposure, 1 gain, 2 laser power. */
  uint16_t roi_size[2];           /**< Size of the region of interest. */
  uint16_t box_cnt[2];            /**< Numbers of boxes. */
  uint16_t box_weight_16[16];     /**< Weights of 16 boxes. */
} ir_pre_cfg_item;

/** @brief A camera of a calibration (64). */
typedef struct DeCalibCamera_S {
  int32_t width;  /**< Image width in pixels. */
  int32_t height; /**< Image height in pixels. */
  float fx;       /**< Focal length in pixels, horizontal. */
  float fy;       /**< Focal length in pixels, vertical. */
  float cx;       /**< Principal point in pixels, horizontal; pixel centres lie at whole numbers. */
  float cy;       /**< Principal point in pixels, vertical. */
  float
      distortion[8]; /**< k1, k2, k3, k4, k5, k6, p1, p2; k1 to k4 of an equidistant, c1 to c8 of a polynomial model. */
  double polynomial_param; /**< Largest radius of the polynomial model; not finite or not positive for none. */
} DeCalibCamera_S;

/**
 * @brief A calibration: two IR cameras and a colour camera (296). Passed by value.
 *
 * Left is camera 1, the reference camera; right is camera 0. A point of the left camera's frame is R X + T in the right
 * one's and R_rgb X + T_rgb in the colour camera's.
 */
typedef struct CalibrateParamsMulti {
  int32_t distortion_model; /**< 0 and 1 Brown, 2 equidistant, 5 polynomial. */
  uint8_t model_override;   /**< Not 0: the polynomial model, whatever the number says. */
  DeCalibCamera_S left_ir;  /**< Left IR camera, the reference. */
  DeCalibCamera_S right_ir; /**< Right IR camera. */
  DeCalibCamera_S rgb;      /**< Colour camera; all zero for none. */
  float ir_rotation[9];     /**< R, row-major. */
  float ir_translation[3];  /**< T, in the unit of depth before division by d2d_params_unit (millimetres). */
  float rgb_rotation[9];    /**< R_rgb, row-major. */
  float rgb_translation[3]; /**< T_rgb, in the same unit. */
} CalibrateParamsMulti;

/** @brief Result of the stereo rectification (244), as the calibration image stores it. */
typedef struct DeStereoRectifyParams_S {
  DeCameraIntrinsic_S cam1_rectified; /**< Virtual intrinsics and output size of camera 1. */
  float cam1_distortion[8];           /**< Distortion of camera 1: k1 to k6, p1, p2. */
  float cam1_rotation[9];             /**< Rotation from camera 1 into its rectified frame, row-major. */
  DeCameraIntrinsic_S cam0_rectified; /**< Virtual intrinsics and output size of camera 0. */
  float cam0_distortion[8];           /**< Distortion of camera 0. */
  float cam0_rotation[9];             /**< Rotation from camera 0 into its rectified frame. */
  DeCameraIntrinsic_S cam1;           /**< Unrectified intrinsics and image size of camera 1, scaled and chopped. */
  DeCameraIntrinsic_S cam0;           /**< Unrectified intrinsics and image size of camera 0. */
  uint16_t reserved[2];               /**< 0. */
  float left_temperature;             /**< Temperature of the left IR camera, as given to set_calib_temp_info(). */
  float right_temperature;            /**< Temperature of the right IR camera, the same. */
  float ldm_temperature;              /**< Temperature of the laser, the same. */
  float left_comp_coeff;              /**< Temperature compensation of the left IR camera, as configured. */
  float right_comp_coeff;             /**< Temperature compensation of the right IR camera, as configured. */
  float ldm_comp_coeff;               /**< Temperature compensation of the laser, as configured. */
} DeStereoRectifyParams_S;

/** @brief Result of the depth-to-colour derivation (172). */
typedef struct DeCameraD2CParams_S {
  DeCameraIntrinsic_S depth; /**< Depth image. */
  DeCameraIntrinsic_S valid; /**< Valid area of the colour image. */
  DeCameraIntrinsic_S color; /**< Colour image. */
  float zero[8];             /**< 0. */
  float color_distortion[8]; /**< Distortion of the colour camera, as calibrated. */
  float rotation[9];         /**< Rotation from the rectified reference camera to the colour camera, row-major. */
  float translation[3];      /**< Translation to the colour camera, in the calibration's unit (millimetres). */
} DeCameraD2CParams_S;

/** @brief Constants of the depth calculation (28). */
typedef struct DepthCalcParams_S {
  int32_t depth_mode;    /**< 0: depth relative to a reference plane, else absolute. */
  float baseline;        /**< Signed baseline in depth units. */
  float ref_dist;        /**< Reference distance in depth units. */
  float focal_length;    /**< Unrectified fx of camera 1 in pixels, scaled: not the rectified one. */
  float d2d_params_unit; /**< Depth unit in the calibration's unit (millimetres); never 0. */
  float disp_offset;     /**< Disparity offset in pixels, as configured. */
  int32_t invalid_disp;  /**< Disparity that stands for none, as configured. */
} DepthCalcParams_S;

/** @brief One optimized D2D entry (16); opaque to the library. */
typedef struct DeDepthConfig_S {
  uint8_t data[16]; /**< Copied as it is. */
} DeDepthConfig_S;

/** @brief A sampled displacement grid of a camera (56). */
typedef struct RectifyLutInfo {
  uint32_t lut_x_start;     /**< First column covered in pixels, a two's-complement number; 10 bits in the register. */
  uint32_t lut_y_start;     /**< First row covered in pixels, the same. */
  float lut_fx;             /**< Focal length that the grid was sampled with, in pixels, horizontal. */
  float lut_fy;             /**< The same, vertical. */
  float lut_cx;             /**< Principal point that the grid was sampled with, in pixels, horizontal. */
  float lut_cy;             /**< The same, vertical. */
  uint32_t lut_width;       /**< Samples a row: a multiple of 4, at most 1020. */
  uint32_t lut_height;      /**< Rows of samples: the same. */
  uint32_t sample_rate_bit; /**< The sampling step is 2 to this power, in pixels: 3 to 6. */
  double* dx;               /**< Horizontal displacements, in focal lengths: lut_width x lut_height, row-major. */
  double* dy;               /**< Vertical displacements, the same. */
} RectifyLutInfo;

/** @brief One section of LUT words (16). Callers pass an array of 2 or 4, in the order A, B, C, D. */
typedef struct LutSection {
  uint32_t address; /**< Base register address; 0 when nothing was prepared. */
  uint32_t count;   /**< Words of the section. */
  uint32_t* data;   /**< The caller's array, of de_get_lut_len() words. */
} LutSection;

/** @brief What gen_depth_engine_config_flash_file_de() builds an image from (528). The caller owns all of it. */
typedef struct de_config_flash_input {
  const char* const* dpu_config_paths; /**< Depth-engine configuration files; null for none. */
  uint8_t dpu_config_count;            /**< Their number, 0 to 8. */
  char d2c_config_path[256];           /**< D2C groups file; read up to its terminator or 256 bytes. */
  char ir_pre_config_path[256];        /**< IR-pre groups file; the same. */
} de_config_flash_input;

/** @brief A camera of a calibration record (2016). */
typedef struct DeCalibRecordCamera_S {
  float width;             /**< Image width in pixels; truncated to a whole number. */
  float height;            /**< Image height in pixels, the same. */
  float fx;                /**< Focal length in pixels, horizontal. */
  float fy;                /**< Focal length in pixels, vertical. */
  float cx;                /**< Principal point in pixels, horizontal; pixel centres lie at whole numbers. */
  float cy;                /**< Principal point in pixels, vertical. */
  float distortion[8];     /**< As in DeCalibCamera_S. */
  double polynomial_param; /**< As in DeCalibCamera_S. */
  uint8_t reserved[1952];  /**< Opaque to the library; goes into the factory-align record as it is. */
} DeCalibRecordCamera_S;

/** @brief The calibration record of one configuration (6152). Frames and units are those of CalibrateParamsMulti. */
typedef struct DeCalibRecord_S {
  int32_t distortion_model;       /**< 0 and 1 Brown, 2 equidistant, 5 polynomial. */
  uint8_t model_override;         /**< Not 0: the polynomial model, whatever the number says. */
  DeCalibRecordCamera_S left_ir;  /**< Left IR camera, the reference. */
  DeCalibRecordCamera_S right_ir; /**< Right IR camera. */
  DeCalibRecordCamera_S rgb;      /**< Colour camera; all zero for none. */
  float ir_rotation[9];           /**< R, row-major. */
  float ir_translation[3];        /**< T, in millimetres. */
  float rgb_rotation[9];          /**< R_rgb, row-major. */
  float rgb_translation[3];       /**< T_rgb, in millimetres. */
} DeCalibRecord_S;

/** @brief One record of the alignment section (976); opaque to the library. */
typedef struct DeAlignRecord_S {
  uint8_t data[976]; /**< Copied as it is. */
} DeAlignRecord_S;

/**
 * @brief What the calibration images are built from (56). The caller owns all of it.
 *
 * gen_calib_flash_file_de() reads the first four members and the switch; gen_calib_flash_param_de() and the size
 * queries read the last five.
 */
typedef struct CalibFlashInput_S {
  const char* const* calib_params_files; /**< Calibration-parameter files, one a configuration. */
  uint8_t calib_params_file_num;         /**< Their number. */
  const char* const* config_files;       /**< Calibration input configurations: paths, in buffers also INI texts. */
  uint8_t config_file_num;               /**< Their number. */
  const DeCalibRecord_S* const* calib_records; /**< Calibration records, one a configuration. */
  uint8_t calib_record_num;                    /**< Their number. */
  const uint8_t* alignment_switch;             /**< Not 0: alignment records that are held go along. Null: off. */
} CalibFlashInput_S;

/** @} */
/**
 * @defgroup register_tables Register tables
 *
 * The library holds one register table for each block: its image of the block's registers. Addresses and masks are
 * fixed, values change. A copy-out function copies the first @p count elements of a table to the caller; a merge-back
 * function stores the values of the first @p count elements, whole and unmasked, after checking that they are the
 * table's. Elements always count from the start of the table.
 *
 * At the first element that is not the table's, a merge prints "register element address or mask incompatible!\n" to
 * standard error and stops with -2; the elements before it are stored. No function here touches de_get_error_str().
 *
 * @code{.c}
 * DeRegElement_S elements[VQ3900_PREFILTER_REGISTERS];
 * if (de_copy_prefilter_register_table(elements, VQ3900_PREFILTER_REGISTERS) == 0) {
 *   // ... read the values from the device ...
 *   de_update_prefilter_register_table(elements, VQ3900_PREFILTER_REGISTERS);
 * }
 * @endcode
 * @{
 */

/**
 * @brief Copies the first elements of the basic / D2C-D2D control table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 5 (::VQ3900_BASIC_CTRL_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 5, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_basic_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_basic_d2c_d2d_ctrl_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the basic / D2C-D2D control table.
 *
 * This table compares the address alone: any mask is accepted.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 5.
 * @retval 0 All values are stored.
 * @retval -2 An element's address is not the table's (see above); @p count is above 5, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_basic_d2c_d2d_ctrl_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_update_basic_d2c_d2d_ctrl_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the D2D parameter table.
 *
 * The text names the basic table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 2 (::VQ3900_D2D_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 2, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_basic_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_d2d_params_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the D2D parameter table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 2.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 2, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_basic_params_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_update_d2d_params_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the D2C parameter table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 12 (::VQ3900_D2C_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 12, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_d2c_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_d2c_params_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the D2C parameter table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 12.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 12, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_d2c_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_update_d2c_params_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the prefilter table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 18 (::VQ3900_PREFILTER_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 18, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_pref_reg_table size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_prefilter_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the prefilter table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 18.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 18, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_pref_reg_table! \n" to standard error.
 */
VQ3900_API int32_t de_update_prefilter_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the extend-chop table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 7 (::VQ3900_EXTEND_CHOP_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 7, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > EXTAND_CHOP_REG_TABLE_SIZE! \n" to standard error.
 */
VQ3900_API int32_t de_copy_extend_chop_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the extend-chop table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 7.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 7, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > EXTAND_CHOP_REG_TABLE_SIZE! \n" to standard error.
 */
VQ3900_API int32_t de_update_extend_chop_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the disparity-calculation table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 12 (::VQ3900_DISP_CALC_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 12, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > DISP_CALC_REG_TABLE_SIZE! \n" to standard error.
 */
VQ3900_API int32_t de_copy_disp_calc_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the disparity-calculation table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 12.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 12, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > DISP_CALC_REG_TABLE_SIZE! \n" to standard error.
 */
VQ3900_API int32_t de_update_disp_calc_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the global-point-matching table.
 *
 * Register 0x50001368 is the last element, behind 0x50001374.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 30 (::VQ3900_GPM_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 30, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_gpm_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_gpm_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the global-point-matching table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 30.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 30, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_gpm_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_update_gpm_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the global-point status table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 261 (::VQ3900_GP_STATUS_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 261, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_gp_status_reg_table! \n" to standard error.
 */
VQ3900_API int32_t de_copy_gp_status_register_table(DeRegElement_S* dst, uint16_t count);

/**
 * @brief Merges read values into the global-point status table.
 *
 * The count is 8 bits wide and the table has 261 elements: no count is too large, and elements 255 to 260 cannot be
 * merged.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 255.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above), or @p src is null and @p count is not 0.
 */
VQ3900_API int32_t de_update_gp_status_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the rectification control table.
 *
 * Element 0 is camera 0's, elements 1 and 2 are camera 1's.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 3 (::VQ3900_RECTIFY_CTRL_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 3, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_rectify_ctrl_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_rectify_ctrl_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the rectification control table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 3.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 3, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_rectify_ctrl_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_update_rectify_ctrl_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the camera 0 rectification parameter table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 23 (::VQ3900_RECTIFY_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 23, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_rectify_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_rectify_params_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the camera 0 rectification parameter table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 23.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 23, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > inner_rectify_reg_table_size! \n" to standard error.
 */
VQ3900_API int32_t de_update_rectify_params_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of the camera 1 rectification parameter table.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 23 (::VQ3900_RECTIFY_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 23, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > SBG_ROTATE_RECT_LUT_REG_TABLE_SIZE! \n" to standard error.
 */
VQ3900_API int32_t de_copy_sbg2r_params_register_table(DeRegElement_S* dst, uint8_t count);

/**
 * @brief Merges read values into the camera 1 rectification parameter table.
 * @param[in] src @p count elements, the table's own in its order, with new values.
 * @param count Elements to merge, 0 to 23.
 * @retval 0 All values are stored.
 * @retval -2 An element's address or mask is not the table's (see above); @p count is above 23, or @p src is null and
 *            @p count is not 0: then nothing is stored. Too large a count prints
 *            "reg_num > SBG_ROTATE_RECT_LUT_REG_TABLE_SIZE! \n" to standard error.
 */
VQ3900_API int32_t de_update_sbg2r_params_register_table(const DeRegElement_S* src, uint8_t count);

/**
 * @brief Copies the first elements of a camera's rectification LUT information table. There is no merge-back.
 * @param camera_id 1 selects camera 1's table, any other value camera 0's.
 * @param[out] dst Receives @p count elements.
 * @param count Elements to copy, 0 to 7 (::VQ3900_RECTIFY_LUT_INFO_REGISTERS).
 * @retval 0 Copied.
 * @retval -2 @p count is above 7, or @p dst is null and @p count is not 0; nothing is copied. The former prints
 *            "reg_num > inner_sbg2r_lut_reg_table size! \n" to standard error.
 */
VQ3900_API int32_t de_copy_rectify_lut_info_register_table(int32_t camera_id, DeRegElement_S* dst, uint8_t count);

/** @} */

/**
 * @defgroup frame Register callbacks, errors and versions
 *
 * @code{.c}
 * if (de_register_read_write_functon(read_registers, write_registers, &device) != 0) return;
 * D2dConfig d2d;
 * int32_t code = de_get_d2d_params_from_registers(&d2d);
 * if (code == VQ3900_ERROR_TRANSFER) fprintf(stderr, "%s\n", de_get_error_str());  // null before the first failure
 * @endcode
 * @{
 */

/**
 * @brief Reads registers. Called on the caller's thread, inside a get entry point.
 * @param[in,out] elements @p count elements with address and mask set; the callback fills in each `value`. The array
 *                belongs to the library and is valid during the call only.
 * @param count Number of elements.
 * @param user The context given to de_register_read_write_functon().
 * @return 0 on success; any other value, or an exception, makes the entry point fail with -3.
 */
typedef int32_t (*de_read_register_func)(DeRegElement_S* elements, uint32_t count, void* user);

/**
 * @brief Writes registers. Called on the caller's thread, inside a set entry point.
 * @param[in] elements @p count elements; the callback stores each `value` in the register at `address`. `mask` tells
 *            which bits the library owns. The array belongs to the library and is valid during the call only.
 * @param count Number of elements.
 * @param user The context given to de_register_read_write_functon().
 * @return 0 on success; any other value, or an exception, makes the entry point fail with -3.
 */
typedef int32_t (*de_write_register_func)(DeRegElement_S* elements, uint32_t count, void* user);

/**
 * @brief Registers the two callbacks and their context.
 *
 * All three are stored whatever they are, so a null callback replaces an earlier one. With only one callback
 * registered the entry points that need that one work. The name is spelt as it is exported.
 * @param read_fn Read callback, or null.
 * @param write_fn Write callback, or null.
 * @param user Passed to both callbacks as it is; may be null. The caller owns it.
 * @retval 0 Both callbacks are set.
 * @retval -1 At least one is null; stored all the same. de_get_error_str() does not change.
 */
VQ3900_API int32_t de_register_read_write_functon(de_read_register_func read_fn, de_write_register_func write_fn,
                                                  void* user);

/**
 * @brief The text of the last failure of a set or get entry point.
 *
 * A success does not clear it; a failure before or behind the transfers (an argument, a converter, a merge) does not
 * change it.
 * @return Null before the first failure, else one of the constants "the read and write register function have not been
 *         set!", "read register failed!" and "write register failed!". Never to be freed.
 */
VQ3900_API const char* de_get_error_str(void);

/** @brief Version of the library. @return The constant "2.1.4.5". */
VQ3900_API const char* de_get_version(void);

/** @brief Another name of de_get_version(). @return The constant "2.1.4.5". */
VQ3900_API const char* driver_helper_get_version(void);

/**
 * @brief Copies the version of the library.
 * @param[out] buffer Receives 8 bytes: "2.1.4.5" and a zero. Null: nothing happens.
 */
VQ3900_API void get_depth_driver_helper_version(char* buffer);

/**
 * @brief Copies the version of the distortion-LUT library.
 * @param[out] out Receives the version text and its terminating zero; the first 8 bytes are cleared before. The buffer
 *             must hold the whole text, at least 8 bytes.
 * @retval 0 Copied.
 * @retval -1 @p out is null.
 * @retval -2 There is no memory for the text; @p out is as it was.
 */
VQ3900_API int32_t get_lut_version(char* out);

/** @brief Another name of get_lut_version(). @param[out] buffer See there. @retval 0,-1,-2 See there. */
VQ3900_API int32_t get_disto_lut_version(char* buffer);

/** @} */

/**
 * @defgroup set_entry Writing a block to the device
 *
 * Each set entry point stores the caller's record, converts it into register values and hands the tables to the write
 * callback, one call a table. All of them share these codes:
 *
 * - 0: everything was written.
 * - -1: no write callback. Nothing changed; de_get_error_str() answers "the read and write register function have not
 *   been set!".
 * - -2: a null pointer. Nothing changed.
 * - -3: the write callback failed. Records and register tables are as converted, tables already written stay written;
 *   de_get_error_str() answers "write register failed!". The call may be repeated, but for a rectification with grids.
 *
 * Codes of a single entry point stand with it.
 *
 * @code{.c}
 * DeBasicParams_S basic;
 * de_copy_basic_params(&basic);
 * basic.ref_plane_dist = 1000.0f;
 * int32_t code = de_set_baisc_params_to_registers(&basic);
 * if (code == VQ3900_FIXED_POINT_OVERFLOW) fprintf(stderr, "the reference plane is too close\n");
 * @endcode
 * @{
 */

/**
 * @brief Writes the operating mode and the depth constants: 2 elements (D2D table), then 5 (control table).
 *
 * The name is spelt as it is exported.
 * @param[in] params Record to store; see de_update_basic_params().
 * @retval 0,-1,-2,-3 See above.
 * @retval 4096 1 / ref_plane_dist (looked at while depth_mode is 0) or pbf does not fit its register. The record and
 *              the register tables are changed, nothing is written. The encoder printed its two lines.
 */
VQ3900_API int32_t de_set_baisc_params_to_registers(const DeBasicParams_S* params);

/**
 * @brief Writes the prefilter: 18 elements.
 *
 * The image size is that of the last set_prefilter_size_speckleTh() or read-back.
 * @param[in] params Record to store. A window size other than 5, 7 or 9 leaves the coefficient registers as they are.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_set_prefilter_params_to_registers(const DePrefilterParams_S* params);

/**
 * @brief Writes extension and chop: 7 elements.
 *
 * The extended image size is that of the last set_extend_chop_params(); a read-back does not change it.
 * @param[in] params Record to store.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_set_extend_chop_params_to_registers(const DeExtendChopParams_S* params);

/**
 * @brief Writes the matcher: 12 elements.
 *
 * smooth_enable_flag goes to the control table, which this call changes and does not write.
 * @param[in] params Record to store. An overflowing coefficient or minimum disparity becomes an all-ones field.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_set_disp_calc_params_to_registers(const DeDispCalcParams_S* params);

/**
 * @brief Writes the global-point matching: 30 elements.
 * @param[in] params Record to store.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_set_gpm_params_to_registers(const DeGpmParams_S* params);

/**
 * @brief Computes and writes the depth-to-colour projection: 12 elements (D2C table), then 5 (control table).
 *
 * An entry of the projection that overflows is printed by the encoder and written as all ones; it is no failure here.
 * @param[in] depth Intrinsics of the depth image.
 * @param[in] color Intrinsics of the colour image.
 * @param[in] extrinsic Pose from the depth to the colour camera.
 * @param[in] config D2C configuration to store.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_set_d2c_params_to_registers(const DeCameraIntrinsic_S* depth, const DeCameraIntrinsic_S* color,
                                                  const DeExtrinsic_S* extrinsic, const D2cConfig* config);

/**
 * @brief Writes the depth unit: 5 elements (control table). The D2D table is written with the basic block.
 * @param[in] config Record to store. Only unit_shift reaches the register.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_set_d2d_params_to_registers(const D2dConfig* config);

/**
 * @brief Writes both cameras' rectification parameters: 23 elements (camera 0), then 23 (camera 1).
 *
 * Matrix and distortion are those of the last set_rectify_params_brown(). No entry point writes the rectification
 * control table, the LUT information tables or the LUT sections: convert_rectify_control_float_to_register(),
 * de_copy_rectify_ctrl_register_table(), de_copy_rectify_lut_info_register_table() and
 * de_copy_rectify_lut_register_section(), and hand what they give to your own transport.
 *
 * A grid of set_rectify_params_map() is converted once and released: this call takes a new one each time. After
 * align_ir_ir_rgb_params_to_register_converter() everything is converted; where that made LUTs, write the tables as
 * de_copy_rectify_params_register_table() and de_copy_sbg2r_params_register_table() give them, instead of this call.
 * @param[in] params Enables and rectified intrinsics to store.
 * @param[in] ctrl Control record to store.
 * @retval 0,-1,-3 See above.
 * @retval -2 A null pointer, and nothing changed; or convert_rectify_params_to_register_elements() refused: no
 *            rectification parameters were set before (prints "need to set rectify params! \n" to standard error), or
 *            a grid is missing or of the wrong size. The records are stored, nothing is written.
 * @retval 4096 A parameter does not fit its register. The records are stored, registers before it are converted,
 *              nothing is written. See convert_rectify_params_to_register_elements() for the texts.
 */
VQ3900_API int32_t de_set_rectify_params_to_registers(const DeRectifyParams_S* params,
                                                      const DeRectifyCtrlParams_S* ctrl);

/** @} */

/**
 * @defgroup get_entry Reading a block from the device
 *
 * Each get entry point hands the block's tables to the read callback, merges what was read into the library's tables,
 * converts it to the record and copies the record out. All of them share these codes:
 *
 * - 0: the record was copied out.
 * - -1: no read callback. Nothing changed; de_get_error_str() answers "the read and write register function have not
 *   been set!".
 * - -2: a null pointer, and nothing changed; or the callback changed an address or, in any table but the control table,
 *   a mask (prints "register element address or mask incompatible!\n" to standard error), and elements merged before
 *   that one stay merged.
 * - -3: the read callback failed. Tables merged before it stay merged (global points and rectification read all their
 *   tables before they merge the first); de_get_error_str() answers "read register failed!".
 *
 * The caller's record is untouched unless the code is 0.
 *
 * @code{.c}
 * DeGpmParams_S points;
 * DeGpStatusParams_S status;
 * if (de_get_gpm_params_from_registers(&points, &status) == 0) get_global_points_status(&status);
 * @endcode
 * @{
 */

/**
 * @brief Reads the operating mode: 2 elements (D2D table), then 5 (control table).
 *
 * cam_mode comes from bit 31 of 0x50001200, which is where depth_mode is written. Baseline, focal length, depth_mode,
 * resolution and rotation are not in the registers; they come out as last set.
 * @param[out] params Receives the record.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_get_baisc_params_from_registers(DeBasicParams_S* params);

/**
 * @brief Reads the prefilter: 18 elements. The speckle threshold comes out as last set; the image size is replaced.
 * @param[out] params Receives the record.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_get_prefilter_params_from_registers(DePrefilterParams_S* params);

/**
 * @brief Reads extension and chop: 7 elements. extend_tar[2] and [3] come out as last set.
 * @param[out] params Receives the record; the values read are unsigned 12-bit numbers.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_get_extend_chop_params_from_registers(DeExtendChopParams_S* params);

/**
 * @brief Reads the matcher: 12 elements.
 *
 * arm_short_en and arm_short_mask come out as last set; smooth_enable_flag comes from the library's control table.
 * @param[out] params Receives the record.
 * @retval 0,-1,-2,-3 See above.
 * @retval -5 A decoder failed; does not occur.
 */
VQ3900_API int32_t de_get_disp_calc_params_from_registers(DeDispCalcParams_S* params);

/**
 * @brief Reads the global-point matching and its status: 30 elements, then 261.
 *
 * All 261 status registers are read, the first 5 are merged: the 256 words of the single points keep the library's
 * own values. Fetch the whole decoded status with get_global_points_status().
 * @param[out] gpm Receives the record; coordinates and tolerances are unsigned 12-bit numbers.
 * @param[out] status Receives its first three bytes, as de_copy_gp_status_params() does; the rest is left alone.
 * @retval 0,-1,-2,-3 See above.
 * @retval -5 A decoder failed; does not occur.
 */
VQ3900_API int32_t de_get_gpm_params_from_registers(DeGpmParams_S* gpm, DeGpStatusParams_S* status);

/**
 * @brief Reads projection and configuration of the depth-to-colour block: 12 elements, then 5 (control table).
 *
 * Fetch the projection with get_d2c_params(). The camera mode of the basic record is set from the low byte of
 * 0x50001200 on the way; see convert_d2c_register_to_params_cfg().
 * @param[out] config Receives the record.
 * @retval 0,-1,-2,-3 See above.
 * @retval -5 A decoder failed; does not occur.
 */
VQ3900_API int32_t de_get_d2c_params_from_registers(D2cConfig* config);

/**
 * @brief Reads the depth unit and the D2D flags: 5 elements (control table).
 * @param[out] config Receives the record.
 * @retval 0,-1,-2,-3 See above.
 */
VQ3900_API int32_t de_get_d2d_params_from_registers(D2dConfig* config);

/**
 * @brief Reads the rectification: 23 elements (camera 1), 23 (camera 0), 3 (control table).
 *
 * They are merged in the order camera 0, control table, camera 1. The flags that @p kk_lut_arg switches on are then
 * overwritten by those that were read.
 * @param[out] params Receives enables and rectified intrinsics.
 * @param[out] ctrl Receives the control record.
 * @param kk_lut_arg Distortion type handed to set_rectify_kk_lut() between merging and decoding: 0 to 2.
 * @param convert_arg Single-camera mode: non-zero decodes camera 1's registers, 0 camera 0's, either into camera 1's
 *                    record. Ignored in other modes.
 * @retval 0,-1,-3 See above.
 * @retval -2 See above; or @p kk_lut_arg is refused by set_rectify_kk_lut(): the tables are merged, nothing is decoded.
 */
VQ3900_API int32_t de_get_rectify_params_from_registers(DeRectifyParams_S* params, DeRectifyCtrlParams_S* ctrl,
                                                        uint32_t kk_lut_arg, uint8_t convert_arg);

/** @} */

/**
 * @defgroup fixed_point Fixed-point helpers
 *
 * What the converters use, and what a callback needs that has to look into register fields. A field is a contiguous
 * run of bits given by its mask. A fixed-point field of N bits with F fraction bits holds R for the number R / 2^F;
 * signed fields are two's complement.
 *
 * @code{.c}
 * uint32_t value = de_float_to_fixed(-8.0, 8, 0, "min_disp");      // 0xF8
 * uint32_t word = de_set_reg_field(value, 0, 0x00FF0000);         // 0x00F80000
 * double back;
 * de_fixed_to_float(de_get_reg_field(word, 0x00FF0000), 8, 0, &back);  // -8.0
 * @endcode
 * @{
 */

/**
 * @brief Takes a field out of a register value.
 * @param reg Register value.
 * @param mask Bits of the field.
 * @return The masked bits, shifted down to the mask's lowest bit; 0 for a mask of 0.
 */
VQ3900_API uint32_t de_get_reg_field(uint32_t reg, uint32_t mask);

/**
 * @brief Puts a field into a register value.
 * @param field Field value; bits that do not fit under the mask are dropped.
 * @param reg Register value.
 * @param mask Bits of the field.
 * @return @p reg with the field replaced; @p reg for a mask of 0.
 */
VQ3900_API uint32_t de_set_reg_field(uint32_t field, uint32_t reg, uint32_t mask);

/**
 * @brief Encodes a number as a fixed-point field.
 *
 * The number is scaled by 2^F and rounded half away from zero. The range check does not know whether the field is
 * signed: it accepts -2^N to 2^N - 1, and a negative number that rounds to zero. When the scaled magnitude is at least
 * 1 and the result does not fit, and for infinities and NaN, two lines go to standard output: "current lut value:
 * %.20lf; dingdianhua value: %.20lf; m_fp: %llu; return value: %llu; max value: %llu \n" (number, scaled number,
 * result, result cut to the field, largest result) and "error code 01: value overflow in %s \n" (@p field_name).
 * @param value Number to encode.
 * @param width N, total bits of the field; taken modulo 64.
 * @param frac_bits F, fraction bits; taken modulo 64.
 * @param field_name Name for the message; null prints as "(null)".
 * @return The N-bit field, or 0xFFFFFFFF on overflow. A field of 32 ones is legitimate and looks the same.
 */
VQ3900_API uint32_t de_float_to_fixed(double value, uint32_t width, int32_t frac_bits, const char* field_name);

/**
 * @brief Decodes a signed fixed-point field.
 * @param raw Field value; bits above the field count when its sign bit is clear.
 * @param width N, total bits; the sign bit is bit N - 1, taken modulo 32.
 * @param frac_bits F, fraction bits.
 * @param[out] out Receives the number. Null: nothing happens.
 */
VQ3900_API void de_fixed_to_float(uint32_t raw, uint32_t width, int32_t frac_bits, double* out);

/**
 * @brief Decodes a signed or an unsigned fixed-point field.
 * @param raw Field value.
 * @param is_signed True: as de_fixed_to_float(). False: the number is @p raw / 2^F.
 * @param width N, total bits; used for signed fields.
 * @param frac_bits F, fraction bits.
 * @param[out] out Receives the number. Null: nothing happens.
 */
VQ3900_API void de_fixed_to_float_sign(uint32_t raw, bool is_signed, uint32_t width, int32_t frac_bits, double* out);

/** @} */

/**
 * @defgroup basic Basic camera mode
 *
 * Camera mode, upsampling, input resolution and the stereo geometry of the depth stage. The setters change the record
 * alone; the next set entry point or image takes it from there.
 *
 * @code{.c}
 * set_camera_mode(1, 1);                       // stereo, absolute depth
 * set_input_ir_resolution(1280u | 800u << 16);
 * set_upsample(0, 0);
 * if (set_pbf_params(50.0f, 600.0f) != 0) return;  // 50 mm, 600 pixels
 * @endcode
 * @{
 */

/**
 * @brief Sets the camera mode and the depth mode.
 * @param cam_mode 0 single camera, 1 stereo.
 * @param depth_mode Depth mode, 0 or 1: 0 programs the reference plane. Stored even when @p cam_mode is refused.
 * @retval 0 Stored.
 * @retval -2 @p cam_mode is neither 0 nor 1; the camera mode is unchanged.
 */
VQ3900_API int32_t set_camera_mode(int32_t cam_mode, uint8_t depth_mode);

/**
 * @brief Answers the camera mode.
 * @param[out] out Receives it; after a read-back any value of the register bits is possible.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_camera_mode(uint32_t* out);

/**
 * @brief Switches upsampling of the input images and sets the scale mode.
 *
 * On: the main path is switched on, and the auxiliary path as well in camera mode 1. Off: all three flags are 0.
 * @param enable 0 off, 1 on. Stored as it is; the register takes the lowest bit.
 * @param scale_mode Output scale mode, 0 to 3; higher bits are cut in the register.
 * @retval 0 Stored.
 */
VQ3900_API int32_t set_upsample(uint8_t enable, uint32_t scale_mode);

/** @brief Answers the upsampling switch. @return The record's upsample_enable, as last set or read; not a code. */
VQ3900_API uint8_t get_upsample(void);

/**
 * @brief Answers the scale mode.
 * @param[out] out Receives it.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_scale_mode(uint32_t* out);

/**
 * @brief Answers the distance of the reference plane.
 * @param[out] out Receives it, in depth units.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_ref_plane_dist(float* out);

/**
 * @brief Answers 1 / (baseline * focal length).
 * @param[out] out Receives it.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_pbf(float* out);

/**
 * @brief Sets the distance of the reference plane.
 * @param dist Distance in depth units. Not checked here; its reciprocal must fit the register when the basic block is
 *             written (magnitude above 64), and reads back with its sign from a magnitude above 128 on.
 * @retval 0 Stored.
 */
VQ3900_API int32_t set_ref_plane_dist(float dist);

/**
 * @brief Sets the resolution of the input IR images.
 * @param packed Width in bits 0 to 15, height in bits 16 to 31, in pixels.
 * @retval 0 Stored.
 */
VQ3900_API int32_t set_input_ir_resolution(uint32_t packed);

/**
 * @brief Sets baseline and focal length, and pbf from them.
 * @param baseline Stereo baseline in depth units, signed; magnitude 1 to 500.
 * @param focal_length_pix Focal length in pixels, at least 10. The magnitude of baseline x focal length must be above
 *                         256 for pbf to fit its register, and above 512 for it to read back with its sign.
 * @retval 0 Stored. A NaN passes both checks.
 * @retval -2 The baseline is out of range (prints "check baseline!\n" to standard output; nothing is stored), or the
 *            focal length is below 10 (prints "focal_length_pix is incorrect! \n" to standard error; the baseline is
 *            stored, focal length and pbf are unchanged).
 */
VQ3900_API int32_t set_pbf_params(float baseline, float focal_length_pix);

/**
 * @brief Stores the whole record, padding included.
 * @param[in] params Record; nothing is checked.
 * @retval 0 Stored.
 * @retval -2 @p params is null.
 */
VQ3900_API int32_t de_update_basic_params(const DeBasicParams_S* params);

/**
 * @brief Copies the whole record, padding included.
 * @param[out] params Receives it.
 * @retval 0 Copied.
 * @retval -2 @p params is null.
 */
VQ3900_API int32_t de_copy_basic_params(DeBasicParams_S* params);

/**
 * @brief Converts the record to the control table: camera mode, upsampling and scale mode.
 *
 * The two upsampling paths of camera mode 1 are written in that mode only.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_basic_config_to_registers(void);

/**
 * @brief Converts the control and D2D tables to the record.
 *
 * cam_mode is taken from bit 31 of 0x50001200, the bit that depth_mode is written to. The reference plane is read while
 * that bit is 0. Baseline, focal length, depth_mode, resolution and rotation stay.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_basic_register_to_params(void);

/** @} */

/**
 * @defgroup d2c Depth to colour (D2C)
 *
 * The block re-projects depth pixels into the colour image with a 3x4 matrix W, row-major, which maps
 * (u z, v z, z, 1) of a depth pixel (u, v) at depth z to homogeneous colour pixels.
 *
 * @code{.c}
 * const float depth[4] = {600, 600, 640, 400}, color[4] = {900, 900, 960, 540};        // fx, fy, cx, cy
 * const float pose[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 25, 0, 0};                        // R row-major, T
 * set_d2c_config(2, 0.25f, 16, 64, 0);
 * set_d2c_calib_params(depth, color, pose);
 * if (convert_d2c_params_to_register_elements() == VQ3900_FIXED_POINT_OVERFLOW) return;
 * @endcode
 * @{
 */

/**
 * @brief Sets recovery mode, buffer geometry and depth sign.
 * @param recovery_mode 0 none, 1 first mode, 2 expand; any other value leaves the three recovery fields as they are.
 * @param expand_width Expand width, 0 to 255/256; stored in mode 2 only.
 * @param buffer_position Row position in the line buffer, 12 bits.
 * @param total_buffer_rows Rows of the line buffer, 12 bits.
 * @param depth_sign Non-zero: depth is negated.
 * @retval 0 Stored.
 */
VQ3900_API int32_t set_d2c_config(int32_t recovery_mode, float expand_width, uint32_t buffer_position,
                                  uint32_t total_buffer_rows, int32_t depth_sign);

/**
 * @brief As set_d2c_config(), with the depth sign taken from the baseline of set_pbf_params().
 * @param recovery_mode See set_d2c_config().
 * @param expand_width See set_d2c_config().
 * @param buffer_position See set_d2c_config().
 * @param total_buffer_rows See set_d2c_config().
 * @retval 0 Stored; depth is negated when the baseline is 0 or below.
 * @retval -2 The baseline's magnitude is not within 1 to 200 (prints "check baseline!\n" to standard output). The
 *            recovery fields are stored, the others are unchanged.
 */
VQ3900_API int32_t set_d2c_params(int32_t recovery_mode, float expand_width, uint32_t buffer_position,
                                  uint32_t total_buffer_rows);

/**
 * @brief Computes the projection from a calibration.
 *
 * Products, sums and quotients are formed in single precision, the principal-point terms of W2, W6 and W10 in double.
 * @param[in] depth_intrinsic fx, fy, cx, cy of the depth image in pixels.
 * @param[in] color_intrinsic fx, fy, cx, cy of the colour image in pixels.
 * @param[in] extrinsic 12 values: rotation from depth to colour camera, row-major, then translation in depth units.
 * @retval 0 Stored.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t set_d2c_calib_params(const float* depth_intrinsic, const float* color_intrinsic,
                                        const float* extrinsic);

/**
 * @brief Copies the configuration and the projection.
 * @param[out] config Receives the 32-byte record.
 * @param[out] w Receives 12 values, W0 to W11, row-major.
 * @retval 0 Copied.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t get_d2c_params(D2cConfig* config, double* w);

/**
 * @brief Copies the whole configuration record.
 * @param[out] config Receives it.
 * @retval 0 Copied.
 * @retval -2 @p config is null.
 */
VQ3900_API int32_t de_copy_d2c_config(D2cConfig* config);

/**
 * @brief Stores the whole configuration record; nothing is checked.
 * @param[in] config Record.
 * @retval 0 Stored.
 * @retval -2 @p config is null.
 */
VQ3900_API int32_t de_update_d2c_config(const D2cConfig* config);

/**
 * @brief Converts the configuration (and depth_mode of the basic record) to the control table.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_d2c_ctrl_to_register_elements(void);

/**
 * @brief Converts the projection to the D2C table.
 * @retval 0 Converted.
 * @retval 4096 At least one entry did not fit; it holds all ones, the encoder printed which. The others are converted.
 */
VQ3900_API int32_t convert_d2c_params_to_register_elements(void);

/**
 * @brief Converts the D2C table back to the projection.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_W_mat_register_to_float(void);

/**
 * @brief Converts the D2C and control tables back to projection and configuration, both cleared before.
 *
 * Two register bits come back crossed: recovery_mode_1 from the bit that recovery_mode_2 is written to, and the other
 * way round. The camera mode of the basic record is set from bits 0 to 7 of 0x50001200.
 * @retval 0 Converted.
 * @retval -5 The projection could not be decoded; does not occur.
 */
VQ3900_API int32_t convert_d2c_register_to_params_cfg(void);

/** @} */

/**
 * @defgroup d2d Disparity to depth (D2D)
 *
 * @code{.c}
 * set_ref_plane_dist(1000.0f);
 * if (set_d2d_unit(1) != 0 || convert_d2d_params_to_register_elements() != 0) return;
 * @endcode
 * @{
 */

/**
 * @brief Sets the depth unit.
 * @param unit_shift 0, 1, 2, 3, 4 for 0.1, 0.2, 0.4, 0.8, 1.6.
 * @retval 0 Stored.
 * @retval -2 Above 4 (prints "D2D:unit_shift is incorrect! \n" to standard error); nothing changes.
 */
VQ3900_API int32_t set_d2d_unit(uint8_t unit_shift);

/** @brief Notes whether the hardware stage is on; no converter writes it. @param enable True: on. */
VQ3900_API void set_hw_d2d_enable(bool enable);

/**
 * @brief Copies the record.
 * @param[out] config Receives it.
 * @retval 0 Copied.
 * @retval -2 @p config is null.
 */
VQ3900_API int32_t get_d2d_config(D2dConfig* config);

/**
 * @brief Stores the whole record; nothing is checked.
 * @param[in] config Record.
 * @retval 0 Stored.
 * @retval -2 @p config is null.
 */
VQ3900_API int32_t de_update_d2d_config(const D2dConfig* config);

/**
 * @brief Converts the depth unit to the control table; the enable bit is not written.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_d2d_config_to_register_element(void);

/**
 * @brief Converts the control table to the record: depth unit, enable bit and in_R.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_d2d_register_to_config(void);

/**
 * @brief Converts 1 / ref_plane_dist and pbf of the basic record to the D2D table.
 *
 * The reference plane is converted while depth_mode is 0; otherwise its register stays.
 * @retval 0 Converted.
 * @retval 4096 A value did not fit; its register holds all ones, the encoder printed which ("iZ0" or "PBF"). The other
 *              one is converted.
 */
VQ3900_API int32_t convert_d2d_params_to_register_elements(void);

/** @} */

/**
 * @defgroup disparity Disparity calculation
 *
 * The tuning of the stereo matcher. No setter checks a value: what is wider than its register field is cut when it is
 * converted. Widths stand with DeDispCalcParams_S.
 *
 * @code{.c}
 * const DeTileParams_S tiles = {320, 4, 1, 8};
 * const double coefficients[4] = {0.666, -0.042, 0.0, 0.0};
 * set_depth_engine_win_size(9);
 * set_min_disp(-8);
 * set_tile_width_overlap(&tiles);
 * set_subpixel_coef(coefficients);
 * convert_calc_disp_float_to_registers();
 * @endcode
 * @{
 */

/** @brief Sets the matching window. @param win_size Window in pixels, 5 bits. @retval 0 Stored. */
VQ3900_API int32_t set_depth_engine_win_size(uint32_t win_size);
/** @brief Answers the matching window. @param[out] out Receives it. @retval 0 Copied. @retval -2 @p out is null. */
VQ3900_API int32_t get_depth_engine_win_size(uint32_t* out);

/** @brief Sets the minimum disparity. @param min_disparity Pixels, -128 to 127. @retval 0 Stored. */
VQ3900_API int32_t set_min_disp(int8_t min_disparity);
/**
 * @brief Answers the low byte of the minimum disparity.
 * @param[out] out Receives the byte; -8 comes out as 0xF8.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_min_disp(uint8_t* out);

/** @brief Sets the grow-match group. @param[in] params Group. @retval 0 Stored. @retval -2 @p params is null. */
VQ3900_API int32_t set_grow_match_params(const DeGrowMatchParams_S* params);
/** @brief Copies the grow-match group. @param[out] params Receives it. @retval 0 Copied. @retval -2 @p params is null.
 */
VQ3900_API int32_t get_grow_match_params(DeGrowMatchParams_S* params);

/** @brief Sets the shadow-check group. @param[in] params Group. @retval 0 Stored. @retval -2 @p params is null. */
VQ3900_API int32_t set_shadow_check_params(const DeShadowCheckParams_S* params);
/**
 * @brief Copies the shadow-check group.
 * @param[out] params Receives it; its padding bytes are left alone.
 * @retval 0 Copied.
 * @retval -2 @p params is null.
 */
VQ3900_API int32_t get_shadow_check_params(DeShadowCheckParams_S* params);

/** @brief Sets the short-arm group. @param[in] params Group. @retval 0 Stored. @retval -2 @p params is null. */
VQ3900_API int32_t set_arm_short_params(const DeArmShortParams_S* params);
/** @brief Copies the short-arm group. @param[out] params Receives it. @retval 0 Copied. @retval -2 @p params is null.
 */
VQ3900_API int32_t get_arm_short_params(DeArmShortParams_S* params);

/** @brief Sets the tile group. @param[in] params Group. @retval 0 Stored. @retval -2 @p params is null. */
VQ3900_API int32_t set_tile_width_overlap(const DeTileParams_S* params);
/** @brief Copies the tile group. @param[out] params Receives it. @retval 0 Copied. @retval -2 @p params is null. */
VQ3900_API int32_t get_tile_width_overlap(DeTileParams_S* params);

/** @brief Sets the seed group. @param[in] params Group. @retval 0 Stored. @retval -2 @p params is null. */
VQ3900_API int32_t set_seed_params(const DeSeedParams_S* params);
/** @brief Copies the seed group. @param[out] params Receives it. @retval 0 Copied. @retval -2 @p params is null. */
VQ3900_API int32_t get_seed_params(DeSeedParams_S* params);

/** @brief Sets the left-right consistency group. @param params Group, by value. @retval 0 Stored. */
VQ3900_API int32_t set_lrc_params(DeLrcParams_S params);
/** @brief Copies the consistency group. @param[out] params Receives it. @retval 0 Copied. @retval -2 @p params is null.
 */
VQ3900_API int32_t get_lrc_params(DeLrcParams_S* params);

/**
 * @brief Sets the smoothing filter.
 * @param[in] params Group. smooth_enable_flag is ignored: the record's flag becomes 1 when smooth_enable is not 0.
 * @retval 0 Stored.
 * @retval -2 @p params is null.
 */
VQ3900_API int32_t set_smoothfilter_params(const DeSmoothFilterParams_S* params);
/** @brief Copies the smoothing filter. @param[out] params Receives it. @retval 0 Copied. @retval -2 @p params is null.
 */
VQ3900_API int32_t get_smoothfilter_params(DeSmoothFilterParams_S* params);

/**
 * @brief Sets the sub-pixel coefficients.
 * @param[in] coefficients a0, a1, a2, a3. Each fits its register up to 13 bits (a3: 11 bits) with 10 fraction bits.
 * @retval 0 Stored.
 * @retval -2 @p coefficients is null.
 */
VQ3900_API int32_t set_subpixel_coef(const double* coefficients);
/**
 * @brief Copies the sub-pixel coefficients.
 *
 * One indirection more than the setter: the argument points at the pointer to the caller's array.
 * @param[in] coefficients Points at a pointer to an array of 4, which is filled with a0, a1, a2, a3.
 * @retval 0 Copied.
 * @retval -2 @p coefficients or the pointer behind it is null.
 */
VQ3900_API int32_t get_subpixel_coef(double** coefficients);

/**
 * @brief Stores the whole record, padding included; nothing is checked.
 * @param[in] params Record.
 * @retval 0 Stored.
 * @retval -2 @p params is null.
 */
VQ3900_API int32_t de_update_disp_calc_params(const DeDispCalcParams_S* params);
/**
 * @brief Copies the whole record, padding included.
 * @param[out] params Receives it.
 * @retval 0 Copied.
 * @retval -2 @p params is null.
 */
VQ3900_API int32_t de_copy_disp_calc_params(DeDispCalcParams_S* params);

/**
 * @brief Converts the record to the disparity-calculation table, and smooth_enable_flag to the control table.
 *
 * A coefficient or a minimum disparity that overflows becomes an all-ones field; the encoder prints which.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_calc_disp_float_to_registers(void);
/**
 * @brief Converts the disparity-calculation table (and one bit of the control table) to the record.
 *
 * arm_short_en and arm_short_mask are not read back.
 * @retval 0 Converted.
 * @retval -5 A decoder failed; does not occur.
 */
VQ3900_API int32_t convert_calc_disp_registers_to_float(void);

/** @} */

/**
 * @defgroup geometry Prefilter and extend-chop
 *
 * @code{.c}
 * const int32_t ref[4] = {0, 0, 8, 8}, tar[4] = {16, 16, 8, 8}, chop[4] = {4, 4, 2, 2};
 * set_input_ir_resolution(640u | 480u << 16);
 * if (set_prefilter_size_speckleTh(9, 0) != 0) return;
 * if (set_extend_chop_params(ref, tar, chop) != 0) return;
 * @endcode
 * @{
 */

/**
 * @brief Sets the prefilter window, and the prefilter image size from the input resolution.
 *
 * Width and height are swapped in camera mode 0 while the rectifier rotates; with upsampling on the size is twice the
 * input resolution, unswapped.
 * @param size Window: 5, 7 or 9 pixels.
 * @param speckle_th Speckle threshold; kept, written to no register.
 * @retval 0 Stored.
 * @retval -2 Another size (prints "unsupported size! size: 5, 7,9 \n" to standard error); nothing changes.
 */
VQ3900_API int32_t set_prefilter_size_speckleTh(int32_t size, uint8_t speckle_th);

/**
 * @brief Answers prefilter window and speckle threshold.
 * @param[out] size Receives the window in pixels.
 * @param[out] speckle_th Receives the threshold.
 * @retval 0 Copied.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t get_prefilter_size_speckleTh(uint32_t* size, uint8_t* speckle_th);

/**
 * @brief Answers the prefilter image size.
 * @param[out] out Receives the width in bits 0 to 15 and the height in bits 16 to 31, in pixels.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_prefilter_img_size(uint32_t* out);

/**
 * @brief Sets extension and chop, and the extended image size from the prefilter image size.
 * @param[in] extend_ref 4 values: reference image, two for the width, two for the height, in pixels.
 * @param[in] extend_tar 4 values: target image, same order. They give the extended size.
 * @param[in] chop 4 values chopped off the output, same order.
 * @retval 0 Stored.
 * @retval -2 A pointer is null; nothing changes.
 * @retval -4 The prefilter image size is not set (prints "missing setting prefilter imgage size,namely ir
 *            resolution\n" to standard error). The 12 values are stored, the extended size is unchanged.
 */
VQ3900_API int32_t set_extend_chop_params(const int32_t* extend_ref, const int32_t* extend_tar, const int32_t* chop);

/**
 * @brief Copies the target extension and the chop; the reference extension has no getter of its own.
 * @param[out] tar Receives 4 values of the target extension.
 * @param[out] chop Receives 4 values of the chop.
 * @retval 0 Copied.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t get_extend_chop_params(int32_t* tar, int32_t* chop);

/** @brief Stores the whole prefilter record. @param[in] params Record. @retval 0 Stored. @retval -2 @p params is null.
 */
VQ3900_API int32_t de_update_prefilter_params(const DePrefilterParams_S* params);
/** @brief Copies the whole prefilter record. @param[out] params Receives it. @retval 0 Copied. @retval -2 Null. */
VQ3900_API int32_t de_copy_prefilter_params(DePrefilterParams_S* params);
/** @brief Stores the whole extend-chop record. @param[in] params Record. @retval 0 Stored. @retval -2 Null. */
VQ3900_API int32_t de_update_extend_chop_params(const DeExtendChopParams_S* params);
/** @brief Copies the whole extend-chop record. @param[out] params Receives it. @retval 0 Copied. @retval -2 Null. */
VQ3900_API int32_t de_copy_extend_chop_params(DeExtendChopParams_S* params);

/**
 * @brief Converts window, coefficients and image size to the prefilter table.
 *
 * A stored window other than 5, 7 or 9 leaves size code and coefficient registers as they are.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_prefilter_float_to_registers(void);
/** @brief Converts the prefilter table to window and image size. @retval 0 Converted. */
VQ3900_API int32_t convert_prefilter_registers_to_float(void);
/** @brief Converts extended size, output area, extension and chop to the extend-chop table. @retval 0 Converted. */
VQ3900_API int32_t convert_extend_chop_float_to_registers(void);
/**
 * @brief Converts the extend-chop table to the record, as unsigned 12-bit numbers.
 *
 * extend_tar[2], extend_tar[3] and the extended size are not read back.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_extend_chop_registers_to_float(void);

/** @} */

/**
 * @defgroup gpm Global-point matching
 *
 * @code{.c}
 * int32_t x[16] = {100, 200}, y[16] = {80, 80};
 * uint16_t rows[16] = {0x0003};
 * const DeGpmConfig_S config = {20, 40, 10, 100, 3, -16, 16};
 * set_gpm_enable(1);
 * set_x_y_coordinates(x, y);
 * set_gpm_enable_columns(rows, 2);
 * set_gpm_config(&config, 0);
 * convert_gpm_float_to_registers();
 * @endcode
 * @{
 */

/**
 * @brief Switches the global-point matching, and set_rectify_common() with the same value.
 * @param enable 0 off, 1 on. The low byte is stored; the register takes its lowest bit.
 * @retval 0 Stored.
 */
VQ3900_API int32_t set_gpm_enable(uint32_t enable);

/**
 * @brief Sets the coordinates of the points.
 * @param[in] x 16 columns in pixels.
 * @param[in] y 16 rows in pixels.
 * @retval 0 Stored.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t set_x_y_coordinates(const int32_t* x, const int32_t* y);

/**
 * @brief Sets the row patterns; column k counts as enabled when any row enables it.
 * @param[in] bits_per_row 16 patterns, bit k for column k.
 * @param enabled_cols Number of enabled columns as the device shall see it; not derived from the patterns.
 * @retval 0 Stored.
 * @retval -2 @p bits_per_row is null.
 */
VQ3900_API int32_t set_gpm_enable_columns(const uint16_t* bits_per_row, uint8_t enabled_cols);

/**
 * @brief Sets the thresholds.
 * @param[in] config Thresholds.
 * @param flag Bit 8 of 0x50001374, 1 bit.
 * @retval 0 Stored.
 * @retval -2 @p config is null.
 */
VQ3900_API int32_t set_gpm_config(const DeGpmConfig_S* config, uint8_t flag);

/** @brief Copies the whole record, padding included. @param[out] params Receives it. @retval 0 Copied. @retval -2 Null.
 */
VQ3900_API int32_t get_gpm_params(DeGpmParams_S* params);
/** @brief Another name of get_gpm_params(). @param[out] params Receives the record. @retval 0 Copied. @retval -2 Null.
 */
VQ3900_API int32_t de_copy_gpm_params(DeGpmParams_S* params);
/** @brief Stores the whole record, padding included. @param[in] params Record. @retval 0 Stored. @retval -2 Null. */
VQ3900_API int32_t de_update_gpm_params(const DeGpmParams_S* params);

/**
 * @brief Copies the whole decoded status.
 * @param[out] out Receives 3128 bytes, a DeGpStatusParams_S.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t get_global_points_status(void* out);
/**
 * @brief Copies the first three bytes of the decoded status: the three low bytes of its first word, lowest first.
 * @param[out] out Receives 3 bytes.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t de_copy_gp_status_params(void* out);
/**
 * @brief Refuses: the status is read only.
 * @retval -3 Always (prints "gp_status_params read only!\n" to standard error).
 */
VQ3900_API int32_t de_update_gp_status_params(void);

/** @brief Converts the record to the global-point-matching table. @retval 0 Converted. */
VQ3900_API int32_t convert_gpm_float_to_registers(void);
/**
 * @brief Converts the global-point-matching table to the record.
 *
 * Coordinates and tolerances come back unsigned: -1 as 4095. enable_mirror is not read back. A number of enabled
 * columns above 16 is kept, and the 16 columns of the list are flagged.
 * @retval 0 Converted.
 * @retval -5 A decoder failed; does not occur.
 */
VQ3900_API int32_t convert_gpm_registers_to_float(void);
/** @brief Converts the global-point status table to the status record. @retval 0 Converted. */
VQ3900_API int32_t convert_gp_status_registers_to_float(void);

/** @} */

/**
 * @defgroup rectify Rectification
 *
 * Two cameras: camera 1 is the reference camera, and in single-camera mode everything is done for camera 1 whatever
 * camera is named. "The camera mode" is that of set_camera_mode().
 *
 * @code{.c}
 * const RectifyIntrinsic virtual_camera = {600, 600, 640, 400, 1280, 800};
 * const float distortion[8] = {-0.28f, 0.07f, 0, 0, 0, 0, 0.0002f, 0};  // k1 .. k6, p1, p2
 * const float rotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
 * const float camera[4] = {605, 604, 636, 402};                         // fx, fy, cx, cy
 * set_camera_mode(1, 1);
 * if (set_rectify_status(1, 1, 32) != 0) return;
 * set_rectify_kk_lut(0);
 * for (uint32_t id = 0; id < 2; ++id) set_rectify_params_brown(id, &virtual_camera, distortion, rotation, camera);
 * if (convert_rectify_params_to_register_elements() != 0) return;
 * convert_rectify_control_float_to_register();
 * @endcode
 * @{
 */

/**
 * @brief Switches the rectification of both cameras.
 *
 * Also sets the common flag: to 0 in camera mode 0, to 1 in camera mode 1; other modes leave it.
 * @param cam0_en Camera 0: 0 off, 1 on, any other value leaves it.
 * @param cam1_en Camera 1: the same.
 * @param start_rows Rows buffered before the output starts, 12 bits.
 * @retval 0 Stored.
 * @retval -2 Camera mode 0 and both switches share a set bit (nothing changes), or camera mode 1 and the switches
 *            differ (the common flag is 1 already).
 */
VQ3900_API int32_t set_rectify_status(int32_t cam0_en, int32_t cam1_en, uint32_t start_rows);

/**
 * @brief Sets the common flag of camera 0's control register.
 * @param value Camera mode 1: the flag, 1 bit. Camera mode 0: ignored, the flag becomes 0. Other modes: no effect.
 * @retval 0 Done.
 */
VQ3900_API int32_t set_rectify_common(uint8_t value);

/**
 * @brief Switches on the distortion correction, once a camera's rectification is on. Nothing is ever switched off.
 * @param distort_type 0 polynomial (kk), 1 LUT, 2 both.
 * @retval 0 Stored; or neither camera is on, and nothing happens.
 * @retval -2 Another type, with a camera on; nothing changes.
 */
VQ3900_API int32_t set_rectify_kk_lut(int32_t distort_type);

/**
 * @brief Sets the sbg2r stage: rotation and sub-mode.
 *
 * The rotation flag of the basic record becomes 1 when @p rotate_90_en is not 0.
 * @param rotate_90_en Rotation by 90 degrees: bit 0 on or off. Single-camera mode only.
 * @param rotate_clockwise Sense of the rotation, 1 bit.
 * @param sbg_en Stage on, 1 bit; 0 is stored while camera 1's rectification is off.
 * @param sub_mode_sel Sub-mode, 1 bit; 0 is stored while camera 1's rectification is off.
 * @retval 0 Stored.
 * @retval -2 Rotation in camera mode 1 (prints "stereo mode:  nonsupport rotation !\n" to standard error). The two
 *            rotation values are stored, the others are unchanged.
 */
VQ3900_API int32_t set_rectify_sbg2r_config(int8_t rotate_90_en, uint8_t rotate_clockwise, uint8_t sbg_en,
                                            uint8_t sub_mode_sel);

/**
 * @brief Sets a camera's rectification with polynomial distortion correction.
 * @param cam_id Camera 0 or 1; in camera mode 0 camera 1 is set whatever is given.
 * @param[in] new_intrinsic Intrinsics and output size of the rectified camera.
 * @param[in] distortion 8 values k1, k2, k3, k4, k5, k6, p1, p2; k1, k2, k3, p1 and p2 are used.
 * @param[in] rotation 9 values, row-major: rotation from the camera into the rectified camera.
 * @param[in] intrinsic fx, fy, cx, cy of the unrectified camera in pixels.
 * @retval 0 Stored.
 * @retval -2 A pointer is null, or @p cam_id is above 1 in a camera mode other than 0; nothing changes.
 */
VQ3900_API int32_t set_rectify_params_brown(uint32_t cam_id, const RectifyIntrinsic* new_intrinsic,
                                            const float* distortion, const float* rotation, const float* intrinsic);

/**
 * @brief Sets a camera's rectification with a sampled displacement grid.
 *
 * The grid is copied; the caller keeps its own. A null array is kept as missing: the conversion refuses it.
 * @param cam_id Camera 0 or 1; in camera mode 0 camera 1 is set whatever is given.
 * @param[in] new_intrinsic Intrinsics and output size of the rectified camera.
 * @param[in] lut Grid; width and height must be multiples of 4 when it is converted.
 * @param[in] rotation 9 values, row-major: rotation from the camera into the rectified camera.
 * @param[in] intrinsic fx, fy, cx, cy of the unrectified camera in pixels.
 * @retval 0 Stored.
 * @retval -2 A pointer is null or @p cam_id is above 1 in a camera mode other than 0, and nothing changes; or the
 *            sample rate is below 3 (prints "sample_rate_bit >=3 ! \n" to standard error) or there is no memory, and
 *            intrinsics and matrix are stored.
 */
VQ3900_API int32_t set_rectify_params_map(uint32_t cam_id, const RectifyIntrinsic* new_intrinsic,
                                          const RectifyLutInfo* lut, const float* rotation, const float* intrinsic);

/** @brief Converts the control flags to the rectification control table. @retval 0 Converted. */
VQ3900_API int32_t convert_rectify_control_float_to_register(void);

/**
 * @brief Converts the cameras' parameters to their tables.
 *
 * Camera mode 0: camera 1's parameters go into both tables, its grid into camera 0's LUT information table and the
 * sections A and B at camera 0's addresses. Other modes: each camera's into its own, camera 1 first. A grid that was
 * converted is released: converting again needs a new one. The conversion of a grid prints "convert lut_dx from float
 * to register \n", "convert lut_dy from float to register \n" and "convert lut_dx and lut_dy end \n" to standard
 * output.
 * @retval 0 Converted.
 * @retval -2 Camera mode 0 and camera 1's parameters were never set, or another mode and neither camera's were (prints
 *            "need to set rectify params! \n" to standard error); nothing changes. Or a grid is missing (prints
 *            "cam_id= %d, dx,dy id null!\n" to standard error), its size is no multiple of 4 ("lut width and height
 *            must be multiples of 4! \n"), or there is no memory; then "convert_rectify_lut_float_to_register
 *            error!,camera id = %d \n" goes to standard output, and what comes before the grid is converted.
 * @retval 4096 A parameter does not fit its register. The encoder printed which, and
 *              "convert_rectify_commom_float_to_register error!,camera id = %d \n" or
 *              "convert_rectify_kk_float_to_register error!,camera id = %d \n" or
 *              "convert_rectify_lut_float_to_register error!,camera id = %d \n" goes to standard output with the camera
 *              whose parameters were converted. Registers before it are converted, the others are unchanged.
 */
VQ3900_API int32_t convert_rectify_params_to_register_elements(void);

/**
 * @brief Converts the rectification tables to the parameters and flags.
 *
 * Other modes than 0: camera 1's block, then camera 0's; flags that both share end up as camera 0's. The matrix entries
 * 0, 4 and 8 and the intrinsics are decoded as unsigned numbers. Of the control flags the enables of the block's
 * camera, the LUT and kk switches and start_rows come back, and with camera 1's block the sbg2r bits; the common flag
 * does not.
 * @param cam_select Camera mode 0: true decodes camera 1's block, false camera 0's, either into camera 1's record.
 * @retval 0 Converted.
 */
VQ3900_API int32_t convert_rectify_registers_to_float(bool cam_select);

/**
 * @brief Answers the number of samples of the grid that was given last, of either camera.
 * @param[out] out Receives lut_width x lut_height.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t de_get_lut_len(uint32_t* out);

/**
 * @brief Copies the descriptor of a camera's grid.
 * @param cam_id 1 selects camera 1, any other value camera 0.
 * @param[out] out Receives it; the two array pointers are null.
 * @retval 0 Copied.
 * @retval -2 @p out is null.
 */
VQ3900_API int32_t de_get_rectify_lut_params_float(int32_t cam_id, RectifyLutInfo* out);

/**
 * @brief Hands out the LUT sections of the last conversion and releases them.
 *
 * A word is a displacement with 24 bits and 24 fraction bits; the words come in tiles of 4 x 4 samples, tile row by
 * tile row. Sections that were never prepared, or handed out before, have address and count 0 and no words.
 * @param[in,out] out @p section_num sections in the order A, B (camera 1: dx, dy), C, D (camera 0). The caller sets
 *                `data` of each to an array of de_get_lut_len() words, which are all written.
 * @param section_num 2 or 4.
 * @retval 0 Handed out.
 * @retval -2 Another number (prints "start_rows_reg_section_num != 2 ! \n" to standard error), or @p out or an array
 *            that is to be written is null; nothing changes.
 */
VQ3900_API int32_t de_copy_rectify_lut_register_section(LutSection* out, uint8_t section_num);

/**
 * @brief Copies enables, rectified intrinsics and control settings.
 * @param[out] params Receives the first record.
 * @param[out] ctrl Receives the second.
 * @retval 0 Copied.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t de_copy_rectify_params(DeRectifyParams_S* params, DeRectifyCtrlParams_S* ctrl);

/**
 * @brief Stores enables, rectified intrinsics and control settings; nothing is checked.
 * @param[in] params First record; each enable sets both control bits of its camera.
 * @param[in] ctrl Second record.
 * @retval 0 Stored.
 * @retval -2 A pointer is null.
 */
VQ3900_API int32_t de_update_rectify_params(const DeRectifyParams_S* params, const DeRectifyCtrlParams_S* ctrl);

/** @} */

/**
 * @defgroup configuration Depth-engine configuration
 *
 * An INI text with the sections mode, basic, disparity, extend_chop, gpm and scheme describes how the engine is to run.
 * Loading it fills the library's configuration; applying it hands every value to the setters above; the set entry
 * points then write it to the device. docs/configuration.md lists every key.
 *
 * @code{.c}
 * unsigned int version = 0;
 * dpu_mode mode;
 * if (load_de_input_configs("stereo_1280x800.ini") != 0 || set_depth_engine_config() != 0) return;
 * de_copy_dpu_mode_config(&mode, &version);
 * printf("%.16s, version 0x%08X, %ux%u\n", mode.dpu_desc, version, mode.in_ir_res[0], mode.in_ir_res[1]);
 * @endcode
 * @{
 */

/**
 * @brief Loads a depth-engine configuration file.
 *
 * A section without a key counts as missing; without a section scheme the scheme is zero. A load that fails with -1,
 * with -6 or at the grammar changes nothing. Any other failure leaves the sections before it loaded and the failing one
 * up to the failing key (extend_chop not at all); the sections basic to gpm are cleared together once mode is read,
 * scheme once gpm is read.
 * @param path File path, in the encoding of the C library's fopen.
 * @retval 0 Loaded; or the file has no section mode, and nothing changes: an earlier configuration stays loaded.
 * @retval -1 The file cannot be opened (prints "Cannot open file", the path and a line end to standard error).
 * @retval -5 The text breaks the INI grammar, a value is absent or not of its key's type or range, or there is no
 *            memory. Nothing is printed; `vq3900-tool check` says what and where.
 * @retval -6 One of basic, disparity, extend_chop, gpm is missing (prints "%s section not found!\n").
 * @retval -7 Section mode: a list of the wrong length, or a description longer than 16 bytes.
 * @retval -8 Section basic: a depth unit that is none of the five.
 * @retval -9 Section disparity: a list of the wrong length.
 * @retval -10 Section extend_chop: a list of the wrong length.
 * @retval -11 Section gpm: a list of the wrong length.
 * @retval -12 Section scheme: d2d_params_unit without d2d_params_unit_in_R_en.
 *
 * -7 to -12 print to standard error one of "string to arrary %s error\n", "%s is longer than 16 bytes\n",
 * "depth_unit parse error\n", "Field %s not found in section %s\n".
 */
VQ3900_API int32_t load_de_input_configs(const char* path);

/**
 * @brief Hands the loaded configuration to the setters of all blocks, in a fixed order.
 *
 * Camera mode; upsampling; input resolution; rectification status, sbg2r stage and distortion type; D2C configuration;
 * depth unit; hardware D2D; prefilter; extend-chop; matcher; global points. At last ref_dist of the scheme becomes 0 in
 * camera mode 1. The setters print their own texts; a prefilter window or a distortion type that is refused does not
 * end the call.
 * @retval 0 Applied.
 * @retval -1 The camera mode was refused (prints "set_camera_mode error!\n" to standard output).
 * @retval -2 The rectification status was refused ("set_rectify_status error!\n").
 * @retval -3 The sbg2r stage was refused ("set_rectify_sbg2r_config error!\n").
 * @retval -4 The D2C configuration was refused ("set_d2c_config_params error!\n"); does not occur.
 * @retval -5 Extend-chop was refused, as before any load ("set_extend_chop_params error!\n").
 */
VQ3900_API int32_t set_depth_engine_config(void);

/**
 * @brief Copies the mode record of the loaded configuration.
 * @param[out] out Receives the record.
 * @param[in,out] version Receives the configuration's version unless that is 0. The version packs the first characters
 *                of its dot-separated parts: "1.2.3.4" is 0x31323334.
 * @retval 0 Copied.
 * @retval -2 A pointer is null.
 */
VQ3900_API DRIVER_HELPER_ERRNO de_copy_dpu_mode_config(dpu_mode* out, unsigned int* version);

/**
 * @brief Copies the scheme record of the loaded configuration.
 * @param[out] out Receives the record. Null: nothing happens.
 */
VQ3900_API void get_dpu_scheme_config(dpu_scheme_config* out);

/** @} */

/**
 * @defgroup groups Configuration groups
 *
 * An INI text with the number of groups (`num`) and a version in section basic, and the groups in the sections group1,
 * group2, ...: depth-to-colour output configurations, or automatic-exposure settings of the infrared pre-processing.
 * docs/configuration.md lists the keys.
 *
 * @code{.c}
 * d2c_cfg_item* items;
 * int count;
 * unsigned int version = 0;
 * if (load_d2c_configs("d2c_groups.ini") != 0) return;
 * de_get_d2c_config(&items, &count, &version);       // in C++: de_get_d2c_config(items, count, version)
 * for (int i = 0; i < count; ++i) printf("%.16s\n", items[i].desc);
 * @endcode
 * @{
 */

/** @brief An output parameter: a reference in C++, a pointer in C. The call is the same. */
#if defined(__cplusplus) && !defined(VQ3900_BUILDING_LIBRARY)
#define VQ3900_OUT(type) type&
#else
#define VQ3900_OUT(type) type*
#endif

/**
 * @brief Loads depth-to-colour groups, at most 100.
 *
 * Number and version are stored as they are read, each group once it is complete: a failed load leaves the number of
 * its file and the groups before the failure. Groups beyond the number keep earlier contents.
 * @param path File path, in the encoding of the C library's fopen.
 * @retval 0 Loaded.
 * @retval -1 The file cannot be opened (prints "Cannot open file", the path and a line end to standard error), or one
 *            of these goes there: "Field %s not found in section %s\n" (a required key is absent), "Number of d2c
 *            cofiguration not supported\n" (above 100 or negative), "check section %s error\n" (a group is missing),
 *            "string to arrary %s error\n" (a list of the wrong length), "desc is longer than 16 bytes\n".
 * @retval -5 The text breaks the INI grammar, a value is not of its key's type or range, or there is no memory. Nothing
 *            is printed.
 */
VQ3900_API int32_t load_d2c_configs(const char* path);

/**
 * @brief Hands out the loaded depth-to-colour groups.
 *
 * In C the three parameters are pointers; if one of them is null, nothing happens.
 * @param[out] items Receives the library's own array. It belongs to the library and changes with the next load.
 * @param[out] count Receives the number of groups.
 * @param[in,out] version Receives the file's version unless that is 0; packed as by de_copy_dpu_mode_config().
 */
VQ3900_API void de_get_d2c_config(VQ3900_OUT(d2c_cfg_item*) items, VQ3900_OUT(int) count,
                                  VQ3900_OUT(unsigned int) version);

/**
 * @brief Loads infrared pre-processing groups, at most 10.
 *
 * As load_d2c_configs(), with the same texts; the description's key is `dpu_desc`.
 * @param path File path, in the encoding of the C library's fopen.
 * @retval 0 Loaded.
 * @retval -1 See load_d2c_configs(); the text for a number above 10 names D2C as well.
 * @retval -5 See load_d2c_configs().
 */
VQ3900_API int32_t load_ir_pre_configs(const char* path);

/**
 * @brief Hands out the loaded infrared pre-processing groups. See de_get_d2c_config().
 * @param[out] items Receives the library's own array.
 * @param[out] count Receives the number of groups.
 * @param[in,out] version Receives the file's version unless that is 0.
 */
VQ3900_API void de_get_ir_pre_config(VQ3900_OUT(ir_pre_cfg_item*) items, VQ3900_OUT(int) count,
                                     VQ3900_OUT(unsigned int) version);

/** @} */

/**
 * @defgroup config_images Configuration images and the parameter snapshot
 *
 * Files that the device boots from, and one that a host keeps for itself. docs/formats.md lays them out byte by byte.
 *
 * @code{.c}
 * const char* const configurations[] = {"stereo_1280x800.ini", "mono_640x480.ini"};
 * de_config_flash_input input = {configurations, 2, "d2c_groups.ini", "ir_pre_groups.ini"};
 * if (!gen_depth_engine_config_flash_file_de(&input, "config.bin")) return;
 * // A failure while building also answers true and leaves config.bin empty: look at its size.
 * @endcode
 * @{
 */

/**
 * @brief Writes the 928-byte register file from the records as they stand.
 *
 * Converts the records of basic, D2C, D2D, prefilter, extend-chop, matcher and global points first; their tables
 * change. Depth constants (the D2D table) are written as last converted.
 * @param path File to create or replace.
 * @retval true Written. A full disk goes unseen.
 * @retval false The file cannot be created (prints "error: create or open file failed, path=%s \n" to standard output;
 *         nothing changes), or a converter failed (the file is empty); the converters do not fail.
 */
VQ3900_API bool gen_depth_engine_config_flash_file(const char* path);

/**
 * @brief Builds the 16384-byte configuration image: depth-engine configurations, D2C groups, IR-pre groups.
 *
 * Every configuration is loaded and applied in turn: afterwards the records hold the last one, or the one that failed.
 * Without configurations the first 8192 bytes are 0xFF. A section carries the largest version of its files, or the time
 * of building when that is 0. Each digest prints the ten trace lines of the digest ("Md5_gen step 1!\n" to
 * "Md5_gen end!\n") to standard output.
 *
 * Two traps:
 * - A configuration file without a section mode loads as nothing, with success: its item repeats the one before it.
 * - An item holds the register tables as they stand when its configuration is applied. What a configuration does not
 *   set comes from what was set before it, in this process or by the files before it: correction flags, which are only
 *   ever set, the expand width outside recovery mode 2, the two stereo paths of upsampling in single-camera mode, bits
 *   outside the masks that were read from a device. Where every byte counts, build in a fresh process, always with the
 *   same files in the same order.
 * @param[in] input What to build from; not changed.
 * @param path File to create or replace.
 * @retval true The file was created. **It is empty when building failed**, which one of these on standard output says:
 *         "error: convert dpu configs failed \n" (after "error: load_input_configs, path=%s \n" or
 *         "error: set_depth_engine_config, path=%s \n", or for more than 8 configurations), "error: convert d2c configs
 *         failed \n" (after "error: load_input_configs, path=%s \n", or for more than 56 groups), "error: convert
 *         ir_pre_isp configs failed \n" (after "error: load_input_configs, path=%s \n"). A full disk goes unseen.
 * @retval false The file cannot be created (prints "error: create or open file failed, path=%s \n" to standard output),
 *         @p input is null, or there is no memory.
 */
VQ3900_API bool gen_depth_engine_config_flash_file_de(de_config_flash_input* input, const char* path);

/**
 * @brief Saves the records of basic, prefilter, extend-chop, matcher and global points: 462 bytes.
 * @param path File to create or replace.
 * @retval 0 Saved. A full disk goes unseen.
 * @retval -2 The file cannot be created (prints "error: create or open file failed, path=%s \n" to standard output).
 */
VQ3900_API int32_t de_export_config_params_to_file(const char* path);

/**
 * @brief Restores the records that de_export_config_params_to_file() saved, whole and unchecked.
 *
 * Nothing is converted or written to the device; register tables, image sizes and the other blocks stay.
 * @param path File to read.
 * @retval 0 Restored.
 * @retval -2 The file cannot be read (prints "error: read file failed, path=%s \n" to standard output) or is not 462
 *            bytes long ("error: file size\n"), or there is no memory (nothing is printed). No record changes.
 */
VQ3900_API int32_t de_import_config_params_from_file(const char* path);

/** @} */

/**
 * @defgroup calib_input Calibration input configuration
 *
 * An INI text with the sections basic, rectify, d2d and d2c says how a calibration is to be turned into settings.
 * docs/configuration.md lists the keys.
 *
 * @code{.c}
 * if (load_input_configs_path("calib_input.ini") != 0) return;
 * set_calib_temp_info(31.5f, 32.0f, 35.0f);
 * @endcode
 * @{
 */

/**
 * @brief Loads a calibration input configuration from a file.
 *
 * A section without a key counts as missing. A failed load leaves what it read before the failure; one that fails with
 * -1 or 4096, for a missing section or at the grammar changes nothing.
 * @param path File path of at most 256 bytes, in the encoding of the C library's fopen.
 * @retval 0 Loaded.
 * @retval -1 The file cannot be opened (prints "Cannot open file ", the path and a line end to standard error).
 * @retval -2 A section is missing (prints "basic section not found!\n" and so on to standard error) or a required key
 *            is absent ("Field \"baseline\" not found in section \"basic\"\n" and so on).
 * @retval -3 The text breaks the INI grammar, a value is not of its key's type or range, or there is no memory (prints
 *            "Caught an exception: ", the reason and a line end to standard output).
 * @retval 4096 The path is too long (prints "Error: File name exceeds the maximum length.\n" to standard error).
 */
VQ3900_API int32_t load_input_configs_path(const char* path);

/**
 * @brief Loads a calibration input configuration from its text.
 * @param content The whole INI text, terminated.
 * @retval 0,-3 See load_input_configs_path().
 * @retval -2 See there; or @p content is null (prints "Error: config param is invalid.\n" to standard error).
 */
VQ3900_API int32_t load_input_configs_content(const char* content);

/**
 * @brief Answers whether the camera type (cam_type) has a mode of its own.
 * @param[out] out Receives 1 for type 2 or 3, else 0. Null: nothing happens.
 */
VQ3900_API void get_cam_mode(unsigned char* out);
/** @brief Answers the setting d2d_params_unit_in_R_en. @param[out] out Receives its low byte. Null: nothing happens. */
VQ3900_API void get_d2d_params_unit_in_R_en(unsigned char* out);
/** @brief Answers whether undistortion LUTs are wanted. @return True for distort_type 1 and 2. */
VQ3900_API bool get_lut_enable_status(void);
/** @brief Answers the setting mipi_channel_status. @param[out] out Receives it. Null: nothing happens. */
VQ3900_API void get_mipi_channel_status(unsigned char* out);

/** @} */

/**
 * @defgroup calibration Calibration
 *
 * From the calibration of two IR cameras and a colour camera to rectification, undistortion LUTs, D2C and D2D settings.
 * docs/conventions.md has frames, signs and units.
 *
 * @code{.c}
 * static void on_step(const char* text, void* user) { fprintf(user, "%s\n", text); }
 *
 * int calibrate(CalibrateParamsMulti calibration) {
 *   DeStereoRectifyParams_S rectification;
 *   DeCameraD2CParams_S d2c;
 *   DepthCalcParams_S depth;
 *   DeLogCallback* log = de_log_callback_create(on_step, stdout);
 *   int code = load_input_configs_path("calib_input.ini");
 *   set_calib_temp_info(31.5f, 32.0f, 35.0f);
 *   if (code == 0) {
 *     code = align_ir_ir_rgb_params_to_register_converter(calibration, &rectification, &d2c, &depth, log);
 *   }
 *   de_log_callback_destroy(log);
 *   return code;
 * }
 * @endcode
 * @{
 */

#ifdef __cplusplus
/** @brief Receives the step messages of a conversion, one text a call, valid during the call. Opaque in C. */
using DeLogCallback = std::function<void(const char*)>;
#else
typedef struct DeLogCallback DeLogCallback;
#endif

/**
 * @brief Makes a log callback of a function, for callers that are not C++.
 * @param fn Called with every text and @p user.
 * @param user Passed on as it is; may be null. The caller owns it and keeps it until the callback is destroyed.
 * @return The callback, to be destroyed by de_log_callback_destroy(); null when @p fn is null or there is no memory.
 */
VQ3900_API DeLogCallback* de_log_callback_create(void (*fn)(const char* text, void* user), void* user);

/** @brief Destroys a callback of de_log_callback_create(). @param callback Callback, or null: then nothing happens. */
VQ3900_API void de_log_callback_destroy(DeLogCallback* callback);

/**
 * @brief Sets the temperatures at calibration; no conversion runs without them.
 *
 * They go into records and images as they are given, in the unit of the host's sensors; nothing is computed from them.
 * @param left Left IR camera; at least 1, which the converters check.
 * @param right Right IR camera; the same.
 * @param ldm Laser; the same.
 */
VQ3900_API void set_calib_temp_info(float left, float right, float ldm);

/**
 * @brief Puts temperatures and compensation coefficients into a rectification record that is zero otherwise.
 * @param path Not used.
 * @param[out] rect Zeroed and, unless a temperature is missing, filled.
 * @param[out] d2c Not used.
 * @param[out] depth Not used.
 * @retval 0 Done.
 * @retval -2 A temperature is below 1 or NaN (prints "invalid calibration temperature,left:%f,right:%f,ldm:%f" without
 *            a line end to standard output; @p rect is zero), or @p rect is null.
 */
VQ3900_API int32_t cams_calibration_params_to_register_converter(const char* path, DeStereoRectifyParams_S* rect,
                                                                 DeCameraD2CParams_S* d2c, DepthCalcParams_S* depth);

/**
 * @brief Turns a calibration into settings: derives rectification, LUTs and D2C, sets the modules, converts their
 * tables.
 *
 * The calibration input configuration must be loaded. It scales and chops both IR cameras, and its baseline is replaced
 * by the length of T with the sign of its largest component. The camera mode becomes stereo. Corrections of an earlier
 * calibration are dropped before the new ones are set.
 *
 * Each step ends with a message, to standard error with a line end and to @p log without one: "calibration distortion
 * model: %d", then for each of the steps below "... failed!" or "... successful!".
 * @param calib The calibration, by value.
 * @param[out] rect Receives the rectification. On a failure it is zero but for what was derived by then.
 * @param[out] d2c Receives the D2C record when the derivation succeeds; null skips the colour camera.
 * @param[out] depth Receives the constants of the depth calculation when the derivation succeeds.
 * @param log Receives the messages. Null or empty: std::bad_function_call is raised at the first message. What it
 *            throws passes through to the caller; the library stays usable.
 * @retval 0 Everything is derived, set and converted.
 * @retval -2 A temperature is below 1 or NaN (see above; @p log receives "invalid calibration temperature"); or the
 *            derivation refused: a value that is not finite, a focal length of an IR camera that is not positive, an
 *            image size outside 1 to 65535, R without a nearest rotation, a corner that cannot be undistorted or lies
 *            behind the virtual image plane, a clipped size outside 0 to 65535, or the configured
 *            baseline points the other way (prints "Baseline sign check error.\n" to standard output) - the message is
 *            "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() failed!"; or a setter refused
 *            ("set_rectify_d2c_params() failed!", and its own text), or @p rect or @p depth is null, or there is no
 *            memory.
 * @retval -3 A LUT could not be generated (prints the reason to standard error and "gen left camera undistortion lut
 *            error.\n" or "gen right camera undistortion lut error.\n" to standard output; the derivation's message).
 * @retval 4096 A value did not fit its register: "convert_d2d_params_to_register_elements() failed!",
 *              "convert_rectify_float_to_register_elements() failed!" or "convert_d2c_params_float_to_register()
 *              failed!". Registers of the steps before are converted. The encoder printed which value.
 */
VQ3900_API int32_t align_ir_ir_rgb_params_to_register_converter(CalibrateParamsMulti calib,
                                                                DeStereoRectifyParams_S* rect, DeCameraD2CParams_S* d2c,
                                                                DepthCalcParams_S* depth, DeLogCallback* log);

/**
 * @brief Answers the rectified (virtual) intrinsics of the reference camera as last derived.
 * @param[out] out Receives them; zeros before the first derivation. Null: nothing happens.
 */
VQ3900_API void get_virtual_intrinsic_of_stereo_debug(DeCameraIntrinsic_S* out);

/**
 * @brief Hands over optimized D2D entries; they are copied and released when an image has been built.
 * @param[in] items @p count entries; may be null when @p count is 0.
 * @param count Number of entries; 0 empties the table.
 * @retval 0 Stored.
 * @retval -2 @p count is negative, @p items is null and @p count is not 0, or there is no memory; the table is empty.
 */
VQ3900_API int32_t set_optimized_d2d_params(DeDepthConfig_S* items, int32_t count);

/** @brief Releases the optimized D2D entries. @retval 0 Always, also when there are none. */
VQ3900_API int32_t release_optimized_d2d_params(void);

/** @} */

/**
 * @defgroup calib_images Calibration images
 *
 * The flash image from which the device takes its calibration, its LUT file and its factory-align section, built from
 * configurations that pair a calibration with a calibration input configuration; and changes to images that are there.
 * docs/formats.md lays them out byte by byte. Rectifications, D2C and D2D records that several configurations share are
 * stored once. Every digest prints ten trace lines to standard output ("Md5_gen step 1!\n" to "Md5_gen end!\n").
 *
 * @code{.c}
 * // One configuration, from a record and a file, into memory.
 * int build(const DeCalibRecord_S* record, DeLogCallback* log) {
 *   const char* configurations[] = {"calib_input.ini"};
 *   const DeCalibRecord_S* records[] = {record};
 *   CalibFlashInput_S input = {NULL, 0, configurations, 1, records, 1, NULL};
 *   uint32_t image_size = 0, lut_size = 0;
 *   int code;
 *   set_calib_temp(31.5f, 32.0f, 35.0f);
 *   get_file_buffer_size(&input, &image_size);
 *   get_lut_section_buffer_size(&input, &lut_size, log);
 *   uint32_t* image = malloc(image_size);
 *   uint8_t* lut = malloc(lut_size);
 *   code = gen_calib_flash_param_de(&input, image, log, image_size, lut, (int)lut_size, 0, NULL, 0);
 *   // ... write image_size bytes to 0xB0000 and, when it is above 4096, lut_size bytes to 0x160000 of the flash
 *   free(lut);
 *   free(image);
 *   return code;
 * }
 * @endcode
 * @{
 */

/** @brief Most alignment records that are held. */
#define VQ3900_ALIGNMENT_RECORDS 4

/**
 * @brief Sets the serial number that the section headers of images made from now on carry.
 * @param word0,word1,word2 Its three words. A null pointer: nothing changes.
 */
VQ3900_API void set_sn(const uint64_t* word0, const uint64_t* word1, const uint64_t* word2);

/** @brief The same as set_calib_temp_info(). @param left,right,ldm Temperatures at calibration. */
VQ3900_API void set_calib_temp(float left, float right, float ldm);

/**
 * @brief Hands over the records of the alignment section; they are copied and held until they are replaced or released.
 * @param records @p count records; may be null when @p count is 0.
 * @param count 0 to 4; 0 releases what is held.
 * @retval 0 Held.
 * @retval -2 @p count is out of range, @p records is null and @p count is not 0, or there is no memory; what was held
 *            stays.
 */
VQ3900_API int32_t de_set_alignment_records(const DeAlignRecord_S* records, int32_t count);

/** @brief Releases the alignment records. @retval 0 Always, also when there are none. */
VQ3900_API int32_t de_release_alignment_records(void);

/**
 * @brief Builds a calibration image from files, and beside it, where they are wanted, a LUT file and a factory-align
 * file.
 *
 * Each configuration's calibration input configuration is loaded; cams_calibration_params_to_register_converter() takes
 * the temperatures. Nothing is derived from the calibration-parameter files: the register tables, LUT descriptors and
 * prepared LUT sections go into the image as they stand, and what no converter filled is zero.
 *
 * Side files are named after @p path without its last four characters: "..._lut_section.bin", when a configuration
 * wants a LUT, and "..._factory_align_section.bin", when the first calibration-parameter file ends in ".bin": it holds
 * each distinct calibration-parameter file. A side file of an earlier build that this one does not make stays. When a
 * build fails, the files that it created by then are empty; when a disk is full, what fits is on it. Optimized D2D
 * entries are released on every exit.
 * @param input Configurations: @c calib_params_files and @c config_files.
 * @param path File to create or replace. Null cannot be created.
 * @retval 0 Built.
 * @retval -1 A file cannot be created or read, or a disk is full (prints "error: create or open file failed, path=%s
 *            \n" to standard output).
 * @retval -2 @p input or an array that is not empty is null: nothing is created. Or there is no memory.
 * @retval -5 A section has no room for another record ("error: too many records, section=%s\n" with its name, to
 *            standard output), or calibration-parameter files differ in size ("error: factory align file size differs,
 *            path=%s \n").
 * @retval -6 The numbers of files differ (prints "error: params error, calib_params_file_num != config_file_num\n" to
 *            standard output; nothing is created).
 * @return Otherwise the result of load_input_configs_path() (after "error: load_input_configs, path=%s \n") or of the
 *         converter (after "error: cams_calibration_params_to_register_converter for \"%s\"\n"), to standard output.
 */
VQ3900_API int32_t gen_calib_flash_file_de(const CalibFlashInput_S* input, const char* path);

/**
 * @brief Answers the size of the main image.
 * @param input Only its alignment switch is read. Null: nothing happens.
 * @param[out] size Receives 24576 with the alignment section (records are held and the switch is on), else 20480 bytes.
 */
VQ3900_API void get_file_buffer_size(const CalibFlashInput_S* input, uint32_t* size);

/**
 * @brief Answers the size of the LUT file, by deriving every configuration and its LUT.
 *
 * Loads, sets and converts like gen_calib_flash_param_de(), with the same messages for the two kinds of entries, and
 * "success: set_calibrate_params_multi for config number= %d\n" and "success:
 * align_ir_ir_rgb_params_to_register_converter for config number= %d\n" to standard output, "success:
 * set_calibrate_params_multi successful\n" and "success: align_ir_ir_rgb_params_to_register_converter successful\n" to
 * @p callback. On a failure the reason goes to standard output ("error: load_input_configs, config_num=%d, error
 * code=%d\n", "error: set_calibrate_params_multi for config number= %d, error code=%d\n", "error:
 * align_ir_ir_rgb_params_to_register_converter for config number= %d, error code=%d\n", or one of the builder's) and
 * @p size is not written.
 * @param input Configurations, as for the builder. Null: nothing happens.
 * @param[out] size Receives 4096 when no configuration wants a LUT, else 4096 + 48 + the bytes of the LUTs.
 * @param callback Receives the messages. Null or empty: std::bad_function_call is raised at the first one.
 */
VQ3900_API void get_lut_section_buffer_size(const CalibFlashInput_S* input, uint32_t* size, DeLogCallback* callback);

/**
 * @brief Builds a calibration image in the caller's memory, from calibration records.
 *
 * An entry of @c config_files that names a file is loaded as one ("input config params is file path\n"), any other is
 * taken for an INI text ("input config params is file content\n"). Buffers are filled with 0xFF over their size first,
 * the LUT buffer when a LUT is first wanted; what was built is copied in at the end, so a failure leaves 0xFF. Messages
 * go to standard output and to @p callback, but for the trace of digests and "input params is invalid!\n" (a camera of
 * the factory-align section without an image size), which go to standard output alone. Optimized D2D entries are
 * released on every exit.
 *
 * The D2D register table is cleared first, so that no image depends on the one before; afterwards records and tables
 * hold the last configuration, or what the failing one got to.
 *
 * What makes two configurations share a record: equal rectified size and MIPI channel for rectifications and their LUTs
 * (size and start for the words of LUTs), not equal calibrations. All LUT sections of a configuration have
 * de_get_lut_len() words, that is as many as the right camera's: give both IR cameras one size.
 * @param input Configurations: @c config_files and @c calib_records.
 * @param file_buffer Receives the main image, see get_file_buffer_size().
 * @param callback Receives the messages, each with its line end, and the step messages of the conversion, without. Null
 *                 or empty: std::bad_function_call is raised at the first one; what it throws passes through.
 * @param file_buffer_size Bytes of @p file_buffer.
 * @param lut_buffer Receives the LUT file, see get_lut_section_buffer_size(); may be null when no configuration wants
 *                   a LUT.
 * @param lut_buffer_size Bytes of @p lut_buffer.
 * @param timestamp Time of the section headers in seconds since 1970-01-01 UTC; below 1 the current time. The
 *                  factory-align section always has the current time.
 * @param factory_align_buffer Receives the factory-align section: 60 bytes and 6288 a configuration; null for none.
 * @param factory_align_buffer_size Bytes of @p factory_align_buffer.
 * @retval 0 Built.
 * @retval -2 @p input, @p file_buffer or an array that is not empty is null; @p file_buffer or @p factory_align_buffer
 *            is too small ("error: file buffer too small, size=%lld, needed=%u\n", "error: factory align buffer too
 *            small, size=%d, needed=%u\n"; no buffer is touched); or there is no memory. Also a calibration record that
 *            was refused: null, IR sizes outside 1 to 65535, focal lengths that are not finite and positive, R or T not
 *            finite ("error: set_calibrate_params_multi for config number= %d, error code=%d\n", to the callback
 *            "error: set_calibrate_params_multi failed\n").
 * @retval -4 A LUT is wanted and @p lut_buffer is null ("error: lut_section_buffer not initialized\n") or too small
 *            ("error: lut_section_buffer too small, size=%d, needed=%u\n").
 * @retval -5 A section has no room for another record ("error: too many records, section=%s\n").
 * @retval -6 The numbers differ ("error: calib params nums not match the config file num\n").
 * @return Otherwise the loader's result ("error: load_input_configs, config_num=%d,error_code=%d \n", to the callback
 *         "error: load_input_configs failed\n") or that of align_ir_ir_rgb_params_to_register_converter() ("error:
 *         align_ir_ir_rgb_params_to_register_converter for config number=%d, error code=%d\n", to the callback "error:
 *         align_ir_ir_rgb_params_to_register_converter failed\n"). Configurations count from 0.
 */
VQ3900_API int32_t gen_calib_flash_param_de(const CalibFlashInput_S* input, uint32_t* file_buffer,
                                            DeLogCallback* callback, int64_t file_buffer_size, void* lut_buffer,
                                            int lut_buffer_size, int64_t timestamp, void* factory_align_buffer,
                                            int factory_align_buffer_size);

/**
 * @brief Sets the baseline in the D2D section of an image.
 *
 * Rewrites the baseline and the register value that depends on it, the section's time and its CRC-32; what follows the
 * last record becomes 0xFF. The destination receives **the 4096-byte D2D section alone**, also when the source is a
 * whole image. Prints "Original baseline: %f\n" for every record that changes. The destination is opened when
 * everything else is done: no other failure touches it.
 * @param src_path An image of 20480 or 24576 bytes, or a D2D section of 4096.
 * @param baseline Signed baseline in depth units.
 * @param dst_path File to create or replace; may be the source.
 * @param index Record to change, from 0; below 0 all. A record that is not there: only time and CRC-32 change.
 * @retval 0 Written.
 * @retval -1 The source cannot be read or the destination not be written (prints "Open file error: %s\n" with its
 *            path).
 * @retval -2 The source has another size (prints "Unknown file size.", without a line end), or its section header does
 *            not fit its section ("invalid section header\n"), or there is no memory.
 * @retval 4096 The register value overflows ("Convert to fixed point error\n"). All of these go to standard output.
 */
VQ3900_API int32_t update_baseline_de(const char* src_path, float baseline, const char* dst_path, int index);

/**
 * @brief Sets the baseline of every D2D record from a table by focal length.
 *
 * Like update_baseline_de(), for every record: the first pair whose f is less than 1.0 away from the record's gives the
 * baseline; the record's f stays. Prints "Original baseline: %f , f= %f\n" and "updated baseline: %f , f= %f\n" for
 * each.
 * @param src_path An image of 20480 or 24576 bytes, or a D2D section of 4096.
 * @param fb_set Pairs of focal length in pixels and baseline in depth units, @p fb_count x 2.
 * @param fb_count Number of pairs.
 * @param dst_path File to create or replace with the D2D section; may be the source.
 * @retval 0 Written.
 * @retval -1,4096 See update_baseline_de().
 * @retval -2 As there; or @p fb_set is null; or no pair matches a record or there are no pairs ("input fb_set
 *            error\n").
 */
VQ3900_API int32_t update_multi_baseline_de(const char* src_path, const float* fb_set, int fb_count,
                                            const char* dst_path);

/**
 * @brief Sets focal lengths and baselines in the D2C and D2D sections of a whole image.
 *
 * For every pair: the first D2C record whose focal length is less than 6.0 away from the pair's f receives it (both
 * directions), and the first such D2D record receives f and baseline. Of several pairs for one record the last wins.
 * Prints "fx =  %f \n" for every D2C record looked at and "updated  f= %f\n", "Original baseline: %f , f= %f\n" for
 * every D2D record looked at and "updated baseline: %f , f= %f\n". Without pairs only times and CRC-32 change.
 * @param src_path An image of 20480 or 24576 bytes.
 * @param fb_set Pairs of focal length in pixels and baseline in depth units, @p fb_count x 2.
 * @param fb_count Number of pairs.
 * @param dst_path File to create or replace with the whole image; may be the source.
 * @retval 0 Written.
 * @retval -1,4096 See update_baseline_de().
 * @retval -2 As there; or @p fb_set is null; or no record matches a pair ("input fb_set error\n").
 */
VQ3900_API int32_t update_multi_fb_d2c_de(const char* src_path, const float* fb_set, int fb_count,
                                          const char* dst_path);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* VQ3900_DEPTH_ENGINE_H */
