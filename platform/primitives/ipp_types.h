// Types, status values and constants of the image primitives.
//
// The primitives keep the published conventions of their names: sizes and
// rectangles by value, steps in bytes, a status of 0 for success and a
// negative status for a bad argument. They live in orv::ipp so that they never
// clash with another copy of those names in a process.
//
// Checks common to every primitive, in this order, before anything is read or
// written:
//   1. a null picture pointer (or a null entry of a plane array) answers
//      ippStsNullPtrErr;
//   2. a width or height below 1, or above 65535, answers ippStsSizeErr;
//   3. a step below the bytes of one line of the region answers ippStsStepErr
//      (steps are byte distances and must be positive);
//   4. then the arguments particular to the primitive (interpolation, axis,
//      alpha type, factors, channel order, scale range, rounding mode).
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_TYPES_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_TYPES_H_

#include <OrvIppTypes.h>

#include <cstdint>

namespace orv {
namespace ipp {

typedef uint8_t Ipp8u;
typedef int16_t Ipp16s;
typedef int32_t Ipp32s;
typedef float Ipp32f;
typedef double Ipp64f;
typedef int IppStatus;

// Status values.
enum : int {
  ippStsNoErr = 0,
  ippStsNoOperation = 1,         // nothing to do: the regions do not meet
  ippStsWrongIntersectROI = 29,  // warning: the destination region meets no source pixel
  ippStsErr = -2,
  ippStsBadArgErr = -5,
  ippStsSizeErr = -6,
  ippStsNullPtrErr = -8,
  ippStsMemAllocErr = -9,
  ippStsScaleRangeErr = -13,
  ippStsStepErr = -14,
  ippStsMirrorFlipErr = -21,
  ippStsInterpolationErr = -22,
  ippStsResizeFactorErr = -23,
  ippStsRoundModeNotSupportedErr = -213,
  ippStsAlphaTypeErr = -50,
  ippStsRectErr = -57,
  ippStsChannelOrderErr = -60,
};

// Interpolation of the resizers and the rotation.
enum : int {
  IPPI_INTER_NN = 1,
  IPPI_INTER_LINEAR = 2,
  IPPI_INTER_CUBIC = 4,
  IPPI_INTER_SUPER = 8,
};

// Mirror axes. Horizontal flips about the horizontal axis: the picture is
// turned upside down (line y goes to line height - 1 - y). Vertical flips
// about the vertical axis: left and right change places. Both does both.
typedef enum { ippAxsHorizontal = 0, ippAxsVertical = 1, ippAxsBoth = 2 } IppiAxis;

// Composition rules of the alpha primitives. The *Premul forms are not
// served and answer ippStsAlphaTypeErr.
typedef enum {
  ippAlphaOver = 0,
  ippAlphaIn = 1,
  ippAlphaOut = 2,
  ippAlphaATop = 3,
  ippAlphaXor = 4,
  ippAlphaPlus = 5,
  ippAlphaOverPremul = 6,
  ippAlphaInPremul = 7,
  ippAlphaOutPremul = 8,
  ippAlphaATopPremul = 9,
  ippAlphaXorPremul = 10,
  ippAlphaPlusPremul = 11,
} IppiAlphaType;

// Rounding of float to integer conversions. ippRndZero truncates toward zero,
// ippRndNear rounds to the nearest integer with ties to even, ippRndFinancial
// rounds to the nearest with ties away from zero.
typedef enum { ippRndZero = 0, ippRndNear = 1, ippRndFinancial = 2 } IppRoundMode;

// The largest side of a picture.
constexpr int kIppMaxSide = 65535;

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_TYPES_H_
