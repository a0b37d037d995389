#include "bytes/md5_gen_api.h"

#include <algorithm>

#include "bytes/md5.h"
#include "platform/diagnostics.h"

namespace vq3900 {

namespace {

// One line a step. They go out whole: an image build would otherwise spend more time printing than digesting.
constexpr const char* kTrace =
    "Md5_gen step 1!\n"
    "Md5_gen step 2!\n"
    "Md5_gen step 3!\n"
    "Md5_gen step 4!\n"
    "start MD5Encode!\n"
    "MD5Encode 1!\n"
    "MD5Encode 2!\n"
    "MD5Encode 3!\n"
    "MD5Encode done!\n"
    "Md5_gen end!\n";

}  // namespace

void Md5_gen(const std::uint8_t* data, std::uint8_t* digest, std::uint32_t length) {
  if (data == nullptr || digest == nullptr || length == 0) return;
  const Md5Digest result = md5({data, length});
  std::ranges::copy(result, digest);
  put_out(kTrace);
}

}  // namespace vq3900
