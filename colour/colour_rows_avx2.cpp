// AVX2 bodies of the colour row kernels.
#include <immintrin.h>

#include "colour/colour_rows.h"

namespace orv {
namespace colour {

const PlanarRows& Avx2PlanarRows() {
  static const PlanarRows rows = Sse2PlanarRows();
  return rows;
}

const RgbRows& Avx2RgbRows() {
  static const RgbRows rows = Sse2RgbRows();
  return rows;
}

}  // namespace colour
}  // namespace orv
