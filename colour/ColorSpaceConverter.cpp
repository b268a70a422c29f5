#include "colour/ColorSpaceConverter.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "platform/os/os_cpuid.h"

namespace orv {

uint32_t DetectProcessorFlags() {
  uint32_t flags = 0x1;
  os::CpuidRegs r{};
  if (!os::Cpuid(0, 0, &r)) return flags;
  const uint32_t maxLeaf = r.eax;
  char vendor[13] = "UnknownVendr";
  std::memcpy(vendor, &r.ebx, 4);
  std::memcpy(vendor + 4, &r.edx, 4);
  std::memcpy(vendor + 8, &r.ecx, 4);
  const bool amd = std::memcmp(vendor, "AuthenticAMD", 12) == 0;
  uint32_t edx1 = 0, eax1 = 0;
  if (maxLeaf > 0) {
    flags |= 0x2;
    os::Cpuid(1, 0, &r);
    edx1 = r.edx;
    eax1 = r.eax;
  }
  if (edx1 & (1u << 4)) flags |= 0x10;
  if (edx1 & (1u << 23)) flags |= CPU_MMX;
  if (edx1 & (1u << 15)) flags |= 0x40;
  if (edx1 & (1u << 25)) flags |= CPU_KNI | CPU_SSE_OS;  // the OS saves SSE state on this host
  if (edx1 & (1u << 12)) flags |= 0x1000;
  if (edx1 & (1u << 26)) flags |= CPU_SSE2;
  os::Cpuid(0x80000000u, 0, &r);
  if (r.eax > 0x80000000u) {
    flags |= 0x4;
    os::Cpuid(0x80000001u, 0, &r);
    const uint32_t edxX = r.edx;
    if (edxX & (1u << 31)) flags |= 0x80;
    if (amd && (edxX & (1u << 30))) flags |= 0x100;
    if (amd && (edxX & (1u << 22))) flags |= CPU_KNI;
    const uint32_t model = eax1 & 0xFFF;
    if (amd && model >= 0x588 && model <= 0x5FF) flags |= 0x800;
  }
  return flags;
}

// ---------------------------------------------------------------------------
// ColorKernelSet

ColorKernelSet::ColorKernelSet()
    : initialized_(0),
      toPlanar_(nullptr),
      toRgb2_(nullptr),
      blackLevel_(0),
      rgbBlack_(16),
      usesMmxState_(1),
      haveChoice_(false),
      flags_(0),
      level_(SimdLevel::kPlain) {}

ColorKernelSet::~ColorKernelSet() {
  delete toPlanar_;
  delete toRgb2_;
}

int32_t ColorKernelSet::Initialize() {
  if (haveChoice_) return Initialize(flags_, level_);
  return Initialize(DetectProcessorFlags(), DetectSimdLevel());
}

int32_t ColorKernelSet::Initialize(uint32_t processorFlags, SimdLevel level) {
  haveChoice_ = true;
  flags_ = processorFlags;
  level_ = level;
  if (initialized_) {
    delete toPlanar_;
    delete toRgb2_;
    toPlanar_ = nullptr;
    toRgb2_ = nullptr;
    initialized_ = 0;
  }
  if (processorFlags & (CPU_SSE2 | CPU_KNI)) {
    toPlanar_ = new (std::nothrow) Cto420_MMX(1, 0, level);
    toRgb2_ = new (std::nothrow) C420toRGB2_KNI(level);
  } else if (processorFlags & CPU_MMX) {
    toPlanar_ = new (std::nothrow) Cto420_MMX(1, 0, level);
    toRgb2_ = new (std::nothrow) C420toRGB2_MMX(level);
  } else {
    toPlanar_ = new (std::nothrow) Cto420(1, 0);
    toRgb2_ = new (std::nothrow) C420toRGB2_C();
    usesMmxState_ = 0;
  }
  if (toPlanar_ && toRgb2_) {
    blackLevel_ = 0;
    rgbBlack_ = 16;
    initialized_ = 1;
    return 1;
  }
  delete toPlanar_;
  delete toRgb2_;
  toPlanar_ = nullptr;
  toRgb2_ = nullptr;
  initialized_ = 0;
  return 0;
}

void ColorKernelSet::SetBlackLevel(int32_t value) {
  blackLevel_ = value;
  rgbBlack_ = 16 - value;
}

namespace {
inline bool Has(uint32_t word, uint32_t bit) { return (word & bit) != 0; }
// The layout word without its VU flag, as a plain 4:2:0 word.
inline uint32_t NormaliseVu(uint32_t layout) { return (layout & 0xFFFF) | LAYOUT_PLANAR_420; }
}  // namespace

int32_t ColorKernelSet::ConvertToPlanar(const uint8_t* src, int32_t pitch, int32_t width,
                                        int32_t height, uint32_t srcLayout, uint32_t mode,
                                        uint8_t* dstY, int32_t yPitch, uint8_t* dstA,
                                        int32_t aPitch, uint8_t* dstB, int32_t bPitch,
                                        uint32_t dstLayout) {
  if (!initialized_ && !Initialize()) return 0;
  toPlanar_->SetCoefficients((mode & MODE_STRAIGHT) ? 1 : 2, blackLevel_);
  uint8_t *u = dstA, *v = dstB;
  int32_t uPitch = aPitch, vPitch = bPitch;
  if (Has(dstLayout, LAYOUT_PLANES_VU)) {
    u = dstB;
    v = dstA;
    uPitch = bPitch;
    vPitch = aPitch;
    dstLayout = NormaliseVu(dstLayout);
  }
  const bool in = Has(srcLayout, LAYOUT_INTERLACED);
  const bool up = Has(mode, MODE_IN_BOTTOMUP);
  const bool shift = Has(mode, MODE_LINE_SHIFT);
  Cto420& k = *toPlanar_;
  typedef bool (Cto420::*PackedOp)(const uint8_t*, int32_t, int32_t, int32_t, uint8_t*, int32_t,
                                   uint8_t*, int32_t, uint8_t*, int32_t);
  PackedOp op = nullptr;
  if (Has(dstLayout, LAYOUT_PLANAR_420)) {
    if (Has(srcLayout, LAYOUT_RGB24) || Has(srcLayout, LAYOUT_RGB32)) {
      const bool rgb24 = Has(srcLayout, LAYOUT_RGB24);
      static const PackedOp k24[6] = {&Cto420::RGB24ToYUV420Frame, &Cto420::RGB24ToYUV420FrameUp,
                                      &Cto420::RGB24ToYUV420Field, &Cto420::RGB24ToYUV420FieldUp,
                                      &Cto420::RGB24ToYUV420Shift, &Cto420::RGB24ToYUV420ShiftUp};
      static const PackedOp k32[6] = {&Cto420::RGB32ToYUV420Frame, &Cto420::RGB32ToYUV420FrameUp,
                                      &Cto420::RGB32ToYUV420Field, &Cto420::RGB32ToYUV420FieldUp,
                                      &Cto420::RGB32ToYUV420Shift, &Cto420::RGB32ToYUV420ShiftUp};
      const int row = (in ? (shift ? 4 : 2) : 0) + (up ? 1 : 0);
      op = rgb24 ? k24[row] : k32[row];
    } else if (Has(srcLayout, LAYOUT_YUY2)) {
      op = !in ? &Cto420::YUY2ToYUV420Frame
               : (shift ? &Cto420::YUY2ToYUV420Shift : &Cto420::YUY2ToYUV420Field);
    }
  } else if (Has(dstLayout, LAYOUT_PLANAR_422)) {
    if (Has(srcLayout, LAYOUT_YUY2))
      op = &Cto420::YUY2ToYUV422;
    else if (Has(srcLayout, LAYOUT_RGB24))
      op = up ? &Cto420::RGB24ToYUV422Up : &Cto420::RGB24ToYUV422;
    else if (Has(srcLayout, LAYOUT_RGB32))
      op = up ? &Cto420::RGB32ToYUV422Up : &Cto420::RGB32ToYUV422;
  }
  if (!op) return 0;
  return (k.*op)(src, pitch, width, height, dstY, yPitch, u, uPitch, v, vPitch) ? 1 : 0;
}

int32_t ColorKernelSet::ConvertPlanarToPlanar(const uint8_t* srcY, int32_t yPitch,
                                              const uint8_t* srcA, int32_t aPitch,
                                              const uint8_t* srcB, int32_t bPitch, int32_t width,
                                              int32_t height, uint32_t srcLayout, uint32_t mode,
                                              uint8_t* dstY, int32_t dstYPitch, uint8_t* dstA,
                                              int32_t dstAPitch, uint8_t* dstB, int32_t dstBPitch,
                                              uint32_t dstLayout) {
  (void)mode;
  if (width <= 0 || height <= 0) return 0;
  const bool src420 = Has(srcLayout, LAYOUT_PLANAR_420);
  const bool dst420 = Has(dstLayout, LAYOUT_PLANAR_420);
  // 1. Plain copy between the two chroma orders.
  if ((src420 && Has(dstLayout, LAYOUT_PLANES_VU)) ||
      (Has(srcLayout, LAYOUT_PLANES_VU) && dst420)) {
    for (int32_t i = 0; i < height; ++i)
      std::memcpy(dstY + static_cast<intptr_t>(i) * dstYPitch,
                  srcY + static_cast<intptr_t>(i) * yPitch, static_cast<size_t>(width));
    for (int32_t i = 0; i < height / 2; ++i) {
      std::memcpy(dstB + static_cast<intptr_t>(i) * dstBPitch,
                  srcA + static_cast<intptr_t>(i) * aPitch, static_cast<size_t>(width / 2));
      std::memcpy(dstA + static_cast<intptr_t>(i) * dstAPitch,
                  srcB + static_cast<intptr_t>(i) * bPitch, static_cast<size_t>(width / 2));
    }
    return 1;
  }
  // 2. NV12.
  if (src420 && Has(dstLayout, LAYOUT_NV12)) {
    if (!initialized_ && !Initialize()) return 0;
    return toPlanar_->YUV420ToNV12Planes(srcY, yPitch, srcA, aPitch, srcB, bPitch, width, height,
                                         dstY, dstYPitch, dstA, dstAPitch, dstB, dstBPitch)
               ? 1
               : 0;
  }
  // 3. Normalise the chroma order on either side.
  if (Has(srcLayout, LAYOUT_PLANES_VU)) {
    std::swap(srcA, srcB);
    std::swap(aPitch, bPitch);
    srcLayout = NormaliseVu(srcLayout);
  }
  if (Has(dstLayout, LAYOUT_PLANES_VU)) {
    std::swap(dstA, dstB);
    std::swap(dstAPitch, dstBPitch);
    dstLayout = NormaliseVu(dstLayout);
  }
  const bool interlaced = Has(srcLayout, LAYOUT_INTERLACED);
  // 4. 4:2:2 to 4:2:0: no rounding term in either filter.
  if (Has(dstLayout, LAYOUT_PLANAR_420)) {
    if (!Has(srcLayout, LAYOUT_PLANAR_422)) return 0;
    const int32_t unit = interlaced ? 4 : 2;
    const int32_t groups = height / unit;
    const int32_t half = width / 2;
    const uint8_t* sc[2] = {srcA, srcB};
    const int32_t sp[2] = {aPitch, bPitch};
    uint8_t* dc[2] = {dstA, dstB};
    const int32_t dp[2] = {dstAPitch, dstBPitch};
    for (int32_t g = 0; g < groups; ++g) {
      for (int32_t l = 0; l < unit; ++l) {
        const int32_t i = g * unit + l;
        std::memcpy(dstY + static_cast<intptr_t>(i) * dstYPitch,
                    srcY + static_cast<intptr_t>(i) * yPitch, static_cast<size_t>(width));
      }
      for (int p = 0; p < 2; ++p) {
        auto S = [&](int32_t line) { return sc[p] + static_cast<intptr_t>(line) * sp[p]; };
        auto D = [&](int32_t line) { return dc[p] + static_cast<intptr_t>(line) * dp[p]; };
        if (interlaced) {
          const uint8_t *l0 = S(4 * g), *l1 = S(4 * g + 1), *l2 = S(4 * g + 2), *l3 = S(4 * g + 3);
          uint8_t* d0 = D(2 * g);
          uint8_t* d1 = D(2 * g + 1);
          for (int32_t j = 0; j < half; ++j) {
            d0[j] = static_cast<uint8_t>((3 * l0[j] + l2[j]) >> 2);
            d1[j] = static_cast<uint8_t>((3 * l3[j] + l1[j]) >> 2);
          }
        } else {
          const uint8_t *l0 = S(2 * g), *l1 = S(2 * g + 1);
          uint8_t* d = D(g);
          for (int32_t j = 0; j < half; ++j) d[j] = static_cast<uint8_t>((l0[j] + l1[j]) >> 1);
        }
      }
    }
    return groups > 0 ? 1 : 0;
  }
  // 5. 4:2:0 to 4:2:2.
  if (Has(dstLayout, LAYOUT_PLANAR_422) && src420) {
    if (!initialized_ && !Initialize()) return 0;
    const bool ok = interlaced
                        ? toPlanar_->YUV420ToYUV422Field(srcY, yPitch, srcA, aPitch, srcB, bPitch,
                                                         width, height, dstY, dstYPitch, dstA,
                                                         dstAPitch, dstB, dstBPitch)
                        : toPlanar_->YUV420ToYUV422Frame(srcY, yPitch, srcA, aPitch, srcB, bPitch,
                                                         width, height, dstY, dstYPitch, dstA,
                                                         dstAPitch, dstB, dstBPitch);
    return ok ? 1 : 0;
  }
  return 0;
}

int32_t ColorKernelSet::PlaneView(const uint8_t* srcY, int32_t yPitch, const uint8_t* srcU,
                                  int32_t uPitch, const uint8_t* srcV, int32_t vPitch,
                                  int32_t width, int32_t height, uint32_t srcLayout, uint32_t mode,
                                  uint8_t* dst, int32_t dstPitch, uint32_t dstLayout) {
  const bool rgb32 = Has(dstLayout, LAYOUT_RGB32);
  const bool rgb565 = !rgb32 && Has(dstLayout, LAYOUT_RGB565);
  if (!rgb32 && !rgb565) return 0;
  const bool s420 = Has(srcLayout, LAYOUT_PLANAR_420);
  const bool s422 = Has(srcLayout, LAYOUT_PLANAR_422);
  if (!s420 && !s422) return 0;
  const uint8_t* plane;
  int32_t pitch;
  bool chroma = true;
  if (Has(mode, MODE_VIEW_Y)) {
    plane = srcY;
    pitch = yPitch;
    chroma = false;
  } else if (Has(mode, MODE_VIEW_U)) {
    plane = srcU;
    pitch = uPitch;
  } else {
    plane = srcV;
    pitch = vPitch;
  }
  bool topDown = Has(mode, MODE_OUT_TOPDOWN);
  if (s422 && rgb565) topDown = false;
  auto out = [&](int32_t r) {
    const int32_t row = topDown ? r : height - 1 - r;
    return dst + static_cast<intptr_t>(row) * dstPitch;
  };
  auto put = [&](uint8_t* line, int32_t x, uint8_t s) {
    if (rgb32) {
      line[4 * x] = s;
      line[4 * x + 1] = s;
      line[4 * x + 2] = s;
      line[4 * x + 3] = 0;
    } else {
      const uint16_t w = static_cast<uint16_t>((s >> 3) | ((s & 0xFC) << 3) | ((s & 0xF8) << 8));
      line[2 * x] = static_cast<uint8_t>(w);
      line[2 * x + 1] = static_cast<uint8_t>(w >> 8);
    }
  };
  if (!chroma) {
    for (int32_t r = 0; r < height; ++r) {
      const uint8_t* s = plane + static_cast<intptr_t>(r) * pitch;
      uint8_t* d = out(r);
      for (int32_t x = 0; x < width; ++x) put(d, x, s[x]);
    }
    return 1;
  }
  const int32_t lines = s420 ? height / 2 : height;
  for (int32_t l = 0; l < lines; ++l) {
    const uint8_t* s = plane + static_cast<intptr_t>(l) * pitch;
    for (int32_t rep = 0; rep < (s420 ? 2 : 1); ++rep) {
      uint8_t* d = out(s420 ? 2 * l + rep : l);
      for (int32_t x = 0; x < width / 2; ++x) {
        put(d, 2 * x, s[x]);
        put(d, 2 * x + 1, s[x]);
      }
    }
  }
  return 1;
}

int32_t ColorKernelSet::ConvertFromPlanar(const uint8_t* srcY, int32_t yPitch, const uint8_t* srcA,
                                          int32_t aPitch, const uint8_t* srcB, int32_t bPitch,
                                          int32_t width, int32_t height, uint32_t srcLayout,
                                          uint32_t mode, uint8_t* dst, int32_t dstPitch,
                                          uint32_t dstLayout) {
  if (!initialized_ && !Initialize()) return 0;
  toPlanar_->SetCoefficients((mode & MODE_STRAIGHT) ? 1 : 2, blackLevel_);
  if (Has(srcLayout, LAYOUT_PLANES_VU)) {
    std::swap(srcA, srcB);
    std::swap(aPitch, bPitch);
    srcLayout = NormaliseVu(srcLayout);
  }
  if (mode & MODE_STRAIGHT)
    toRgb2_->SetRange(1, rgbBlack_);
  else
    toRgb2_->SetRange(0, 0);
  if (mode & (MODE_VIEW_Y | MODE_VIEW_U | MODE_VIEW_V))
    return PlaneView(srcY, yPitch, srcA, aPitch, srcB, bPitch, width, height, srcLayout, mode, dst,
                     dstPitch, dstLayout);
  const bool interlaced = Has(srcLayout, LAYOUT_INTERLACED);
  if (Has(srcLayout, LAYOUT_PLANAR_420)) {
    Cto420& p = *toPlanar_;
    if (Has(dstLayout, LAYOUT_YUY2))
      return (interlaced ? p.YUV420ToYUY2Field(srcY, yPitch, srcA, aPitch, srcB, bPitch, width,
                                               height, dst, dstPitch)
                         : p.YUV420ToYUY2Frame(srcY, yPitch, srcA, aPitch, srcB, bPitch, width,
                                               height, dst, dstPitch))
                 ? 1
                 : 0;
    if (Has(dstLayout, LAYOUT_UYVY))
      return (interlaced ? p.YUV420ToUYVYField(srcY, yPitch, srcA, aPitch, srcB, bPitch, width,
                                               height, dst, dstPitch)
                         : p.YUV420ToUYVYFrame(srcY, yPitch, srcA, aPitch, srcB, bPitch, width,
                                               height, dst, dstPitch))
                 ? 1
                 : 0;
    if (Has(dstLayout, LAYOUT_NV12))
      return p.YUV420ToNV12(srcY, yPitch, srcA, aPitch, srcB, bPitch, width, height, dst, dstPitch)
                 ? 1
                 : 0;
    typedef int32_t (C420toRGB2::*RgbOp)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                                         int32_t, int32_t, int32_t, int32_t, int32_t);
    RgbOp op = nullptr;
    if (Has(dstLayout, LAYOUT_RGB555))
      op = interlaced ? &C420toRGB2::ToRGB555Interlaced : &C420toRGB2::ToRGB555;
    else if (Has(dstLayout, LAYOUT_RGB565))
      op = interlaced ? &C420toRGB2::ToRGB565Interlaced : &C420toRGB2::ToRGB565;
    else if (Has(dstLayout, LAYOUT_RGB24))
      op = interlaced ? &C420toRGB2::ToRGB24Interlaced : &C420toRGB2::ToRGB24;
    else if (Has(dstLayout, LAYOUT_RGB32))
      op = interlaced ? (Has(mode, MODE_LINE_SHIFT) ? &C420toRGB2::ToRGB32ShiftUp
                                                    : &C420toRGB2::ToRGB32Interlaced)
                      : &C420toRGB2::ToRGB32;
    if (!op) return 0;
    if (Has(mode, MODE_OUT_TOPDOWN)) {
      dst += static_cast<intptr_t>(height - 1) * dstPitch;
      dstPitch = -dstPitch;
    }
    return (toRgb2_->*op)(srcY, srcA, srcB, dst, width, height, dstPitch, yPitch, aPitch) != 0 ? 1
                                                                                               : 0;
  }
  if (Has(srcLayout, LAYOUT_PLANAR_422)) {
    if (Has(dstLayout, LAYOUT_RGB24) || Has(dstLayout, LAYOUT_RGB32)) {
      if (width <= 0 || height <= 0) return 0;
      const size_t bytes =
          static_cast<size_t>(width + width / 2) * static_cast<size_t>(height) + 16;
      void* block = std::malloc(bytes);
      if (!block) return 0;
      uint8_t* y = reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(block) + 15) &
                                              ~static_cast<uintptr_t>(15));
      const int32_t cp = width / 2;
      uint8_t* u = y + static_cast<intptr_t>(width) * height;
      uint8_t* v = u + static_cast<intptr_t>(cp) * (height / 2);
      int32_t result = ConvertPlanarToPlanar(srcY, yPitch, srcA, aPitch, srcB, bPitch, width,
                                             height, (srcLayout & 0xFFFF) | LAYOUT_PLANAR_422, 0, y,
                                             width, u, cp, v, cp, LAYOUT_PLANAR_420);
      if (result)
        result = ConvertFromPlanar(y, width, u, cp, v, cp, width, height,
                                   (srcLayout & 0xFFFF) | LAYOUT_PLANAR_420, mode, dst, dstPitch,
                                   dstLayout);
      std::free(block);
      return result;
    }
    if (Has(dstLayout, LAYOUT_YUY2)) {
      for (int32_t i = 0; i < height; ++i) {
        const uint8_t* yl = srcY + static_cast<intptr_t>(i) * yPitch;
        const uint8_t* ul = srcA + static_cast<intptr_t>(i) * aPitch;
        const uint8_t* vl = srcB + static_cast<intptr_t>(i) * bPitch;
        uint8_t* d = dst + static_cast<intptr_t>(i) * dstPitch;
        for (int32_t j = 0; j < width / 2; ++j) {
          d[4 * j] = yl[2 * j];
          d[4 * j + 1] = ul[j];
          d[4 * j + 2] = yl[2 * j + 1];
          d[4 * j + 3] = vl[j];
        }
      }
      return 1;
    }
    return 0;
  }
  return 0;
}

