// The choice of factors and interpolation for a resize, and the planar work
// planes of a YUY2 resize through the primitives.
#include <OrvImage.h>

#include <cstring>

#include "platform/primitives/ipp.h"

namespace {

bool IsOneOf(int v, std::initializer_list<int> set) {
  for (int x : set) {
    if (v == x) return true;
  }
  return false;
}

// The fixed video rasters: a 704-wide picture enters the 720 and 1440 rasters
// at a whole-number factor with a margin, and those rasters leave it with a
// trim. Rows are tested in order.
struct RasterRow {
  int srcWidth;
  std::initializer_list<int> srcHeights;
  int dstWidth;
  std::initializer_list<int> dstHeights;
  double xFactor;
  int srcTrimX;
  int dstMarginX;
  bool padded;
};

}  // namespace

bool OrvImage::GetResizeFactor(IppiSize src, IppiSize dst, double* xFactor, double* yFactor,
                               int* srcTrimX, int* dstMarginX, bool* padded) {
  if (padded) *padded = false;
  int trim = 0, margin = 0;
  bool result = true;
  double x = 1.0, y = 1.0;
  if (src.width == dst.width && src.height == dst.height) {
    result = false;
  } else if (src.width <= 0 || src.height <= 0) {
    // No factor can be had from an empty source: report no resize.
    result = false;
  } else {
    x = (dst.width + 0.01) / src.width;
    y = (dst.height + 0.01) / src.height;
    static const std::initializer_list<int> kV = {240, 480, 288, 576};
    static const std::initializer_list<int> kF = {480, 576};
    const RasterRow rows[] = {
        {352, {240, 480, 288, 576}, 720, kF, 2.0, 0, 16, true},
        {352, {240, 480, 288, 576}, 1440, {1080}, 4.0, 0, 32, true},
        {720, {480, 576}, 352, kV, 0.5, 16, 0, false},
        {720, {480, 576}, 704, kF, 1.0, 16, 0, false},
        {704, {480, 576}, 720, kF, 1.0, 0, 16, true},
        {704, {480, 576}, 1440, {1080}, 2.0, 0, 32, true},
        {1440, {1080}, 352, kV, 0.25, 32, 0, false},
        {1440, {1080}, 704, kF, 0.5, 32, 0, false},
    };
    for (const RasterRow& row : rows) {
      if (src.width == row.srcWidth && IsOneOf(src.height, row.srcHeights) &&
          dst.width == row.dstWidth && IsOneOf(dst.height, row.dstHeights)) {
        x = row.xFactor;
        trim = row.srcTrimX;
        margin = row.dstMarginX;
        if (padded) *padded = row.padded;
        break;
      }
    }
  }
  if (xFactor) *xFactor = x;
  if (yFactor) *yFactor = y;
  if (srcTrimX) *srcTrimX = trim;
  if (dstMarginX) *dstMarginX = margin;
  return result;
}

int OrvImage::GetInterpolation(INTERPOLATION_MODE mode, double xFactor, double yFactor) {
  switch (mode) {
    case INTERPOLATION_NEAREST:
      return orv::ipp::IPPI_INTER_NN;
    case INTERPOLATION_LINEAR:
      return orv::ipp::IPPI_INTER_LINEAR;
    case INTERPOLATION_CUBIC:
      return orv::ipp::IPPI_INTER_CUBIC;
    default:
      // Any enlargement is cubic; a pure reduction averages areas.
      return (xFactor > 1.0 || yFactor > 1.0) ? orv::ipp::IPPI_INTER_CUBIC
                                              : orv::ipp::IPPI_INTER_SUPER;
  }
}

bool OrvImage::AllocateTempBuffer(TEMP_PLANAR_FORMAT* temp, IppiSize src, IppiSize dst) {
  if (temp == nullptr || temp->srcY != nullptr) return true;
  temp->srcY = orv::ipp::ippiMalloc_8u_C1(src.width, src.height, &temp->srcStepY);
  temp->srcU = orv::ipp::ippiMalloc_8u_C1(src.width / 2, src.height, &temp->srcStepU);
  temp->srcV = orv::ipp::ippiMalloc_8u_C1(src.width / 2, src.height, &temp->srcStepV);
  temp->dstY = orv::ipp::ippiMalloc_8u_C1(dst.width, dst.height, &temp->dstStepY);
  // The destination chroma planes get an even line count: the instance resize
  // rounds the chroma region's height up to even, and must stay inside them.
  const int dstChromaLines = dst.height + (dst.height & 1);
  temp->dstU = orv::ipp::ippiMalloc_8u_C1(dst.width / 2, dstChromaLines, &temp->dstStepU);
  temp->dstV = orv::ipp::ippiMalloc_8u_C1(dst.width / 2, dstChromaLines, &temp->dstStepV);
  if (!temp->srcY || !temp->srcU || !temp->srcV || !temp->dstY || !temp->dstU || !temp->dstV) {
    ReleaseTempBuffer(temp);
    return false;
  }
  return true;
}

void OrvImage::ReleaseTempBuffer(TEMP_PLANAR_FORMAT* temp) {
  if (temp == nullptr) return;
  for (uint8_t* plane : {temp->srcY, temp->srcU, temp->srcV, temp->dstY, temp->dstU, temp->dstV}) {
    if (plane) orv::ipp::ippiFree(plane);
  }
  std::memset(temp, 0, sizeof(*temp));
}

void OrvImage::ClearResizeInfo(RESIZE_INFO* info) {
  if (info == nullptr) return;
  ReleaseTempBuffer(&info->temp);
  std::memset(info, 0, sizeof(*info));
}
