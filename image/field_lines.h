// Line moves bounded by a destination's capacity: the common ground of the
// field operations, which copy whole lines and compute no pixel.
#ifndef ORV_IMAGE_FIELD_LINES_H_
#define ORV_IMAGE_FIELD_LINES_H_

#include <OrvMemory.h>

#include <cstdint>

namespace orv {
namespace image {

class BoundedLines {
 public:
  // `dst` may be written up to `capacity` bytes from its start.
  BoundedLines(unsigned char* dst, uint64_t capacity) : dst_(dst), capacity_(capacity) {}

  // Moves `bytes` from `from` to `offset` bytes into the destination. A move
  // that would pass the capacity is not made at all. Source and destination
  // may overlap.
  void Move(uint64_t offset, const unsigned char* from, uint64_t bytes) const {
    if (bytes == 0 || offset > capacity_ || bytes > capacity_ - offset) return;
    OrvMemory::Move(dst_ + offset, static_cast<unsigned int>(bytes), from,
                    static_cast<unsigned int>(bytes));
  }

  unsigned char* at(uint64_t offset) const { return dst_ + offset; }

 private:
  unsigned char* dst_;
  uint64_t capacity_;
};

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_FIELD_LINES_H_
