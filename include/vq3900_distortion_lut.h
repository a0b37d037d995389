/**
 * @file vq3900_distortion_lut.h
 * @brief The distortion-LUT library: one camera's distortion as a sampled displacement grid. C++ only.
 *
 * The depth-engine library turns calibrations into displacement grids through these classes. It ships an implementation
 * of its own; the build option VQ3900_DISTORTION_LUT_LIBRARY links another implementation of this header instead. The
 * classes are not exported by the depth-engine library.
 *
 * Use: construct the model, then SetLutConfigParams(), SetImageSize(), SetCameraIntrinsics(), SetDistortionCoeffs(),
 * for the polynomial model SetPolynomialParam(), then Generate() and GetDistortionLut(). Every operation answers 0, or
 * a negative status that GetErrString() puts into words:
 *
 * - -1 "lut sample bit out of range": not 0 to 6
 * - -2 "lut extend ratio out of range": not finite, negative, or above 4
 * - -3 "image size invalid": not 1 to 65535 pixels a side, or not set
 * - -4 "camera intrinsics invalid": not finite, a focal length that is not positive, or not set
 * - -5 "distortion coefficients invalid": null, not finite, not as many as the model has, or not set
 * - -6 "lut grid too large": more than 1020 samples a side
 * - -7 "lut displacement out of range": a displacement does not fit a signed fraction of 24 bits
 * - -8 "lut not generated": nowhere to write to, or no grid
 */
#ifndef VQ3900_DISTORTION_LUT_H
#define VQ3900_DISTORTION_LUT_H

#include <cstdint>
#include <memory>
#include <string>

/** @brief Marks the classes when they come from another library. */
#if !defined(VQ3900_EXTERNAL_DISTORTION_LUT)
#define VQ3900_DISTORTION_LUT_API
#elif defined(_WIN32)
#define VQ3900_DISTORTION_LUT_API __declspec(dllimport)
#else
#define VQ3900_DISTORTION_LUT_API __attribute__((visibility("default")))
#endif

/**
 * @defgroup distortion_lut Distortion LUTs
 *
 * @code{.cpp}
 * const float distortion[8] = {-0.28f, 0.07f, 0, 0, 0, 0, 0.0002f, 0};  // k1 .. k6, p1, p2
 * SampledDistoLUT_s grid;
 * BrownModelLUT model;
 * model.SetLutConfigParams(4, 0, 0.25f, true);  // a sample every 16 pixels, a quarter more than the image
 * model.SetImageSize(1280, 800);
 * model.SetCameraIntrinsics(605, 604, 636, 402);
 * model.SetDistortionCoeffs(distortion, 8);
 * if (model.Generate() != 0 || model.GetDistortionLut(&grid) != 0) {  // says what the setters refused, too
 *   std::fprintf(stderr, "%s\n", model.GetErrString().c_str());
 * }
 * @endcode
 * @{
 */

/** @brief A sampled displacement grid (64 bytes). The arrays belong to the object that generated them. */
struct SampledDistoLUT_s {
  std::int16_t x_start;         /**< First column covered, in pixels; negative left of the image. */
  std::int16_t y_start;         /**< First row covered, in pixels. */
  std::uint8_t sample_rate_bit; /**< The sampling step is 2 to this power, in pixels. */
  double fx;                    /**< Focal length that the grid was sampled with, in pixels, horizontal. */
  double fy;                    /**< The same, vertical. */
  double cx;                    /**< Principal point that the grid was sampled with, in pixels, horizontal. */
  double cy;                    /**< The same, vertical. */
  double* dx;                   /**< Horizontal displacements in focal lengths, grid_width x grid_height, row-major. */
  std::uint16_t grid_width;     /**< Samples a row, a multiple of 4. */
  std::uint16_t grid_height;    /**< Rows of samples, a multiple of 4. */
  double* dy;                   /**< Vertical displacements, the same. */
};

/** @brief The generator without its model. */
class VQ3900_DISTORTION_LUT_API CreateDistortionLUT {
 public:
  virtual ~CreateDistortionLUT();
  CreateDistortionLUT(const CreateDistortionLUT&) = delete;
  CreateDistortionLUT& operator=(const CreateDistortionLUT&) = delete;

  /**
   * @brief Sets the image size.
   * @param width Columns in pixels, 1 to 65535.
   * @param height Rows in pixels, 1 to 65535.
   * @return 0 or -3.
   */
  virtual int SetImageSize(int width, int height);

  /**
   * @brief Sets the pinhole that the grid is sampled with.
   * @param fx,fy Focal lengths in pixels, above 0.
   * @param cx,cy Principal point in pixels; pixel centres lie at whole numbers.
   * @return 0 or -4.
   */
  virtual int SetCameraIntrinsics(float fx, float fy, float cx, float cy);

  /**
   * @brief Sets the model's coefficients.
   * @param coeffs Coefficients in the order of the model; they are copied.
   * @param count Their number, that of the model.
   * @return 0 or -5.
   */
  virtual int SetDistortionCoeffs(const float* coeffs, int count);

  /**
   * @brief Sets the polynomial model's largest radius; the other models ignore it.
   * @param param Radius in focal lengths; not finite or not positive for none.
   * @return 0.
   */
  virtual int SetPolynomialParam(double param);

  /** @brief Samples the grid. @return 0, or -3 to -7. */
  virtual int Generate();

  /**
   * @brief Sets the sampling.
   * @param sample_bit Sampling step as a power of two, 0 to 6.
   * @param mode Kept, without effect.
   * @param extend_ratio How far the grid extends beyond the image: a factor of its size from 1 on, below 1 what is
   *                     added.
   * @param flag Kept, without effect.
   * @return 0, -1 or -2.
   */
  int SetLutConfigParams(int sample_bit, int mode, float extend_ratio, bool flag);

  /**
   * @brief Hands out the grid.
   * @param[out] out Receives it; its arrays are valid until the next Generate() or the object's end.
   * @return 0 or -8.
   */
  int GetDistortionLut(SampledDistoLUT_s* out);

  /** @brief The last failure in words. @return The text; empty before the first. */
  std::string GetErrString();

  /** @brief The version of the implementation. @param[out] text Receives it. */
  static void GetVersionInfo(std::string& text);

 protected:
  struct State; /**< The implementation's own. */
  /** @brief For the models. @param state The implementation's own. */
  explicit CreateDistortionLUT(std::unique_ptr<State> state);

 private:
  std::unique_ptr<State> state_;
};

/** @brief Rational radial and tangential distortion: 8 coefficients k1, k2, k3, k4, k5, k6, p1, p2. */
class VQ3900_DISTORTION_LUT_API BrownModelLUT : public CreateDistortionLUT {
 public:
  BrownModelLUT();
};

/** @brief Equidistant (fisheye) projection: 4 coefficients k1, k2, k3, k4. */
class VQ3900_DISTORTION_LUT_API EquiModelLUT : public CreateDistortionLUT {
 public:
  EquiModelLUT();
};

/** @brief Even radial polynomial: 8 coefficients c1 to c8, and the largest radius. */
class VQ3900_DISTORTION_LUT_API PolynomialModelLUT : public CreateDistortionLUT {
 public:
  PolynomialModelLUT();
};

/** @} */

#endif
