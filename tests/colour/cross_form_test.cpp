// Every form of every colour kernel operation at every processor level against
// its plain twin: random pictures (full range and extremes), widths 1 to 66 and
// 1920/1922, heights at the limits of each walk, several pitches, a negative
// destination pitch for RGB, and canaries around and between the output lines.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "colour/C420toRGB.h"
#include "colour/C420toRGB2.h"
#include "colour/Cto420.h"

namespace orv {
namespace {

const SimdLevel kLevels[] = {SimdLevel::kPlain, SimdLevel::kSse2, SimdLevel::kSsse3,
                             SimdLevel::kSse41, SimdLevel::kAvx2, SimdLevel::kAvx512};

std::vector<SimdLevel> LevelsHere() {
  std::vector<SimdLevel> out;
  for (SimdLevel l : kLevels)
    if (l <= DetectSimdLevel()) out.push_back(l);
  return out;
}

// Source bytes: uniform over 0..255, or only the values where arithmetic turns:
// 0, 255, 16, 235, 128, 127, 1, 254.
void FillSource(std::vector<uint8_t>& v, uint32_t seed, bool extremes) {
  std::mt19937 rng(seed);
  static const uint8_t kEdge[8] = {0, 255, 16, 235, 128, 127, 1, 254};
  for (auto& b : v) b = extremes ? kEdge[rng() & 7] : static_cast<uint8_t>(rng());
}

// A destination with guard zones before and after it, all filled with a pattern.
struct Canvas {
  static constexpr size_t kGuard = 64;
  std::vector<uint8_t> bytes;
  explicit Canvas(size_t body) : bytes(body + 2 * kGuard) {
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7 + 3);
  }
  uint8_t* body() { return bytes.data() + kGuard; }
  bool GuardsIntact() const {
    for (size_t i = 0; i < kGuard; ++i)
      if (bytes[i] != static_cast<uint8_t>(i * 7 + 3)) return false;
    for (size_t i = bytes.size() - kGuard; i < bytes.size(); ++i)
      if (bytes[i] != static_cast<uint8_t>(i * 7 + 3)) return false;
    return true;
  }
};

std::string Where(const char* op, int w, int h, int extra, SimdLevel level, uint32_t seed) {
  return std::string(op) + " width " + std::to_string(w) + " height " + std::to_string(h) +
         " pitch+" + std::to_string(extra) + " level " + std::to_string(static_cast<int>(level)) +
         " seed " + std::to_string(seed);
}

// ---------------------------------------------------------------------------
// Cto420

// One operation applied to a source of `srcBytes` per pixel (0 = planar 4:2:0)
// and a destination of `dstKind`: 0 planar 4:2:0, 1 planar 4:2:2, 2 packed 16-bit,
// 3 NV12 in one buffer.
struct PlanarOp {
  const char* name;
  int srcBytes;
  int dstKind;
  std::function<bool(Cto420&, const uint8_t*, int, int, int, uint8_t*, int)> run;
};

#define PACKED_OP(Name, bytes, kind)                                                  \
  PlanarOp {                                                                          \
#Name, bytes, kind,                                                                 \
           [](Cto420& k, const uint8_t* s, int sp, int w, int h, uint8_t* d, int dp) {         \
             const int ch = (kind) == 0 ? h / 2 : h;                                           \
             uint8_t* u = d + dp * h;                                                          \
             uint8_t* v = u + (dp / 2) * ch;                                                   \
             return k.Name(s, sp, w, h, d, dp, u, dp / 2, v, dp / 2);                          \
           } \
  }
#define FROM420_OP(Name, kind)                                                        \
  PlanarOp {                                                                          \
#Name, 0, kind,                                                                     \
           [](Cto420& k, const uint8_t* s, int sp, int w, int h, uint8_t* d, int dp) {         \
             const uint8_t* u = s + sp * h;                                                    \
             const uint8_t* v = u + (sp / 2) * (h / 2);                                        \
             return k.Name(s, sp, u, sp / 2, v, sp / 2, w, h, d, dp);                          \
           } \
  }
#define TO422_OP(Name)                                                                \
  PlanarOp {                                                                          \
#Name, 0, 1,                                                                        \
           [](Cto420& k, const uint8_t* s, int sp, int w, int h, uint8_t* d, int dp) {         \
             const uint8_t* u = s + sp * h;                                                    \
             const uint8_t* v = u + (sp / 2) * (h / 2);                                        \
             uint8_t* du = d + dp * h;                                                         \
             uint8_t* dv = du + (dp / 2) * h;                                                  \
             return k.Name(s, sp, u, sp / 2, v, sp / 2, w, h, d, dp, du, dp / 2, dv, dp / 2);  \
           } \
  }

std::vector<PlanarOp> PlanarOps() {
  return {PACKED_OP(RGB32ToYUV420Frame, 4, 0), PACKED_OP(RGB32ToYUV420FrameUp, 4, 0),
          PACKED_OP(RGB32ToYUV420Field, 4, 0), PACKED_OP(RGB32ToYUV420FieldUp, 4, 0),
          PACKED_OP(RGB32ToYUV420Shift, 4, 0), PACKED_OP(RGB32ToYUV420ShiftUp, 4, 0),
          PACKED_OP(RGB24ToYUV420Frame, 3, 0), PACKED_OP(RGB24ToYUV420FrameUp, 3, 0),
          PACKED_OP(RGB24ToYUV420Field, 3, 0), PACKED_OP(RGB24ToYUV420FieldUp, 3, 0),
          PACKED_OP(RGB24ToYUV420Shift, 3, 0), PACKED_OP(RGB24ToYUV420ShiftUp, 3, 0),
          PACKED_OP(YUY2ToYUV420Frame, 2, 0),  PACKED_OP(YUY2ToYUV420Field, 2, 0),
          PACKED_OP(YUY2ToYUV420Shift, 2, 0),  PACKED_OP(YUY2ToYUV422, 2, 1),
          PACKED_OP(RGB24ToYUV422, 3, 1),      PACKED_OP(RGB24ToYUV422Up, 3, 1),
          PACKED_OP(RGB32ToYUV422, 4, 1),      PACKED_OP(RGB32ToYUV422Up, 4, 1),
          FROM420_OP(YUV420ToYUY2Frame, 2),    FROM420_OP(YUV420ToYUY2Field, 2),
          FROM420_OP(YUV420ToUYVYFrame, 2),    FROM420_OP(YUV420ToUYVYField, 2),
          FROM420_OP(YUV420ToNV12, 3),         TO422_OP(YUV420ToYUV422Frame),
          TO422_OP(YUV420ToYUV422Field)};
}

// Bytes of a destination of `kind` with pitch `dp` and `h` lines.
size_t PlanarDstBytes(int kind, int dp, int h) {
  switch (kind) {
    case 0:
      return static_cast<size_t>(dp) * h + static_cast<size_t>(dp / 2) * (h / 2) * 2;
    case 1:
      return static_cast<size_t>(dp) * h + static_cast<size_t>(dp / 2) * h * 2;
    case 2:
      return static_cast<size_t>(dp) * h;
    default:
      return static_cast<size_t>(dp) * h + static_cast<size_t>(dp) * (h / 2);
  }
}

// Runs `op` on the plain twin and on `form`; both must agree on the result
// and on every byte of the canvas, and the guards must hold.
void ComparePlanar(const PlanarOp& op, Cto420& twin, Cto420& form, int w, int h, int extra,
                   uint32_t seed, bool extremes, SimdLevel level) {
  const int srcPitch = op.srcBytes ? w * op.srcBytes + extra : w + extra + (extra & 1);
  const size_t srcSize = op.srcBytes ? static_cast<size_t>(srcPitch) * h
                                     : static_cast<size_t>(srcPitch) * h * 3 / 2 + srcPitch;
  std::vector<uint8_t> src(srcSize);
  FillSource(src, seed, extremes);
  const int dstLine = op.dstKind == 2 ? 2 * w : w;
  const int dstPitch = ((dstLine + extra) + 1) & ~1;
  const size_t dstSize = PlanarDstBytes(op.dstKind, dstPitch, h);
  Canvas a(dstSize), b(dstSize);
  const bool ra = op.run(twin, src.data(), srcPitch, w, h, a.body(), dstPitch);
  const bool rb = op.run(form, src.data(), srcPitch, w, h, b.body(), dstPitch);
  const std::string where = Where(op.name, w, h, extra, level, seed);
  ASSERT_EQ(ra, rb) << where;
  ASSERT_TRUE(a.GuardsIntact()) << where;
  ASSERT_TRUE(b.GuardsIntact()) << where;
  for (size_t i = 0; i < a.bytes.size(); ++i)
    ASSERT_EQ(a.bytes[i], b.bytes[i]) << where << " byte " << i;
}

// Heights to try for a Cto420 operation: the walk's limits and a little around them.
const int kPlanarHeights[] = {1, 2, 3, 4, 5, 6, 8, 12};

TEST(CrossForm, Cto420ProcessorFormAtEveryLevelEqualsItsPlainTwin) {
  const auto ops = PlanarOps();
  uint32_t seed = 1000;
  for (SimdLevel level : LevelsHere()) {
    for (int mode : {1, 2}) {
      const int black = mode == 1 ? 16 : 0;
      Cto420_MMX twin(mode, black, SimdLevel::kPlain);
      Cto420_MMX form(mode, black, level);
      for (const PlanarOp& op : ops) {
        for (int w = 1; w <= 66; ++w)
          for (int h : kPlanarHeights) {
            ++seed;
            ComparePlanar(op, twin, form, w, h, (w + h) % 6, seed, (seed & 3) == 0, level);
            if (HasFatalFailure()) return;
          }
        for (int w : {1920, 1922})
          for (int h : {4, 8}) {
            ComparePlanar(op, twin, form, w, h, 3, ++seed, false, level);
            if (HasFatalFailure()) return;
          }
      }
    }
  }
}

// The two forms agree everywhere but in the rounding of the two YUY2 outputs.
TEST(CrossForm, Cto420FormsAgreeOutsideTheRoundingTable) {
  Cto420 plain(2, 0);
  Cto420_MMX mmx(2, 0, SimdLevel::kPlain);
  uint32_t seed = 1;
  for (const PlanarOp& op : PlanarOps()) {
    const std::string name = op.name;
    if (name == "YUV420ToYUY2Frame" || name == "YUV420ToYUY2Field") continue;
    for (int w = 1; w <= 34; ++w)
      for (int h : kPlanarHeights) {
        ComparePlanar(op, plain, mmx, w, h, 3, ++seed, false, SimdLevel::kPlain);
        if (HasFatalFailure()) return;
      }
  }
}

// ---------------------------------------------------------------------------
// C420toRGB and C420toRGB2

enum RgbOpId {
  k555,
  k555I,
  k555F,
  k565,
  k565I,
  k565F,
  k24,
  k24I,
  k24F,
  k32,
  k32I,
  k32F,
  k0rgb,
  k0rgbI,
  k0rgbF,
  kA,
  kAI,
  kAF,
  kUp,
  kDown,
  kRgbOpCount
};
const char* const kRgbOpNames[kRgbOpCount] = {
    "ToRGB555",       "ToRGB555Interlaced", "ToRGB555Field",
    "ToRGB565",       "ToRGB565Interlaced", "ToRGB565Field",
    "ToRGB24",        "ToRGB24Interlaced",  "ToRGB24Field",
    "ToRGB32",        "ToRGB32Interlaced",  "ToRGB32Field",
    "To0RGB",         "To0RGBInterlaced",   "To0RGBField",
    "ToRGBA",         "ToRGBAInterlaced",   "ToRGBAField",
    "ToRGB32ShiftUp", "ToRGB32ShiftDown"};
const int kRgbOpBytes[kRgbOpCount] = {2, 2, 2, 2, 2, 2, 3, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};

uint32_t RunRgb(C420toRGB& k, int id, const uint8_t* y, const uint8_t* u, const uint8_t* v,
                uint8_t* d, int w, int h, int dp, int yp) {
  typedef uint32_t (C420toRGB::*Op)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                                    int32_t, int32_t, int32_t, int32_t);
  static const Op ops[kRgbOpCount] = {
      &C420toRGB::ToRGB555,       &C420toRGB::ToRGB555Interlaced, &C420toRGB::ToRGB555Field,
      &C420toRGB::ToRGB565,       &C420toRGB::ToRGB565Interlaced, &C420toRGB::ToRGB565Field,
      &C420toRGB::ToRGB24,        &C420toRGB::ToRGB24Interlaced,  &C420toRGB::ToRGB24Field,
      &C420toRGB::ToRGB32,        &C420toRGB::ToRGB32Interlaced,  &C420toRGB::ToRGB32Field,
      &C420toRGB::To0RGB,         &C420toRGB::To0RGBInterlaced,   &C420toRGB::To0RGBField,
      &C420toRGB::ToRGBA,         &C420toRGB::ToRGBAInterlaced,   &C420toRGB::ToRGBAField,
      &C420toRGB::ToRGB32ShiftUp, &C420toRGB::ToRGB32ShiftDown};
  return (k.*ops[id])(y, u, v, d, w, h, dp, yp);
}

