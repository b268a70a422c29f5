// Every format-pair conversion with its source and destination format, so
// that the frame rules can be checked over the whole family.
#ifndef ORV_TESTS_IMAGE_CONVERT_MEMBERS_H_
#define ORV_TESTS_IMAGE_CONVERT_MEMBERS_H_

#include <OrvImage.h>

#include <string>
#include <vector>

#include "image/convert_test_support.h"

namespace orv_test {

struct Member {
  std::string name;
  Format src;
  Format dst;
  Conversion run;
  bool sizeQueryStoresSize = true;  // false for the forwarders to the 4:2:0 converter
  // Whether the colour kernels do the work (they refuse geometries their
  // walks do not serve, e.g. a height of 1, and the conversion answers 4).
  bool viaKernels = false;
};

inline std::vector<Member> AllMembers(bool progressive = true) {
  using I = OrvImage;
  std::vector<Member> m;
#define ORV_PLAIN(name, s, d)                                                            \
  m.push_back({#name, I::s, I::d,                                                        \
               [](unsigned char* a, unsigned char* b, unsigned long* c, unsigned long w, \
                  unsigned long h, int ss, int ds) { return I::name(a, b, c, w, h, ss, ds); }});
#define ORV_PROG(name, s, d)                                                       \
  m.push_back({#name, I::s, I::d,                                                  \
               [progressive](unsigned char* a, unsigned char* b, unsigned long* c, \
                             unsigned long w, unsigned long h, int ss,             \
                             int ds) { return I::name(a, b, c, w, h, ss, ds, progressive); }});
#define ORV_CONV(name, s, d)                                                       \
  m.push_back({#name, I::s, I::d,                                                  \
               [progressive](unsigned char* a, unsigned char* b, unsigned long* c, \
                             unsigned long w, unsigned long h, int ss, int ds) {   \
                 return I::name(a, b, c, w, h, ss, ds, progressive, nullptr);      \
               },                                                                  \
               false, true});
  ORV_PROG(YUV420ToRGB24, CF_YUV420, CF_RGB24)
  ORV_PROG(YUV420ToRGB32, CF_YUV420, CF_RGB32)
  ORV_PROG(YUV420ToRGBA, CF_YUV420, CF_RGBA)
  ORV_PROG(YV12ToRGBA, CF_YV12, CF_RGBA)
  ORV_PROG(YUV420ToTavoShiftedStraightRGB24, CF_YUV420, CF_TavoShiftedStraightRGB24)
  ORV_PROG(YUV420ToTavoShiftedStraightRGB32, CF_YUV420, CF_TavoShiftedStraightRGB32)
  ORV_PROG(YUV420ToVUYA, CF_YUV420, CF_VUYA)
  ORV_PROG(YUV420ToCCIR601YUY2, CF_YUV420, CF_CCIR601YUY2)
  ORV_PROG(YUV420ToYUY2A, CF_YUV420, CF_YUY2A)
  ORV_PROG(YV12ToYUY2A, CF_YV12, CF_YUY2A)
  ORV_PLAIN(YUV420ToYV12, CF_YUV420, CF_YV12)
  ORV_PLAIN(CCIR601YUY2ToRGB24, CF_CCIR601YUY2, CF_RGB24)
  ORV_PLAIN(CCIR601YUY2ToRGB32, CF_CCIR601YUY2, CF_RGB32)
  ORV_PLAIN(CCIR601YUY2ToRGBA, CF_CCIR601YUY2, CF_RGBA)
  ORV_PLAIN(CCIR601YUY2ToTavoShiftedStraightRGB24, CF_CCIR601YUY2, CF_TavoShiftedStraightRGB24)
  ORV_PLAIN(CCIR601YUY2ToTavoShiftedStraightRGB32, CF_CCIR601YUY2, CF_TavoShiftedStraightRGB32)
  ORV_PLAIN(CCIR601YUY2ToVUYA, CF_CCIR601YUY2, CF_VUYA)
  ORV_PLAIN(CCIR601YUY2ToYUY2A, CF_CCIR601YUY2, CF_YUY2A)
  ORV_CONV(CCIR601YUY2ToYUV420, CF_CCIR601YUY2, CF_YUV420)
  ORV_PROG(CCIR601YUY2ToYV12, CF_CCIR601YUY2, CF_YV12)
  ORV_PLAIN(YUY2AToCCIR601YUY2, CF_YUY2A, CF_CCIR601YUY2)
  ORV_PLAIN(YUY2AToRGBA, CF_YUY2A, CF_RGBA)
  ORV_CONV(RGB24ToYUV420, CF_RGB24, CF_YUV420)
  ORV_CONV(RGB32ToYUV420, CF_RGB32, CF_YUV420)
  ORV_CONV(TavoShiftedStraightRGB24ToYUV420, CF_TavoShiftedStraightRGB24, CF_YUV420)
  ORV_CONV(TavoShiftedStraightRGB32ToYUV420, CF_TavoShiftedStraightRGB32, CF_YUV420)
  ORV_PROG(RGB24ToYV12, CF_RGB24, CF_YV12)
  ORV_PROG(RGB32ToYV12, CF_RGB32, CF_YV12)
  ORV_PLAIN(RGB24ToCCIR601YUY2, CF_RGB24, CF_CCIR601YUY2)
  ORV_PLAIN(RGB32ToCCIR601YUY2, CF_RGB32, CF_CCIR601YUY2)
  ORV_PLAIN(RGB24ToYUY2A, CF_RGB24, CF_YUY2A)
  ORV_PLAIN(RGB32ToYUY2A, CF_RGB32, CF_YUY2A)
  ORV_PLAIN(RGBAToYUY2A, CF_RGBA, CF_YUY2A)
  ORV_PLAIN(RGB24ToRGB32, CF_RGB24, CF_RGB32)
  ORV_PLAIN(TavoShiftedStraightRGB24ToTavoShiftedStraightRGB32, CF_TavoShiftedStraightRGB24,
            CF_TavoShiftedStraightRGB32)
  ORV_PLAIN(RGB24ToRGBA, CF_RGB24, CF_RGBA)
  ORV_PLAIN(RGB32ToRGB24, CF_RGB32, CF_RGB24)
  ORV_PLAIN(RGBAToRGB24, CF_RGBA, CF_RGB24)
  ORV_PLAIN(TavoShiftedStraightRGB32ToTavoShiftedStraightRGB24, CF_TavoShiftedStraightRGB32,
            CF_TavoShiftedStraightRGB24)
  ORV_PLAIN(RGB32ToRGBA, CF_RGB32, CF_RGBA)
  ORV_PLAIN(RGBAToRGB32, CF_RGBA, CF_RGB32)
  ORV_PLAIN(RGB24ToTavoShiftedStraightRGB24, CF_RGB24, CF_TavoShiftedStraightRGB24)
  ORV_PLAIN(TavoShiftedStraightRGB24ToRGB24, CF_TavoShiftedStraightRGB24, CF_RGB24)
  ORV_PLAIN(TavoShiftedStraightRGB32ToRGB24, CF_TavoShiftedStraightRGB32, CF_RGB24)
  ORV_PLAIN(RGB24ToTavoShiftedStraightRGB32, CF_RGB24, CF_TavoShiftedStraightRGB32)
  ORV_PLAIN(RGB32ToTavoShiftedStraightRGB24, CF_RGB32, CF_TavoShiftedStraightRGB24)
  ORV_PLAIN(RGB32ToTavoShiftedStraightRGB32, CF_RGB32, CF_TavoShiftedStraightRGB32)
  ORV_PLAIN(TavoShiftedStraightRGB24ToRGB32, CF_TavoShiftedStraightRGB24, CF_RGB32)
  ORV_PLAIN(TavoShiftedStraightRGB32ToRGB32, CF_TavoShiftedStraightRGB32, CF_RGB32)
  ORV_PLAIN(TavoShiftedStraightRGB24ToRGBA, CF_TavoShiftedStraightRGB24, CF_RGBA)
  ORV_PLAIN(TavoShiftedStraightRGB32ToRGBA, CF_TavoShiftedStraightRGB32, CF_RGBA)
  ORV_PROG(TavoShiftedStraightRGB24ToYV12, CF_TavoShiftedStraightRGB24, CF_YV12)
  ORV_PROG(TavoShiftedStraightRGB32ToYV12, CF_TavoShiftedStraightRGB32, CF_YV12)
  ORV_PLAIN(TavoShiftedStraightRGB24ToCCIR601YUY2, CF_TavoShiftedStraightRGB24, CF_CCIR601YUY2)
  ORV_PLAIN(TavoShiftedStraightRGB32ToCCIR601YUY2, CF_TavoShiftedStraightRGB32, CF_CCIR601YUY2)
  ORV_PLAIN(TavoShiftedStraightRGB24ToYUY2A, CF_TavoShiftedStraightRGB24, CF_YUY2A)
  ORV_PLAIN(TavoShiftedStraightRGB32ToYUY2A, CF_TavoShiftedStraightRGB32, CF_YUY2A)
  // The interlaced 4:2:0 to YUY2 route runs through the kernels too.
  for (Member& member : m) {
    if (!progressive && (member.name == "YUV420ToCCIR601YUY2" || member.name == "YUV420ToYUY2A")) {
      member.viaKernels = true;
    }
  }
#undef ORV_PLAIN
#undef ORV_PROG
#undef ORV_CONV
  return m;
}

}  // namespace orv_test

#endif  // ORV_TESTS_IMAGE_CONVERT_MEMBERS_H_