// ---------------------------------------------------------------------------
// ColorSpaceConverter

ColorSpaceConverter::ColorSpaceConverter() : kernelSet_(nullptr), rgbConverter_(nullptr) {}

ColorSpaceConverter::~ColorSpaceConverter() {
  delete kernelSet_;
  delete rgbConverter_;
}

bool ColorSpaceConverter::Initialize() {
  return Initialize(DetectProcessorFlags(), DetectSimdLevel());
}

bool ColorSpaceConverter::Initialize(uint32_t processorFlags, SimdLevel level) {
  delete kernelSet_;
  kernelSet_ = new (std::nothrow) ColorKernelSet();
  if (!kernelSet_) return false;
  if (!kernelSet_->Initialize(processorFlags, level)) {
    delete kernelSet_;
    kernelSet_ = nullptr;
    return false;
  }
  delete rgbConverter_;
  // The base class is never the object created: without KNI the MMX form
  // serves, also on a processor without MMX (its bodies are plain there).
  if (processorFlags & CPU_SSE2)
    rgbConverter_ = new C420toRGB_SSE2(level);
  else if (processorFlags & CPU_KNI)
    rgbConverter_ = new C420toRGB_KNI(level);
  else
    rgbConverter_ = new C420toRGB_MMX(level);
  return rgbConverter_ != nullptr;
}

