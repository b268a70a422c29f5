// SSE2 bodies of the colour row kernels.
#include <emmintrin.h>

#include "colour/colour_rows.h"

namespace orv {
namespace colour {

const PlanarRows& Sse2PlanarRows() {
  static const PlanarRows rows = PlainPlanarRows();
  return rows;
}

const RgbRows& Sse2RgbRows() {
  static const RgbRows rows = PlainRgbRows();
  return rows;
}

}  // namespace colour
}  // namespace orv