int32_t RunRgb2(C420toRGB2& k, int id, const uint8_t* y, const uint8_t* u, const uint8_t* v,
                uint8_t* d, int w, int h, int dp, int yp, int cp) {
  typedef int32_t (C420toRGB2::*Op)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                                    int32_t, int32_t, int32_t, int32_t, int32_t);
  static const Op ops[kRgbOpCount] = {&C420toRGB2::ToRGB555,
                                      &C420toRGB2::ToRGB555Interlaced,
                                      &C420toRGB2::ToRGB555Field,
                                      &C420toRGB2::ToRGB565,
                                      &C420toRGB2::ToRGB565Interlaced,
                                      &C420toRGB2::ToRGB565Field,
                                      &C420toRGB2::ToRGB24,
                                      &C420toRGB2::ToRGB24Interlaced,
                                      &C420toRGB2::ToRGB24Field,
                                      &C420toRGB2::ToRGB32,
                                      &C420toRGB2::ToRGB32Interlaced,
                                      &C420toRGB2::ToRGB32Field,
                                      &C420toRGB2::To0RGB,
                                      &C420toRGB2::To0RGBInterlaced,
                                      &C420toRGB2::To0RGBField,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      &C420toRGB2::ToRGB32ShiftUp,
                                      &C420toRGB2::ToRGB32ShiftDown};
  return (k.*ops[id])(y, u, v, d, w, h, dp, yp, cp);
}