namespace {

// Bytes per pixel of an RGB format code; 0 for any other code.
uint32_t RgbBytes(uint32_t format) {
  switch (format) {
    case CSC_RGB24:
    case CSC_SHIFTED_RGB24:
      return 3;
    case CSC_RGB32:
    case CSC_SHIFTED_RGB32:
    case CSC_RGBA:
    case CSC_SHIFTED_RGBA:
      return 4;
    default:
      return 0;
  }
}

// Pictures are at most 65535 pixels a side and their byte counts fit 31 bits.
constexpr uint64_t kMaxSide = 65535;
constexpr uint64_t kMaxBytes = 0x7FFFFFFF;

}  // namespace

bool ColorSpaceConverter::ConvertToYUV420(const uint8_t* src, uint32_t srcPitch, uint32_t width,
                                          uint32_t height, uint32_t srcFormat, uint32_t scan,
                                          uint8_t* dstY, uint8_t* dstU, uint8_t* dstV,
                                          uint32_t dstPitch, uint32_t dstFormat, uint32_t* size) {
  if (!src || !srcPitch || !width || !height || !srcFormat || !dstY || !dstU || !dstV ||
      !dstPitch || !size)
    return false;
  if (dstFormat != CSC_I420) return false;
  const uint64_t required = (static_cast<uint64_t>(dstPitch) / 2 + dstPitch) * height;
  if (width > kMaxSide || height > kMaxSide || required > kMaxBytes) return false;
  if (dstPitch < width) return false;
  if (*size < required) return false;
  *size = static_cast<uint32_t>(required);
  if (!kernelSet_) return false;
  const uint32_t I = scan == CSC_SCAN_INTERLACED ? LAYOUT_INTERLACED : LAYOUT_PROGRESSIVE;
  uint32_t layout = I, mode = 0, bytes = 0;
  switch (srcFormat) {
    case CSC_RGB24:
      layout |= LAYOUT_RGB24;
      mode = 0x202;
      bytes = 3;
      break;
    case CSC_SHIFTED_RGB24:
      layout |= LAYOUT_RGB24;
      mode = 0x201;
      bytes = 3;
      kernelSet_->SetBlackLevel(16);
      break;
    case CSC_RGB32:
    case CSC_RGBA:
      layout |= LAYOUT_RGB32;
      mode = 0x202;
      bytes = 4;
      break;
    case CSC_SHIFTED_RGB32:
    case CSC_SHIFTED_RGBA:
      layout |= LAYOUT_RGB32;
      mode = 0x201;
      bytes = 4;
      kernelSet_->SetBlackLevel(16);
      break;
    case CSC_YUY2:
      layout |= LAYOUT_YUY2;
      mode = 0x102;
      bytes = 2;
      break;
    default:
      break;
  }
  // A source line shorter than its pixels is not a picture: refuse it.
  if (bytes && static_cast<uint64_t>(srcPitch) < static_cast<uint64_t>(width) * bytes) return false;
  if (static_cast<uint64_t>(srcPitch) * height > kMaxBytes) return false;
  return kernelSet_->ConvertToPlanar(
             src, static_cast<int32_t>(srcPitch), static_cast<int32_t>(width),
             static_cast<int32_t>(height), layout, mode, dstY, static_cast<int32_t>(dstPitch), dstU,
             static_cast<int32_t>(dstPitch / 2), dstV, static_cast<int32_t>(dstPitch / 2),
             LAYOUT_PLANAR_420 | I) == 1;
}

