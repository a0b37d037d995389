// The host may set any locale: what the library reads and prints stays that of the "C" locale.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>

#include <string>

#include "config/c_locale.h"
#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/engine_fixture.h"

namespace vq3900::test {
namespace {

class HostLocale : public EngineTest {
 protected:
  HostLocale() {
    setenv("LOCPATH", VQ3900_LOCALE_FOLDER, 1);
    EXPECT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    EXPECT_STREQ(localeconv()->decimal_point, ",");
  }
  ~HostLocale() override { setlocale(LC_ALL, "C"); }
};

template <typename Number>
void expect_converted(const Converted<Number>& converted, Number value, std::size_t length) {
  EXPECT_EQ(converted.value, value);
  EXPECT_EQ(converted.length, length);
  EXPECT_FALSE(converted.out_of_range);
}

TEST_F(HostLocale, ChangesNoNumberThatIsRead) {
  expect_converted(to_float("1.5"), 1.5F, 3);
  expect_converted(to_float("1,5"), 1.0F, 1);
  expect_converted(to_double("-2.25e1"), -22.5, 7);
  expect_converted(to_double("0x1.8p1"), 3.0, 7);
  expect_converted(to_int64("1.000"), std::int64_t{1}, 1);
}

TEST_F(HostLocale, ChangesNoCharacterClass) {
  EXPECT_FALSE(is_space('\xA0'));
  EXPECT_EQ(to_upper('\xE4'), '\xE4');
}

TEST_F(HostLocale, ChangesNoNumberThatIsPrinted) {
  EXPECT_EQ(
      outcome_of([] { return de_float_to_fixed(256.5, 8, 0, "x"); }),
      prints_out(0xFFFFFFFF,
                 "current lut value: 256.50000000000000000000; dingdianhua value: 256.50000000000000000000; m_fp: "
                 "257; return value: 1; max value: 255 \n"
                 "error code 01: value overflow in x \n"));
}

TEST_F(HostLocale, ChangesNoLoadedConfiguration) {
  const TempFile file(DeInputText().text());
  EXPECT_EQ(outcome_of([&] { return load_de_input_configs(file.path()); }), silent_success());
  EXPECT_EQ(engine().input.disparity.sp_coef[0], 0.5);
}

}  // namespace
}  // namespace vq3900::test