struct RgbCase {
  int w, h, extra;
  bool negative;
  uint32_t seed;
  bool extremes;
};

// Source planes with Y pitch yp and chroma lines yp / 2 apart, then runs `run`
// for the twin and the form on canvases of the op's pixel size.
template <typename Run>
void CompareRgb(int id, const RgbCase& c, SimdLevel level, Run run) {
  const int yp = c.w + c.extra + (c.extra & 1);
  const int chromaLines = (c.h + 1) / 2;
  std::vector<uint8_t> src(static_cast<size_t>(yp) * c.h +
                           static_cast<size_t>(yp / 2) * chromaLines * 2 + 16);
  FillSource(src, c.seed, c.extremes);
  const uint8_t* y = src.data();
  const uint8_t* u = y + static_cast<size_t>(yp) * c.h;
  const uint8_t* v = u + static_cast<size_t>(yp / 2) * chromaLines;
  const int line = c.w * kRgbOpBytes[id];
  const int dp = line + c.extra;
  const size_t size = static_cast<size_t>(dp) * c.h;
  Canvas a(size), b(size);
  uint8_t* da = c.negative ? a.body() + size - dp : a.body();
  uint8_t* db = c.negative ? b.body() + size - dp : b.body();
  const int pitch = c.negative ? -dp : dp;
  const auto ra = run(true, y, u, v, da, pitch, yp);
  const auto rb = run(false, y, u, v, db, pitch, yp);
  const std::string where = Where(kRgbOpNames[id], c.w, c.h, c.extra, level, c.seed) +
                            (c.negative ? " negative pitch" : "");
  ASSERT_EQ(ra, rb) << where;
  ASSERT_TRUE(a.GuardsIntact()) << where;
  ASSERT_TRUE(b.GuardsIntact()) << where;
  for (size_t i = 0; i < a.bytes.size(); ++i)
    ASSERT_EQ(a.bytes[i], b.bytes[i]) << where << " byte " << i;
}

