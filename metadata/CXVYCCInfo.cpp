#include <OrvCameraInfo.h>

namespace {

constexpr unsigned char kXvyccHeaderTag = 0xDC;

}  // namespace

// The six boundary values lie end to end in the bit stream that follows byte 0
// of `first`, high bits first, at 8, 10 or 12 bits each.
void CXVYCCInfo::GetXVYCCInfo(unsigned char* header, unsigned char* first, unsigned char* second,
                              unsigned char* third, ORV_AUX_INFO* info) {
  if (!header || !first || !second || !third || !info) return;
  if (header[0] != kXvyccHeaderTag || header[3] != 0) {
    info->xvyccValid = 0;
    return;
  }
  info->xvyccValid = 1;
  const unsigned char b = first[0];
  const unsigned char* f = first;
  const unsigned char* s = second;
  const unsigned char* t = third;
  uint32_t* v = info->xvyccBoundary;

  const unsigned precision = (b >> 3) & 0x3u;
  switch (precision) {
    case 0:
      info->xvyccPrecision = 0;
      v[0] = f[1];
      v[1] = f[2];
      v[2] = f[3];
      v[3] = s[0];
      v[4] = s[1];
      v[5] = s[2];
      break;
    case 1:
      info->xvyccPrecision = 1;
      v[0] = f[1] * 4u + (f[2] >> 6);
      v[1] = (f[2] & 63u) * 16u + (f[3] >> 4);
      v[2] = (f[3] & 15u) * 64u + (s[0] >> 2);
      v[3] = (s[0] & 3u) * 256u + s[1];
      v[4] = s[2] * 4u + (s[3] >> 6);
      v[5] = (s[3] & 63u) * 16u + (t[0] >> 4);
      break;
    case 2:
      info->xvyccPrecision = 2;
      v[0] = f[1] * 16u + (f[2] >> 4);
      v[1] = (f[2] & 15u) * 256u + f[3];
      v[2] = s[0] * 16u + (s[1] >> 4);
      v[3] = (s[1] & 15u) * 256u + s[2];
      v[4] = s[3] * 16u + (t[0] >> 4);
      v[5] = (t[0] & 15u) * 256u + t[1];
      break;
    default:
      // An unknown precision: the boundary values cannot be read.
      info->xvyccPrecision = ORV_AUX_XVYCC_UNKNOWN;
      info->xvyccValid = 0;
      break;
  }

  const unsigned space = b & 0x7u;
  info->xvyccColorSpace = space <= 3 ? space : ORV_AUX_XVYCC_UNKNOWN;
}
