// Row kernels of the image primitives, one table per processor level.
//
// The primitives walk their pictures line by line (steps, regions, odd tails
// and field layouts live only in those walkers) and hand whole lines to the
// kernels below. Every kernel has a plain form in ipp_kernels_plain.cpp that
// defines its bytes; a processor form replaces an entry of the table only if
// it gives the same bytes for every input. A processor form does the whole
// vectors of a line and hands the rest to the plain form, so no form leaves a
// column unwritten.
//
// The level is chosen once per process (ActiveKernels) and can be named
// explicitly (KernelsFor), so tests can run every level on one machine.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_KERNELS_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_KERNELS_H_

#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace ipp {

struct Kernels {
  // --- colour, 4:2:0 and 4:2:2 (counts are pixel pairs) ---
  // Studio BT.601 Y, Cb, Cr lines to B G R pixels.
  void (*yuv420ToBgr)(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr,
                      int pairs);
  // Packed Y0 Cb Y1 Cr to R G B pixels, or to three planes R, G, B.
  void (*yuy2ToRgb)(const uint8_t* yuy2, uint8_t* rgb, int pairs);
  void (*yuy2ToRgbPlanes)(const uint8_t* yuy2, uint8_t* r, uint8_t* g, uint8_t* b, int pairs);
  // Two R G B lines to two Y lines and one Cb and one Cr line (2 x 2 blocks).
  void (*rgbToYcc420)(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1,
                      uint8_t* cb, uint8_t* cr, int pairs);
  // R, G, B planes to packed Y0 Cb Y1 Cr.
  void (*rgbPlanesToYuy2)(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* yuy2,
                          int pairs);
  // --- colour, full-swing JFIF (counts are pixels) ---
  void (*jpegYccToBgr)(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr,
                       int width);
  void (*jpegYccToRgbPlanes)(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* r,
                             uint8_t* g, uint8_t* b, int width);
  void (*jpegBgrToYcc)(const uint8_t* bgr, uint8_t* y, uint8_t* cb, uint8_t* cr, int width);
  // --- sampling (counts are destination samples; the source holds twice as many) ---
  void (*sampleDownH2V2)(const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int width);
  void (*sampleDownH2V1)(const uint8_t* row, uint8_t* dst, int width);
  // --- packed 4:2:2 split and join (counts are pixel pairs) ---
  void (*yuy2Split)(const uint8_t* yuy2, uint8_t* y, uint8_t* cb, uint8_t* cr, int pairs);
  void (*yuy2Join)(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* yuy2,
                   int pairs);
  // --- mirror about the vertical axis: dst pixel x = src pixel width-1-x; src != dst ---
  void (*reverseC1)(const uint8_t* src, uint8_t* dst, int width);
  void (*reverseC3)(const uint8_t* src, uint8_t* dst, int width);
  void (*reverseC4)(const uint8_t* src, uint8_t* dst, int width);
  // --- channel moves (counts are pixels) ---
  void (*copyC3AC4)(const uint8_t* src, uint8_t* dst, int width);  // byte 3 untouched
  void (*copyAC4C3)(const uint8_t* src, uint8_t* dst, int width);
  void (*copyC3P3)(const uint8_t* src, uint8_t* d0, uint8_t* d1, uint8_t* d2, int width);
  void (*copyC4P4)(const uint8_t* src, uint8_t* d0, uint8_t* d1, uint8_t* d2, uint8_t* d3,
                   int width);
  void (*copyP4C4)(const uint8_t* s0, const uint8_t* s1, const uint8_t* s2, const uint8_t* s3,
                   uint8_t* dst, int width);
  void (*copyC4C1)(const uint8_t* src, uint8_t* dst, int width);  // every fourth byte
  // dst channel c = src channel order[c]; src may equal dst.
  void (*swapC3)(const uint8_t* src, uint8_t* dst, int width, const int order[3]);
  // --- fills (counts are pixels) ---
  void (*setC4)(uint8_t* dst, int width, const uint8_t value[4]);
  void (*setC4C)(uint8_t* dst, int width, uint8_t value);  // every fourth byte
  // --- alpha (count is bytes for the constant form, pixels for the 4-channel form) ---
  // dst = min(255, (wa x a + wb x b + 127) / 255), wa and wb in 0..255.
  void (*alphaMix)(const uint8_t* a, const uint8_t* b, uint8_t* dst, int count, int wa, int wb);
  // Per-pixel "a over b" of the 4-channel composition (see ipp_alpha.h).
  void (*alphaOverAC4)(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width);
  // --- resize ---
  // Vertical pass: out[i] = (sum_t rows[t][i] x coef[t] + 128) >> 8, rows are source
  // lines (count bytes each), coef in Q14; out is Q6.
  void (*filterVertical)(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                         int count);
  // Horizontal pass over a Q6 line of `channels` channels: pixel x takes taps
  // pixels from start[x], coef[x * taps + t] in Q14; result (sum + 2^19) >> 20,
  // saturated to 0..255.
  void (*filterHorizontalC1)(const int16_t* src, const int32_t* start, const int16_t* coef,
                             int taps, uint8_t* dst, int width);
  void (*filterHorizontalC3)(const int16_t* src, const int32_t* start, const int16_t* coef,
                             int taps, uint8_t* dst, int width);
  void (*filterHorizontalC4)(const int16_t* src, const int32_t* start, const int16_t* coef,
                             int taps, uint8_t* dst, int width);
  // Nearest neighbour: dst pixel x = src pixel index[x].
  void (*gatherC1)(const uint8_t* src, const int32_t* index, uint8_t* dst, int width);
  void (*gatherC3)(const uint8_t* src, const int32_t* index, uint8_t* dst, int width);
  void (*gatherC4)(const uint8_t* src, const int32_t* index, uint8_t* dst, int width);
};

