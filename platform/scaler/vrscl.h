// The 4:2:0 scaler: planar Y, Cb, Cr in, planar Y, Cb, Cr out, with all sizes
// fixed once by VRSCLSetupConverter so that VRSCLConvert takes only pointers
// and steps. The picture engine uses it for its two scaler interpolation modes
// (a whole frame, or the first field stretched to the whole destination).
//
// Contract
// - Handle: an opaque `void*` (the type of the conversion plan's `vrscl`
//   member), made by VRSCLCreateInstance and ended by VRSCLReleaseInstance.
//   An instance belongs to one thread at a time; instances share nothing and
//   the scaler has no globals.
// - Sizes: luma width and height from 2 to 65535, odd sizes included (the
//   field of a 486-line frame is 243 lines). The chroma planes are
//   width/2 x height/2, rounded down, as everywhere in the library's planar
//   layout: the last column or line of an odd luma plane has no chroma of
//   its own.
// - VRSCLSetupConverter takes each size pair twice: (source width, height,
//   source width, height, destination width, height, destination width,
//   height). The picture engine always passes equal pairs; the scaler has no
//   region of interest, so a second pair that differs from the first is
//   refused with kVrsclBadSize.
// - Steps are byte distances between lines, positive, at least one line of
//   the plane (width for Y, width/2 for chroma). A larger step may be used
//   to read or write one field of an interleaved frame (twice the frame's
//   step). Source and destination must not overlap.
// - Only the destination planes' width x height bytes (per plane) are
//   written; bytes between the end of a line and the next step are left
//   alone.
//
// Filter
// - Separable, polyphase, two passes with a 16-bit intermediate carrying
//   six fraction bits. The order is chosen per plane at set-up from the
//   sizes, whichever does less work: vertical first (each destination line
//   reads its source lines into one 16-bit line at source width, then
//   filters it horizontally; reductions) or horizontal first (each source
//   line is filtered once into a ring of 16-bit lines at destination width,
//   which the vertical pass reads; enlargements). The two orders round the
//   intermediate differently and may differ by one level; every processor
//   form uses the same order for the same sizes and gives the same bytes.
// - Kernel: the interpolating cubic with a = -0.5 (value 1 at 0, 0 at every
//   other integer, support +-2). On a reduction by f > 1 the kernel is
//   stretched by f (support +-2f source samples), which makes it a low-pass
//   at the destination's Nyquist frequency: fine patterns are averaged to
//   their mean instead of aliasing. Enlargements use the plain kernel.
// - Geometry: pixel centres are aligned. Destination sample i of a plane
//   maps to source position (i + 0.5) x r - 0.5 with r = source luma size /
//   destination luma size, in that plane's own sample units. Chroma is
//   centre-sited between its two luma samples on both axes (the JPEG
//   convention); the luma ratio is used for chroma too, so that chroma stays
//   registered to luma on odd sizes.
// - Edges: samples outside the plane repeat the edge sample; the taps that
//   fall outside are folded onto the edge sample when the tables are built.
// - Coefficients: 14-bit fixed point, each phase rounded to nearest and then
//   corrected on its largest tap so that its taps sum to exactly 16384.
//   First pass: sum(c x p), + 128, >> 8 (arithmetic), saturated to 16 bits.
//   Second pass: sum(c x t), + 2^19, >> 20, saturated to 0..255. Identity
//   sizes give one tap of 16384 and so copy exactly; an identity plane is
//   copied line by line without filtering.
// - The tables and the scratch lines are built at set-up; Convert allocates
//   nothing.
// - Processor forms: plain, SSE2, AVX2 and AVX-512 kernels give the same
//   bytes. The form is chosen once per instance from orv::DetectSimdLevel(),
//   or given explicitly.
#ifndef ORV_PLATFORM_SCALER_VRSCL_H_
#define ORV_PLATFORM_SCALER_VRSCL_H_

#include "foundation/cpu_info.h"

namespace orv {

using VRSCLHandle = void*;

enum VrsclResult : int {
  kVrsclOk = 0,
  kVrsclNullHandle = 1,   // the handle is null
  kVrsclBadSize = 2,      // a size is below 2 or above 65535, or the pairs differ
  kVrsclNotSetUp = 3,     // VRSCLConvert before a successful VRSCLSetupConverter
  kVrsclNullPointer = 4,  // an out pointer or a plane pointer is null
  kVrsclBadStep = 5,      // a step is smaller than its plane's line (negative included)
  kVrsclNoMemory = 6,     // the instance or its tables could not be allocated
};

constexpr int kVrsclMinSide = 2;
constexpr int kVrsclMaxSide = 65535;

// Makes an instance with the processor form of DetectSimdLevel(). *handle is
// null on failure. kVrsclNullPointer for a null `handle`, kVrsclNoMemory.
int VRSCLCreateInstance(VRSCLHandle* handle);
// The same with an explicit processor form; a level above the build's or the
// processor's falls back to the highest form available at or below it.
int VRSCLCreateInstance(VRSCLHandle* handle, SimdLevel level);

// Fixes the sizes and builds the tables. A refused set-up leaves the instance
// not set up (a previous set-up is discarded).
int VRSCLSetupConverter(VRSCLHandle handle, int srcWidth, int srcHeight, int srcWidth2,
                        int srcHeight2, int dstWidth, int dstHeight, int dstWidth2, int dstHeight2);

// Scales one 4:2:0 picture. Everything is checked before anything is written.
int VRSCLConvert(VRSCLHandle handle, unsigned char* dstY, unsigned char* dstCb,
                 unsigned char* dstCr, int dstYStep, int dstCStep, const unsigned char* srcY,
                 const unsigned char* srcCb, const unsigned char* srcCr, int srcYStep,
                 int srcCStep);

// Frees the instance and sets *handle to null. Null `handle` or *handle: nothing.
void VRSCLReleaseInstance(VRSCLHandle* handle);

// The processor form an instance runs (tests and benchmarks); kPlain for null.
SimdLevel VRSCLInstanceLevel(VRSCLHandle handle);

}  // namespace orv

#endif  // ORV_PLATFORM_SCALER_VRSCL_H_