std::vector<RgbCase> RgbCases(uint32_t seed) {
  std::vector<RgbCase> cases;
  for (int w = 1; w <= 66; ++w)
    for (int h : {2, 4, 6, 8, 12})
      cases.push_back(RgbCase{w, h, (w * 3) % 7, (seed & 1) == 0, ++seed, (seed % 5) == 0});
  for (int w : {1920, 1922})
    for (int h : {4, 8}) cases.push_back(RgbCase{w, h, 2, false, ++seed, false});
  return cases;
}

std::unique_ptr<C420toRGB> MakeRgbForm(int form, SimdLevel level) {
  switch (form) {
    case 0:
      return std::unique_ptr<C420toRGB>(new C420toRGB());
    case 1:
      return std::unique_ptr<C420toRGB>(new C420toRGB_MMX(level));
    case 2:
      return std::unique_ptr<C420toRGB>(new C420toRGB_KNI(level));
    default:
      return std::unique_ptr<C420toRGB>(new C420toRGB_SSE2(level));
  }
}

TEST(CrossForm, C420toRGBFormsAtEveryLevelEqualTheirPlainTwins) {
  for (SimdLevel level : LevelsHere()) {
    for (int form = 1; form < 4; ++form) {
      auto twin = MakeRgbForm(form, SimdLevel::kPlain);
      auto k = MakeRgbForm(form, level);
      for (int id = 0; id < kRgbOpCount; ++id) {
        // Each operation meets one of the four matrices, a different one per form.
        const int matrix = (id + form) % 4;
        twin->SetMatrix(matrix, 0);
        k->SetMatrix(matrix, 0);
        {
          for (const RgbCase& c : RgbCases(matrix * 100000 + id * 1000 + form * 10)) {
            CompareRgb(id, c, level,
                       [&](bool isTwin, const uint8_t* y, const uint8_t* u, const uint8_t* v,
                           uint8_t* d, int dp, int yp) {
                         return RunRgb(isTwin ? *twin : *k, id, y, u, v, d, c.w, c.h, dp, yp);
                       });
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  }
}

// The named forms' plain twins agree with the base class, except the MMX
// form's 24-bit output, which takes the general route.
TEST(CrossForm, C420toRGBFormsAgreeWithTheBaseClass) {
  C420toRGB base;
  for (int form = 1; form < 4; ++form) {
    auto k = MakeRgbForm(form, SimdLevel::kPlain);
    for (int matrix = 0; matrix < 4; ++matrix) {
      base.SetMatrix(matrix, 0);
      k->SetMatrix(matrix, 0);
      for (int id = 0; id < kRgbOpCount; ++id) {
        if (form == 1 && (id == k24 || id == k24I || id == k24F)) continue;
        for (const RgbCase& c : RgbCases(id * 77 + form)) {
          if (c.w > 40) continue;
          CompareRgb(id, c, SimdLevel::kPlain,
                     [&](bool isTwin, const uint8_t* y, const uint8_t* u, const uint8_t* v,
                         uint8_t* d, int dp, int yp) {
                       return RunRgb(isTwin ? base : *k, id, y, u, v, d, c.w, c.h, dp, yp);
                     });
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

TEST(CrossForm, C420toRGB2FormsAtEveryLevelEqualThePlainForm) {
  for (SimdLevel level : LevelsHere()) {
    for (int form = 0; form < 2; ++form) {
      C420toRGB2_C plain;
      std::unique_ptr<C420toRGB2> k;
      if (form == 0)
        k.reset(new C420toRGB2_MMX(level));
      else
        k.reset(new C420toRGB2_KNI(level));
      for (int straight = 0; straight < 2; ++straight) {
        plain.SetRange(straight, straight ? 16 : 0);
        k->SetRange(straight, straight ? 16 : 0);
        for (int id = 0; id < kRgbOpCount; ++id) {
          if (id == kA || id == kAI || id == kAF) continue;
          for (const RgbCase& c : RgbCases(id * 31 + straight)) {
            // Chroma pitch of its own: wider than half the Y pitch.
            CompareRgb(id, c, level,
                       [&](bool isTwin, const uint8_t* y, const uint8_t* u, const uint8_t* v,
                           uint8_t* d, int dp, int yp) {
                         return RunRgb2(isTwin ? static_cast<C420toRGB2&>(plain) : *k, id, y, u, v,
                                        d, c.w, c.h, dp, yp, yp / 2);
                       });
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  }
}

// The general route of C420toRGB2 equals that of C420toRGB in the progressive
// walks and in the first field, where no mirroring happens.
TEST(CrossForm, BothFamiliesShareTheProgressiveGeneralRoute) {
  C420toRGB2_C narrow;
  C420toRGB wide;
  narrow.SetRange(0, 0);
  wide.SetMatrix(0, 0);
  for (int id : {k555, k565, k32, k0rgb}) {
    for (const RgbCase& c : RgbCases(id)) {
      if (c.w > 34) continue;
      CompareRgb(id, c, SimdLevel::kPlain,
                 [&](bool isTwin, const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* d,
                     int dp, int yp) -> int64_t {
                   if (isTwin)
                     return RunRgb2(narrow, id, y, u, v, d, c.w, c.h, dp, yp, yp / 2) != 0;
                   return RunRgb(wide, id, y, u, v, d, c.w, c.h, dp, yp) == 0;
                 });
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace orv
