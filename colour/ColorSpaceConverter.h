// ColorSpaceConverter: the one door to the colour kernels.
//
// At start-up it reads the processor's feature bits and creates one object of
// each kernel family in the fastest form the processor runs; per call it turns
// the caller's format code and scan value into a layout word and a mode word,
// and dispatches on them to one operation of a kernel object.
//
// Forms and levels: the named forms (Cto420_MMX, C420toRGB2_KNI,
// C420toRGB_SSE2, ...) are chosen by the processor flag word, as their bytes
// are defined per form; the row kernels inside them run at a SimdLevel
// (DetectSimdLevel() unless one is passed), which changes speed, never bytes.
// Tests pass flags and a level explicitly to walk every combination.
//
// No MMX registers are used by any form, so there is no MMX state to clear;
// `usesMmxState` records which forms were chosen.
#ifndef ORV_COLOUR_COLORSPACECONVERTER_H_
#define ORV_COLOUR_COLORSPACECONVERTER_H_

#include <cstdint>

#include "colour/C420toRGB.h"
#include "colour/C420toRGB2.h"
#include "colour/Cto420.h"
#include "foundation/cpu_info.h"

namespace orv {

// Converter format codes.
enum : uint32_t {
  CSC_I420 = 0x1000000,
  CSC_YV12 = 0x2000000,
  CSC_YUY2 = 0x3000000,
  CSC_RGB24 = 0x30000001,
  CSC_SHIFTED_RGB24 = 0x30300001,
  CSC_RGB32 = 0x40000001,
  CSC_SHIFTED_RGB32 = 0x40300001,
  CSC_RGBA = 0x80000001,
  CSC_SHIFTED_RGBA = 0x80300001,
};

// Scan values; any value but 1 counts as progressive.
enum : uint32_t { CSC_SCAN_INTERLACED = 1, CSC_SCAN_PROGRESSIVE = 2 };

// Layout word of one side of a dispatch.
enum : uint32_t {
  LAYOUT_INTERLACED = 0x10,
  LAYOUT_PROGRESSIVE = 0x20,
  LAYOUT_RGB555 = 0x10000,
  LAYOUT_RGB565 = 0x20000,
  LAYOUT_RGB24 = 0x40000,
  LAYOUT_RGB32 = 0x80000,
  LAYOUT_YUY2 = 0x200000,
  LAYOUT_PLANAR_420 = 0x400000,
  LAYOUT_PLANAR_422 = 0x800000,
  LAYOUT_UYVY = 0x4000000,
  LAYOUT_PLANES_VU = 0x8000000,
  LAYOUT_NV12 = 0x10000000,
};

// Mode word: arithmetic and walking direction.
enum : uint32_t {
  MODE_STRAIGHT = 0x1,
  MODE_EXPAND = 0x2,
  MODE_VIEW_Y = 0x4,
  MODE_VIEW_U = 0x8,
  MODE_VIEW_V = 0x80,
  MODE_OUT_TOPDOWN = 0x100,
  MODE_IN_BOTTOMUP = 0x200,
  MODE_LINE_SHIFT = 0x2000,
};

// Processor flag word.
enum : uint32_t {
  CPU_MMX = 0x20,
  CPU_KNI = 0x200,
  CPU_SSE_OS = 0x400,
  CPU_SSE2 = 0x2000,
};

// Reads the processor's identification into the flag word above.
uint32_t DetectProcessorFlags();

class ColorKernelSet {
 public:
  ColorKernelSet();
  ~ColorKernelSet();
  ColorKernelSet(const ColorKernelSet&) = delete;
  ColorKernelSet& operator=(const ColorKernelSet&) = delete;

  // Creates the forms for this processor (1), or reports 0 with none created.
  int32_t Initialize();
  // The same for a given flag word and row-kernel level.
  int32_t Initialize(uint32_t processorFlags, SimdLevel level);

  void SetBlackLevel(int32_t value);

  // Packed source to planar destination. A and B are U and V, or V and U when
  // `dstLayout` has LAYOUT_PLANES_VU. 1 on success; 0 for a pair with no
  // operation or a picture the operation's walk does not serve.
  int32_t ConvertToPlanar(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                          uint32_t srcLayout, uint32_t mode, uint8_t* dstY, int32_t yPitch,
                          uint8_t* dstA, int32_t aPitch, uint8_t* dstB, int32_t bPitch,
                          uint32_t dstLayout);
  int32_t ConvertPlanarToPlanar(const uint8_t* srcY, int32_t yPitch, const uint8_t* srcA,
                                int32_t aPitch, const uint8_t* srcB, int32_t bPitch, int32_t width,
                                int32_t height, uint32_t srcLayout, uint32_t mode, uint8_t* dstY,
                                int32_t dstYPitch, uint8_t* dstA, int32_t dstAPitch, uint8_t* dstB,
                                int32_t dstBPitch, uint32_t dstLayout);
  int32_t ConvertFromPlanar(const uint8_t* srcY, int32_t yPitch, const uint8_t* srcA,
                            int32_t aPitch, const uint8_t* srcB, int32_t bPitch, int32_t width,
                            int32_t height, uint32_t srcLayout, uint32_t mode, uint8_t* dst,
                            int32_t dstPitch, uint32_t dstLayout);