bool ColorSpaceConverter::ConvertFromYUV420(const uint8_t* srcY, const uint8_t* srcU,
                                            const uint8_t* srcV, uint32_t yPitch,
                                            uint32_t chromaPitch, uint32_t width, uint32_t height,
                                            uint32_t srcFormat, uint32_t scan, uint32_t bt709,
                                            uint8_t* dst, uint32_t dstPitch, uint32_t dstFormat,
                                            uint32_t* size) {
  if (!srcY || !srcU || !srcV || !yPitch || !chromaPitch || !width || !height || !srcFormat ||
      !dst || !dstPitch || !dstFormat || !size)
    return false;
  const bool planar = dstFormat == CSC_I420 || dstFormat == CSC_YV12;
  const uint32_t rgbBytes = RgbBytes(dstFormat);
  if (!planar && dstFormat != CSC_YUY2 && !rgbBytes) return false;  // not a format we write
  uint64_t required = static_cast<uint64_t>(height) * dstPitch;
  if (planar) required += static_cast<uint64_t>(dstPitch / 2) * height;
  if (width > kMaxSide || height > kMaxSide || required > kMaxBytes) return false;
  if (static_cast<uint64_t>(yPitch) * height > kMaxBytes) return false;
  const uint64_t lineBytes = planar                  ? width
                             : dstFormat == CSC_YUY2 ? 2ull * width
                                                     : static_cast<uint64_t>(rgbBytes) * width;
  if (dstPitch < lineBytes) return false;
  if (*size < required) return false;
  *size = static_cast<uint32_t>(required);
  if (srcFormat != CSC_I420) return false;
  if (planar || dstFormat == CSC_YUY2)
    return ConvertFromYUV420ToOther(srcY, srcU, srcV, yPitch, chromaPitch, width, height, scan, dst,
                                    dstPitch, dstFormat);
  // The RGB kernels read chroma lines yPitch / 2 apart.
  if (chromaPitch < yPitch / 2) return false;
  return ConvertFromYUV420ToRGB(srcY, srcU, srcV, yPitch, width, height, scan, bt709, dst, dstPitch,
                                dstFormat);
}

