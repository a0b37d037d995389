#include <optional>
#include <string>

#include "platform/diagnostics.h"
#include "platform/file.h"
#include "regs/snapshot.h"

int32_t de_export_config_params_to_file(const char* path) {
  vq3900::OutputFile file{path};
  if (!file.is_open()) {
    vq3900::print_out("error: create or open file failed, path=%s \n", vq3900::printable(path));
    return VQ3900_ERROR_ARGUMENT;
  }
  vq3900::Snapshot snapshot;
  de_copy_basic_params(&snapshot.basic);
  de_copy_prefilter_params(&snapshot.prefilter);
  de_copy_extend_chop_params(&snapshot.extend_chop);
  de_copy_disp_calc_params(&snapshot.disparity);
  get_gpm_params(&snapshot.gpm);
  file.write(vq3900::write_snapshot(snapshot));  // a short write goes unseen, by contract
  return VQ3900_OK;
}

int32_t de_import_config_params_from_file(const char* path) try {
  const std::optional<std::string> text = vq3900::read_file(path, vq3900::kSnapshotSize);
  if (!text) {
    vq3900::print_out("error: read file failed, path=%s \n", vq3900::printable(path));
    return VQ3900_ERROR_ARGUMENT;
  }
  if (text->size() != vq3900::kSnapshotSize) {
    vq3900::print_out("error: file size\n");
    return VQ3900_ERROR_ARGUMENT;
  }
  vq3900::Snapshot snapshot;
  const auto* const bytes = reinterpret_cast<const uint8_t*>(text->data());
  vq3900::read_snapshot(std::span<const uint8_t, vq3900::kSnapshotSize>{bytes, vq3900::kSnapshotSize}, snapshot);
  de_update_basic_params(&snapshot.basic);
  de_update_prefilter_params(&snapshot.prefilter);
  de_update_extend_chop_params(&snapshot.extend_chop);
  de_update_disp_calc_params(&snapshot.disparity);
  de_update_gpm_params(&snapshot.gpm);
  return VQ3900_OK;
} catch (const std::exception&) {  // no memory for the file
  return VQ3900_ERROR_ARGUMENT;
}
