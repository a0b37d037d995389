// What a program would do that reads its configuration with inih: everything into a map of maps.
#ifndef VQ3900_BENCH_SUPPORT_INIH_DOCUMENT_H
#define VQ3900_BENCH_SUPPORT_INIH_DOCUMENT_H

#include <ini.h>

#include <map>
#include <string>

namespace vq3900::bench {

using InihDocument = std::map<std::string, std::map<std::string, std::string>>;

inline int keep_field(void* document, const char* section, const char* key, const char* value) {
  (*static_cast<InihDocument*>(document))[section][key] = value;
  return 1;
}

}  // namespace vq3900::bench

#endif