  int32_t initialized() const { return initialized_; }
  Cto420* toPlanar() const { return toPlanar_; }
  C420toRGB2* toRgb2() const { return toRgb2_; }
  int32_t blackLevel() const { return blackLevel_; }
  int32_t rgbBlack() const { return rgbBlack_; }
  int32_t usesMmxState() const { return usesMmxState_; }

 private:
  int32_t PlaneView(const uint8_t* srcY, int32_t yPitch, const uint8_t* srcU, int32_t uPitch,
                    const uint8_t* srcV, int32_t vPitch, int32_t width, int32_t height,
                    uint32_t srcLayout, uint32_t mode, uint8_t* dst, int32_t dstPitch,
                    uint32_t dstLayout);

  int32_t initialized_;
  Cto420* toPlanar_;
  C420toRGB2* toRgb2_;
  int32_t blackLevel_;
  int32_t rgbBlack_;
  int32_t usesMmxState_;
  bool haveChoice_;
  uint32_t flags_;
  SimdLevel level_;
};

class ColorSpaceConverter {
 public:
  ColorSpaceConverter();
  ~ColorSpaceConverter();
  ColorSpaceConverter(const ColorSpaceConverter&) = delete;
  ColorSpaceConverter& operator=(const ColorSpaceConverter&) = delete;

  // Creates the kernel set and the RGB converter for this processor.
  bool Initialize();
  // The same for a given flag word and row-kernel level.
  bool Initialize(uint32_t processorFlags, SimdLevel level);

  // Packed picture (RGB24, RGB32, RGBA, their shifted forms, YUY2) to planar
  // 4:2:0. RGB sources are read from their last buffer line up. `size` is the
  // capacity in and the bytes used out: (dstPitch / 2 + dstPitch) x height.
  bool ConvertToYUV420(const uint8_t* src, uint32_t srcPitch, uint32_t width, uint32_t height,
                       uint32_t srcFormat, uint32_t scan, uint8_t* dstY, uint8_t* dstU,
                       uint8_t* dstV, uint32_t dstPitch, uint32_t dstFormat, uint32_t* size);

  // Planar 4:2:0 to I420, YV12, YUY2 or RGB. RGB is written bottom-up. `bt709`
  // 1 asks for the BT.709 matrix; 0 lets the height decide (above 720 lines).
  // A destination code that is none of the CSC_ codes answers false with
  // `size` untouched; a source other than CSC_I420 answers false after `size`
  // was set. The RGB walks need an even width and height (a multiple of 4, at
  // least 8, when interlaced); chromaPitch must be at least yPitch / 2, as the
  // RGB kernels read chroma lines yPitch / 2 apart.
  bool ConvertFromYUV420(const uint8_t* srcY, const uint8_t* srcU, const uint8_t* srcV,
                         uint32_t yPitch, uint32_t chromaPitch, uint32_t width, uint32_t height,
                         uint32_t srcFormat, uint32_t scan, uint32_t bt709, uint8_t* dst,
                         uint32_t dstPitch, uint32_t dstFormat, uint32_t* size);

  ColorKernelSet* kernelSet() const { return kernelSet_; }
  C420toRGB* rgbConverter() const { return rgbConverter_; }

 private:
  bool ConvertFromYUV420ToRGB(const uint8_t* srcY, const uint8_t* srcU, const uint8_t* srcV,
                              uint32_t yPitch, uint32_t width, uint32_t height, uint32_t scan,
                              uint32_t bt709, uint8_t* dst, uint32_t dstPitch, uint32_t dstFormat);
  bool ConvertFromYUV420ToOther(const uint8_t* srcY, const uint8_t* srcU, const uint8_t* srcV,
                                uint32_t yPitch, uint32_t chromaPitch, uint32_t width,
                                uint32_t height, uint32_t scan, uint8_t* dst, uint32_t dstPitch,
                                uint32_t dstFormat);

  ColorKernelSet* kernelSet_;
  C420toRGB* rgbConverter_;
};

}  // namespace orv

#endif  // ORV_COLOUR_COLORSPACECONVERTER_H_
