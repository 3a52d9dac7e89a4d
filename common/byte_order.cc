#include "common/byte_order.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace urldb {

void convEndian(void* array, unsigned count) {
  // Plain on purpose: over tens of megabytes this keeps pace with memcpy.
  auto* const bytes = static_cast<unsigned char*>(array);
  for (std::size_t i = 0; i < count; ++i) {
    uint32_t word = 0;
    std::memcpy(&word, bytes + i * sizeof word, sizeof word);
    word = convEndian(word);
    std::memcpy(bytes + i * sizeof word, &word, sizeof word);
  }
}

}  // namespace urldb
