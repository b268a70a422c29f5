// Line copies shared by the pipeline stages: a copy to another step that may
// turn the picture upside down, and the re-spacing of lines in place.
#ifndef ORV_IMAGE_STAGE_LINES_H_
#define ORV_IMAGE_STAGE_LINES_H_

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace orv {
namespace image {

// Copies `lines` lines of `bytes` bytes from one buffer to another (no
// overlap); with `flip` memory line y goes to memory line lines - 1 - y.
inline void CopyLines(const unsigned char* src, uint64_t srcStep, unsigned char* dst,
                      uint64_t dstStep, uint64_t lines, uint64_t bytes, bool flip) {
  for (uint64_t y = 0; y < lines; ++y) {
    const uint64_t to = flip ? lines - 1 - y : y;
    std::memcpy(dst + to * dstStep, src + y * srcStep, bytes);
  }
}

// Moves `lines` lines of `bytes` bytes inside one buffer, from `from` with
// step `srcStep` to `to` with step `dstStep`. The walk runs forwards when the
// lines move towards the buffer's start and backwards otherwise, so that no
// line is overwritten before it is read.
inline void RespaceLines(unsigned char* to, uint64_t dstStep, const unsigned char* from,
                         uint64_t srcStep, uint64_t lines, uint64_t bytes) {
  if (lines == 0 || bytes == 0) return;
  if (to <= from) {
    for (uint64_t y = 0; y < lines; ++y) std::memmove(to + y * dstStep, from + y * srcStep, bytes);
  } else {
    for (uint64_t y = lines; y-- > 0;) std::memmove(to + y * dstStep, from + y * srcStep, bytes);
  }
}

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_STAGE_LINES_H_