// The plain table.
const Kernels& PlainKernels();
// The table of a level: the plain entries, replaced by the forms of every
// level up to `level` that this build has. A level above what the build has
// gives the highest the build has.
const Kernels& KernelsFor(SimdLevel level);
// The table of DetectSimdLevel(), chosen once.
const Kernels& ActiveKernels();

// Processor forms install themselves over a table (defined in the *_sse2.cpp,
// *_avx2.cpp files; only present when ORV_X86_SIMD is 1).
#if ORV_X86_SIMD
void InstallSse2Kernels(Kernels* k);
void InstallSsse3Kernels(Kernels* k);
void InstallAvx2Kernels(Kernels* k);
// The 3- and 4-channel horizontal resize passes and the 1-byte gather
// (ipp_resize_kernels_avx2.cpp), with the vertical and the one-channel
// horizontal passes of their own files (ipp_resize_vertical_avx2.cpp,
// ipp_resize_horizontal_c1_avx2.cpp).
void InstallAvx2ResizeKernels(Kernels* k);
void FilterVerticalAvx2(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                        int count);
void FilterHorizontalC1Avx2(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                            uint8_t* dst, int width);
// The vertical and the 1-, 3- and 4-channel horizontal resize passes and the
// 1- and 4-byte gathers (ipp_resize_*_avx512.cpp).
void InstallAvx512ResizeKernels(Kernels* k);
// The bodies of the AVX-512 resize passes, by what the processor has beyond
// the level's own instructions: nothing more, the 16-bit dot product (VNNI),
// or that and the byte permutes (VBMI). Each later one is faster where it runs.
enum class Avx512ResizeBody { kBase, kDot, kDotPermute };
// The best body this processor can run (the one the level installs).
Avx512ResizeBody Avx512ResizeBodyHere();
// The AVX-512 table with its resize passes taken with `body`, so that tests
// reach every one this processor can run.
Kernels Avx512ResizeForms(Avx512ResizeBody body);
// The 4-channel alpha composition (ipp_alpha_kernels_avx512.cpp).
void InstallAvx512AlphaKernels(Kernels* k);
// The colour conversions of 3-byte pixels (ipp_color_kernels_avx512.cpp).
void InstallAvx512ColorKernels(Kernels* k);
#endif

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_KERNELS_H_