bool ColorSpaceConverter::ConvertFromYUV420ToRGB(const uint8_t* srcY, const uint8_t* srcU,
                                                 const uint8_t* srcV, uint32_t yPitch,
                                                 uint32_t width, uint32_t height, uint32_t scan,
                                                 uint32_t bt709, uint8_t* dst, uint32_t dstPitch,
                                                 uint32_t dstFormat) {
  if (!rgbConverter_) return false;
  const bool hd = bt709 == 1 || height > 720;
  const bool fullRange = dstFormat == CSC_RGB24 || dstFormat == CSC_RGB32 || dstFormat == CSC_RGBA;
  const int32_t matrix = fullRange ? (hd ? 2 : 0) : (hd ? 3 : 1);
  rgbConverter_->SetMatrix(matrix, 0);
  const bool progressive = scan == CSC_SCAN_PROGRESSIVE;
  typedef uint32_t (C420toRGB::*Op)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                                    int32_t, int32_t, int32_t, int32_t);
  Op op;
  if (dstFormat == CSC_RGB24 || dstFormat == CSC_SHIFTED_RGB24)
    op = progressive ? &C420toRGB::ToRGB24 : &C420toRGB::ToRGB24Interlaced;
  else if (dstFormat == CSC_RGB32 || dstFormat == CSC_SHIFTED_RGB32)
    op = progressive ? &C420toRGB::ToRGB32 : &C420toRGB::ToRGB32Interlaced;
  else
    op = progressive ? &C420toRGB::ToRGBA : &C420toRGB::ToRGBAInterlaced;
  return (rgbConverter_->*op)(srcY, srcU, srcV, dst, static_cast<int32_t>(width),
                              static_cast<int32_t>(height), static_cast<int32_t>(dstPitch),
                              static_cast<int32_t>(yPitch)) == 0;
}

bool ColorSpaceConverter::ConvertFromYUV420ToOther(const uint8_t* srcY, const uint8_t* srcU,
                                                   const uint8_t* srcV, uint32_t yPitch,
                                                   uint32_t chromaPitch, uint32_t width,
                                                   uint32_t height, uint32_t scan, uint8_t* dst,
                                                   uint32_t dstPitch, uint32_t dstFormat) {
  if (!kernelSet_) return false;
  const uint32_t I = scan == CSC_SCAN_INTERLACED ? LAYOUT_INTERLACED : LAYOUT_PROGRESSIVE;
  const int32_t w = static_cast<int32_t>(width), h = static_cast<int32_t>(height);
  if (dstFormat == CSC_I420 || dstFormat == CSC_YV12) {
    uint8_t* first = dst + static_cast<uint64_t>(height) * dstPitch;
    uint8_t* second = dst + (static_cast<uint64_t>(height) * dstPitch * 5) / 4;
    uint8_t* vPlane = dstFormat == CSC_I420 ? second : first;
    uint8_t* uPlane = dstFormat == CSC_I420 ? first : second;
    const int32_t cp = static_cast<int32_t>(dstPitch / 2);
    return kernelSet_->ConvertPlanarToPlanar(
               srcY, static_cast<int32_t>(yPitch), srcU, static_cast<int32_t>(chromaPitch), srcV,
               static_cast<int32_t>(chromaPitch), w, h, LAYOUT_PLANAR_420 | I, 0x102, dst,
               static_cast<int32_t>(dstPitch), vPlane, cp, uPlane, cp, LAYOUT_PLANES_VU) == 1;
  }
  if (dstFormat == CSC_YUY2)
    return kernelSet_->ConvertFromPlanar(
               srcY, static_cast<int32_t>(yPitch), srcU, static_cast<int32_t>(chromaPitch), srcV,
               static_cast<int32_t>(chromaPitch), w, h, LAYOUT_PLANAR_420 | I, 0x102, dst,
               static_cast<int32_t>(dstPitch), LAYOUT_YUY2) == 1;
  // RGB through the kernel set: not reached from ConvertFromYUV420, which sends
  // RGB to the C420toRGB converter, but served for any caller of this route.
  const uint32_t bytes = RgbBytes(dstFormat);
  if (!bytes) return false;
  const bool shifted = (dstFormat & 0x00300000) != 0;
  uint32_t mode = 0x202;
  if (shifted) {
    kernelSet_->SetBlackLevel(16);
    mode = 0x201;
  }
  const int32_t ok = kernelSet_->ConvertFromPlanar(
      srcY, static_cast<int32_t>(yPitch), srcU, static_cast<int32_t>(chromaPitch), srcV,
      static_cast<int32_t>(chromaPitch), w, h, LAYOUT_PLANAR_420 | I, mode, dst,
      static_cast<int32_t>(dstPitch), bytes == 3 ? LAYOUT_RGB24 : LAYOUT_RGB32);
  if (ok != 1) return false;
  if (dstFormat == CSC_RGBA || dstFormat == CSC_SHIFTED_RGBA)
    for (uint32_t i = 0; i < height; ++i)
      for (uint32_t x = 0; x < width; ++x)
        dst[static_cast<uint64_t>(i) * dstPitch + 4 * x + 3] = 255;
  return true;
}

}  // namespace orv
