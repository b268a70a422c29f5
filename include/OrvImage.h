// OrvImage: every picture operation of the library.
//
// A picture is a byte pointer with a width, a height and a signed step in
// bytes: positive when the first line in memory is the display's top, negative
// when the picture is stored bottom-up. The pointer is always the lowest
// address of the buffer. For planar formats the step is the Y plane's and the
// chroma planes follow without gap, with half of it.
//
// Results of picture operations: 0 success, 1 no memory, 2 destination too
// small (nothing written), 3 invalid or unsupported, 4 processing failed.
// Pictures are limited to 65535 pixels a side and to steps and byte sizes that
// fit in 31 bits; beyond that an operation answers 3 before touching anything.
#ifndef ORV_IMAGE_H_
#define ORV_IMAGE_H_

#include <OrvExport.h>
#include <OrvIppTypes.h>
#include <OrvMemory.h>
#include <OrvPlatformTypes.h>

#include <cstdint>
#include <vector>

namespace orv {
class ColorSpaceConverter;
namespace image {
struct ConversionAccess;
}  // namespace image
}  // namespace orv

class ORV_API OrvImage {
 public:
  typedef orv::ipp::IppiSize IppiSize;
  typedef orv::ipp::IppiRect IppiRect;

  // Result codes of every picture operation.
  enum {
    ORV_IMG_OK = 0,
    ORV_IMG_NO_MEMORY = 1,
    ORV_IMG_DST_TOO_SMALL = 2,
    ORV_IMG_INVALID = 3,
    ORV_IMG_FAILED = 4,
  };

  // Pixel formats. The numbers are part of the interface.
  enum COLOR_FORMAT_TYPE : int32_t {
    CF_CCIR601YUY2 = 0,               // packed 4:2:2 Y0 Cb Y1 Cr, studio range, BT.601
    CF_BT709YUY2 = 1,                 // as 0, BT.709
    CF_RGB24 = 2,                     // packed B G R, full range
    CF_RGB32 = 3,                     // packed B G R X, X written as 0
    CF_TavoShiftedStraightRGB24 = 4,  // B G R with black 0 and white 219
    CF_TavoShiftedStraightRGB32 = 5,  // B G R X with black 0 and white 219
    CF_YUV420 = 6,                    // planar Y, Cb, Cr; BT.601
    CF_BT709YUV420 = 7,               // planar Y, Cb, Cr; BT.709
    CF_YV12 = 8,                      // planar Y, Cr, Cb; BT.601
    CF_VUYA = 9,                      // packed Cr Cb Y A; A is a transparency (0 opaque)
    CF_RGBA = 10,                     // packed B G R A; A is an opacity (255 opaque)
    CF_YUY2A = 11,                    // a CCIR601 YUY2 picture, then one alpha byte a pixel
  };

  enum SCAN_TYPE : int32_t {
    SCAN_PROGRESSIVE = 0,
    SCAN_TOP_FIELD_FIRST = 1,
    SCAN_BOTTOM_FIELD_FIRST = 2,
  };

  enum FIELD_TYPE : int32_t {
    FIELD_FRAME = 0,   // the whole picture
    FIELD_TOP = 1,     // the first line and every second line after it
    FIELD_BOTTOM = 2,  // the second line and every second line after it
  };

  enum DEINTERLACE_MODE : int32_t {
    DEINTERLACE_LINE_DOUBLE = 0,
    DEINTERLACE_FIELD_RESIZE = 1,
  };

  enum INTERPOLATION_MODE : int32_t {
    INTERPOLATION_NEAREST = 0,
    INTERPOLATION_LINEAR = 1,
    INTERPOLATION_CUBIC = 2,
    INTERPOLATION_AUTO = 3,
    INTERPOLATION_TAVO = 4,
    INTERPOLATION_VRSCL_FIELD = 5,
    INTERPOLATION_VRSCL_FRAME = 6,
  };

  enum ROTATE_MODE : int32_t {
    ROTATE_NONE = 0,
    ROTATE_180 = 1,
    ROTATE_90 = 2,
    ROTATE_270 = 3,
  };

  struct PICTURE_INFO {
    uint32_t size;  // bytes; in a destination: capacity in, bytes produced out
    uint32_t width;
    uint32_t height;
    int32_t step;      // 0 asks the size operations for the format's own step
    uint32_t aspectX;  // 0 stands for width
    uint32_t aspectY;  // 0 stands for height
    SCAN_TYPE scanType;
    COLOR_FORMAT_TYPE colorFormat;
  };

  struct CONVERT_MODE {
    bool keepAspect;
    bool convertInterlace;
    INTERPOLATION_MODE interpolation;
    DEINTERLACE_MODE deinterlace;
  };

  // Six planar work planes (4:2:2) for a YUY2 resize through the primitives.
  struct TEMP_PLANAR_FORMAT {
    uint8_t* srcY;
    uint8_t* srcU;
    uint8_t* srcV;
    uint8_t* dstY;
    uint8_t* dstU;
    uint8_t* dstV;
    int32_t srcStepY;
    int32_t srcStepU;
    int32_t srcStepV;
    int32_t dstStepY;
    int32_t dstStepU;
    int32_t dstStepV;
  };

  // The plan of one conversion.
  struct CONVERT_INFO {
    uint32_t resizeKind;     // 0 none, 1 frame, 2 each field, 3 top field only, 4 bottom only
    uint32_t interlaceKind;  // 0 none, 1/2 de-interlace (first field even/odd lines), 3 swap
    int32_t srcWidth;
    int32_t srcHeight;
    int32_t dstWidth;
    int32_t dstHeight;
    uint32_t srcStep;
    uint32_t dstStep;
    int32_t srcTrimX;
    int32_t dstMarginX;
    int32_t dstMarginY;
    double xFactor;
    double yFactor;
    OrvMemory* intermediate;
    TEMP_PLANAR_FORMAT* temp;
    void* vrscl;
  };

  // The plan of an instance resize.
  struct RESIZE_INFO {
    IppiSize srcSize;
    IppiSize dstSize;
    IppiRect srcRect;
    IppiRect dstRect;
    int32_t srcStep;
    int32_t dstStep;
    int32_t srcTrimX;
    int32_t dstMarginX;
    int32_t dstMarginY;
    bool needResize;
    double xFactor;
    double yFactor;
    INTERPOLATION_MODE interpolation;
    TEMP_PLANAR_FORMAT temp;
  };

  OrvImage();
  virtual ~OrvImage();
  OrvImage(const OrvImage&) = delete;
  OrvImage& operator=(const OrvImage&) = delete;

  // ---- Picture model ----------------------------------------------------

  // Bits per pixel of a format; 0 for an unknown value.
  static unsigned long GetBitPixel(COLOR_FORMAT_TYPE format);
  // The default step: the width for planar formats, the 4-byte aligned line
  // length for YUY2 formats, and minus that for RGB-like formats and VUYA,
  // which are bottom-up by default. 0 for an unknown format or a size past the
  // limits.
  static int GetGenericStep(COLOR_FORMAT_TYPE format, unsigned long width, unsigned long height);
  // The byte size of a picture with the default step, and through the optional
  // pointers that step and the bits per pixel. 0 (and zeros written) for an
  // unknown format or a size past the limits.
  static unsigned long GetGenericSize(COLOR_FORMAT_TYPE format, unsigned long width,
                                      unsigned long height, int* step, int* bitsPerPixel);
  // The byte size with a given step (its sign plays no part; 0 means the
  // default). 0 for an unknown format or a size past the limits.
  static unsigned long GetPictureSize(COLOR_FORMAT_TYPE format, unsigned long width,
                                      unsigned long height, int step);
  // Fills a picture with black (Y 16, chroma 127; RGB 0). `transparent` sets
  // the alpha of CF_VUYA (255), CF_RGBA (0) and CF_YUY2A (0). Step 0 means the
  // default step; its sign plays no part. A null picture or a size past the
  // limits writes nothing.
  static void ClearPicture(unsigned char* picture, COLOR_FORMAT_TYPE format, unsigned long width,
                           unsigned long height, int step, bool transparent);
  // True when the picture is closer to 16:9 than to 4:3 (and when a side is 0).
  static bool IsNearWideAspect(unsigned long width, unsigned long height);

  // ---- Format-pair conversions -------------------------------------------
  //
  // One function for each ordered pair of pixel formats that the library
  // serves, named by source and destination. Every one of them:
  //  - answers 3 for a width or height of 0 or above 65535, a step that does
  //    not hold one line of its picture, or a size beyond 31 bits, before
  //    anything else;
  //  - with a null `src` or `dst` stores the required destination size R in
  //    *dstSize and answers 3 (the forwarders to the 4:2:0 converter, marked
  //    below, answer 3 without storing it);
  //  - answers 2 with nothing written when *dstSize is below R;
  //  - stores R in *dstSize, converts, and turns the picture upside down when
  //    the two steps have opposite signs;
  //  - on a failure after that clears the R bytes of `dst` and answers 1
  //    (memory) or 4 (processing).
  // R is |dstStep| x height for packed output, (|dstStep| + |dstStep/2|) x
  // height for planar output and (|dstStep| + A(8)) x height for CF_YUY2A
  // output, A(8) being the width rounded up to a multiple of 4.
  // `progressive` false keeps the two fields of an interlaced picture apart
  // wherever chroma is resampled vertically.

  static unsigned long YUY2AToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep);
  static unsigned long YUY2AToRGBA(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToRGB24(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToRGB32(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToRGBA(unsigned char* const src, unsigned char* dst,
                                         unsigned long* dstSize, unsigned long width,
                                         unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToTavoShiftedStraightRGB24(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToTavoShiftedStraightRGB32(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToVUYA(unsigned char* const src, unsigned char* dst,
                                         unsigned long* dstSize, unsigned long width,
                                         unsigned long height, int srcStep, int dstStep);
  static unsigned long CCIR601YUY2ToYUY2A(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB24ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB32ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB24ToYUY2A(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB32ToYUY2A(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep);
  static unsigned long RGBAToYUY2A(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep);
  static unsigned long TavoShiftedStraightRGB24ToCCIR601YUY2(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep);
  static unsigned long TavoShiftedStraightRGB32ToCCIR601YUY2(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep);
  static unsigned long TavoShiftedStraightRGB24ToYUY2A(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long TavoShiftedStraightRGB32ToYUY2A(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long RGB24ToRGB32(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB24ToRGBA(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB32ToRGB24(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB32ToRGBA(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep);
  static unsigned long RGBAToRGB24(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep);
  static unsigned long RGBAToRGB32(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep);
  static unsigned long TavoShiftedStraightRGB24ToTavoShiftedStraightRGB32(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep);
  static unsigned long TavoShiftedStraightRGB32ToTavoShiftedStraightRGB24(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep);
  static unsigned long RGB24ToTavoShiftedStraightRGB24(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long RGB24ToTavoShiftedStraightRGB32(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long RGB32ToTavoShiftedStraightRGB24(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long RGB32ToTavoShiftedStraightRGB32(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long TavoShiftedStraightRGB24ToRGB24(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long TavoShiftedStraightRGB32ToRGB24(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long TavoShiftedStraightRGB24ToRGB32(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long TavoShiftedStraightRGB32ToRGB32(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep);
  static unsigned long TavoShiftedStraightRGB24ToRGBA(unsigned char* const src, unsigned char* dst,
                                                      unsigned long* dstSize, unsigned long width,
                                                      unsigned long height, int srcStep,
                                                      int dstStep);
  static unsigned long TavoShiftedStraightRGB32ToRGBA(unsigned char* const src, unsigned char* dst,
                                                      unsigned long* dstSize, unsigned long width,
                                                      unsigned long height, int srcStep,
                                                      int dstStep);

  // With `progressive`.
  static unsigned long YUV420ToRGB32(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive);
  static unsigned long YUV420ToRGBA(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep,
                                    bool progressive);
  static unsigned long YV12ToRGBA(unsigned char* const src, unsigned char* dst,
                                  unsigned long* dstSize, unsigned long width, unsigned long height,
                                  int srcStep, int dstStep, bool progressive);
  static unsigned long YUV420ToTavoShiftedStraightRGB24(unsigned char* const src,
                                                        unsigned char* dst, unsigned long* dstSize,
                                                        unsigned long width, unsigned long height,
                                                        int srcStep, int dstStep, bool progressive);
  static unsigned long YUV420ToTavoShiftedStraightRGB32(unsigned char* const src,
                                                        unsigned char* dst, unsigned long* dstSize,
                                                        unsigned long width, unsigned long height,
                                                        int srcStep, int dstStep, bool progressive);
  static unsigned long YUV420ToVUYA(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep,
                                    bool progressive);
  static unsigned long YUV420ToYUY2A(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive);
  static unsigned long YV12ToYUY2A(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep,
                                   bool progressive);
  static unsigned long RGB24ToYV12(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep,
                                   bool progressive);
  static unsigned long RGB32ToYV12(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep,
                                   bool progressive);
  static unsigned long TavoShiftedStraightRGB24ToYV12(unsigned char* const src, unsigned char* dst,
                                                      unsigned long* dstSize, unsigned long width,
                                                      unsigned long height, int srcStep,
                                                      int dstStep, bool progressive);
  static unsigned long TavoShiftedStraightRGB32ToYV12(unsigned char* const src, unsigned char* dst,
                                                      unsigned long* dstSize, unsigned long width,
                                                      unsigned long height, int srcStep,
                                                      int dstStep, bool progressive);

  // The 4:2:0 converter path: these forward to the colour kernels and answer 3
  // without storing a size when a picture pointer is null. `converter` may be
  // null, and a temporary converter is made then. The converter is a type of
  // the library's inside, so these stay inside too: they are not exported.
  ORV_HIDDEN static unsigned long RGB24ToYUV420(unsigned char* const src, unsigned char* dst,
                                                unsigned long* dstSize, unsigned long width,
                                                unsigned long height, int srcStep, int dstStep,
                                                bool progressive,
                                                orv::ColorSpaceConverter* converter);
  ORV_HIDDEN static unsigned long RGB32ToYUV420(unsigned char* const src, unsigned char* dst,
                                                unsigned long* dstSize, unsigned long width,
                                                unsigned long height, int srcStep, int dstStep,
                                                bool progressive,
                                                orv::ColorSpaceConverter* converter);
  ORV_HIDDEN static unsigned long TavoShiftedStraightRGB24ToYUV420(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep, bool progressive,
      orv::ColorSpaceConverter* converter);
  ORV_HIDDEN static unsigned long TavoShiftedStraightRGB32ToYUV420(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep, bool progressive,
      orv::ColorSpaceConverter* converter);
  ORV_HIDDEN static unsigned long CCIR601YUY2ToYUV420(unsigned char* const src, unsigned char* dst,
                                                      unsigned long* dstSize, unsigned long width,
                                                      unsigned long height, int srcStep,
                                                      int dstStep, bool progressive,
                                                      orv::ColorSpaceConverter* converter);

  // The same conversions for applications, with a converter made per call.
  static unsigned long RGB24ToYUV420(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive);
  static unsigned long RGB32ToYUV420(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive);
  static unsigned long TavoShiftedStraightRGB24ToYUV420(unsigned char* const src,
                                                        unsigned char* dst, unsigned long* dstSize,
                                                        unsigned long width, unsigned long height,
                                                        int srcStep, int dstStep, bool progressive);
  static unsigned long TavoShiftedStraightRGB32ToYUV420(unsigned char* const src,
                                                        unsigned char* dst, unsigned long* dstSize,
                                                        unsigned long width, unsigned long height,
                                                        int srcStep, int dstStep, bool progressive);
  static unsigned long CCIR601YUY2ToYUV420(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep,
                                           bool progressive);

  // Short forms of conversions that also work on one field (see the private
  // full forms): these convert the whole frame.
  static unsigned long YUV420ToRGB24(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive);
  static unsigned long YUV420ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep,
                                           bool progressive);
  static unsigned long CCIR601YUY2ToYV12(unsigned char* const src, unsigned char* dst,
                                         unsigned long* dstSize, unsigned long width,
                                         unsigned long height, int srcStep, int dstStep,
                                         bool progressive);
  static unsigned long YUV420ToYV12(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep);

  // ---- Level conversions between BT.601 and BT.709 --------------------------
  //
  // Re-express the colours of a picture in place, in integer arithmetic with
  // 13 fractional bits; results are kept within 1..254. For the YUY2 forms `p0`
  // is the picture and `p1`, `p2` are not used; for the 4:2:0 forms they are
  // the Y, Cb and Cr planes, `step` being the Y step and half of it the chroma
  // step. `step` must be positive and hold a line; anything else (or a null
  // plane, or a size above 65535) leaves the picture untouched.
  static void CCIR601YUY2toBT709YUY2(unsigned char* p0, unsigned char* p1, unsigned char* p2,
                                     unsigned long width, unsigned long height, int step);
  static void BT709YUY2toCCIR601YUY2(unsigned char* p0, unsigned char* p1, unsigned char* p2,
                                     unsigned long width, unsigned long height, int step);
  static void YUV420toBT709YUV420(unsigned char* p0, unsigned char* p1, unsigned char* p2,
                                  unsigned long width, unsigned long height, int step);
  static void BT709YUV420toYUV420(unsigned char* p0, unsigned char* p1, unsigned char* p2,
                                  unsigned long width, unsigned long height, int step);

  // ---- Colour-conversion dispatch ------------------------------------------

  // A BT.709 YUY2 picture into CF_RGB24, CF_RGB32, CF_RGBA or one of the
  // shifted formats, with the BT.709 matrix of the colour kernels. Unlike the
  // format-pair family it answers 3 for a capacity below |dstStep| x height.
  static unsigned long Bt709YUY2ToRGB(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive, COLOR_FORMAT_TYPE dstFormat);
  // The same for a BT.709 4:2:0 picture (planes Y, Cb, Cr; `srcStep` the Y step).
  static unsigned long Bt709YUV420ToRGB(unsigned char* const src, unsigned char* dst,
                                        unsigned long* dstSize, unsigned long width,
                                        unsigned long height, int srcStep, int dstStep,
                                        bool progressive, COLOR_FORMAT_TYPE dstFormat);
  // A resize without colour conversion, by format: the YUY2 formats through
  // ResizeYUY2, the 24-bit RGB formats through ResizeRGB24, the 32-bit RGB
  // formats and CF_VUYA through ResizeRGB32, the planar formats through
  // ResizeYUV420. CF_RGBA, CF_YUY2A and unknown values answer 3.
  static unsigned long Resize(unsigned char* const src, unsigned char* dst, unsigned long* dstSize,
                              unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                              unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                              COLOR_FORMAT_TYPE format, INTERPOLATION_MODE interpolation);

  // ---- Resizing through the image primitives ------------------------------

  // Resize a picture to another size. `size` is the capacity in, bytes
  // produced out; a null picture stores the required size and answers 3.
  // Opposite step signs turn the picture. INTERPOLATION_TAVO uses the own
  // scaler for YUV420 and YUY2; other modes the primitives.
  static unsigned long ResizeYUV420(unsigned char* src, unsigned char* dst, unsigned long* size,
                                    unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                    unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                    INTERPOLATION_MODE mode);
  static unsigned long ResizeYUY2(unsigned char* src, unsigned char* dst, unsigned long* size,
                                  unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                  unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                  INTERPOLATION_MODE mode);
  static unsigned long ResizeRGB24(unsigned char* src, unsigned char* dst, unsigned long* size,
                                   unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                   unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                   INTERPOLATION_MODE mode);
  static unsigned long ResizeRGB32(unsigned char* src, unsigned char* dst, unsigned long* size,
                                   unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                   unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                   INTERPOLATION_MODE mode);

  // Plans an instance resize between two fixed sizes (with the trims and
  // margins of the fixed video rasters), or between two rectangles.
  unsigned long Initialize(unsigned long srcWidth, unsigned long srcHeight, unsigned long dstWidth,
                           unsigned long dstHeight, INTERPOLATION_MODE mode);
  unsigned long InitializeEx(unsigned long srcWidth, unsigned long srcHeight, RECT srcRect,
                             unsigned long dstWidth, unsigned long dstHeight, RECT dstRect,
                             INTERPOLATION_MODE mode, bool reserved, bool explicitDstRect);
  // Run the plan of Initialize or InitializeEx on pictures with the dword-aligned
  // line of their format (RGB pictures bottom-up).
  unsigned long ResizeYUY2(unsigned char* src, unsigned char* dst, unsigned long* size);
  unsigned long ResizeRGB24(unsigned char* src, unsigned char* dst, unsigned long* size);
  unsigned long ResizeRGB32(unsigned char* src, unsigned char* dst, unsigned long* size);

  // ---- Field operations and de-interlacing --------------------------------
  //
  // A memory line is counted from the lowest address, whatever the sign of the
  // step. `dstSize` bounds every write. All answer 3 for a null picture.

  // Writes the lines of one field, packed, to `dst`. `top` means the field of
  // the display's first line in either vertical direction.
  static unsigned long GetFieldYUV420(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      bool top);
  static unsigned long GetFieldYUY2(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                    unsigned long width, unsigned long height, int step, bool top);
  static unsigned long GetFieldRGB24(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                     unsigned long width, unsigned long height, int step, bool top);
  static unsigned long GetFieldRGB32(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                     unsigned long width, unsigned long height, int step, bool top);
  // Interleaves two field pictures, laid out as GetField lays them out.
  static unsigned long MakeFrameYUV420(unsigned char* topFieldPicture,
                                       unsigned char* bottomFieldPicture, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step);
  static unsigned long MakeFrameYUY2(unsigned char* topFieldPicture,
                                     unsigned char* bottomFieldPicture, unsigned char* dst,
                                     unsigned long dstSize, unsigned long width,
                                     unsigned long height, int step);
  static unsigned long MakeFrameRGB24(unsigned char* topFieldPicture,
                                      unsigned char* bottomFieldPicture, unsigned char* dst,
                                      unsigned long dstSize, unsigned long width,
                                      unsigned long height, int step);
  static unsigned long MakeFrameRGB32(unsigned char* topFieldPicture,
                                      unsigned char* bottomFieldPicture, unsigned char* dst,
                                      unsigned long dstSize, unsigned long width,
                                      unsigned long height, int step);
  // Moves the picture one line down or up, so that its fields change places.
  // `src` may equal `dst`.
  static unsigned long FieldSwapYUV420(unsigned char* src, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step, SCAN_TYPE scan);
  static unsigned long FieldSwapYUY2(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                     unsigned long width, unsigned long height, int step,
                                     SCAN_TYPE scan);
  static unsigned long FieldSwapRGB24(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      SCAN_TYPE scan);
  static unsigned long FieldSwapRGB32(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      SCAN_TYPE scan);
  // Makes a frame of one field: by doubling the earlier field's lines, or by
  // stretching the later field to the full height with a resizer.
  static unsigned long DeInterlaceYUV420(unsigned char* src, unsigned char* dst,
                                         unsigned long dstSize, unsigned long width,
                                         unsigned long height, int step, SCAN_TYPE scan,
                                         DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation);
  static unsigned long DeInterlaceYUY2(unsigned char* src, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step, SCAN_TYPE scan,
                                       DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation);
  static unsigned long DeInterlaceRGB24(unsigned char* src, unsigned char* dst,
                                        unsigned long dstSize, unsigned long width,
                                        unsigned long height, int step, SCAN_TYPE scan,
                                        DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation);
  static unsigned long DeInterlaceRGB32(unsigned char* src, unsigned char* dst,
                                        unsigned long dstSize, unsigned long width,
                                        unsigned long height, int step, SCAN_TYPE scan,
                                        DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation);

  // ---- Conversion pipeline ------------------------------------------------
  //
  // One call changes format, size, aspect, scan type, field order and vertical
  // direction at once, in three stages: colour conversion at the source's
  // size, then a resize and a scan stage (field swap or de-interlace) in the
  // destination's format.

  // Works out a plan for the pair of pictures and the mode, and keeps it with
  // its buffers (described only; memory comes at the first Convert).
  // dst->size is overwritten with the bytes a destination of this plan takes,
  // the whole picture as it is laid out (a CF_YUY2A alpha plane counts with
  // its 4-byte aligned lines). A step of 0 stands for the format's own step.
  // 3 for a null argument, an unknown enumeration value or a size past the
  // limits. A format pair that no plan serves answers 0 but leaves the plan
  // invalid: the next Convert answers 4.
  unsigned long InitializeConvert(PICTURE_INFO* src, PICTURE_INFO* dst, CONVERT_MODE* mode);
  // Runs the plan on one picture. 4 without a valid plan, 3 for a null
  // picture or for src equal to dst where the plan resizes or changes format
  // and nothing else. The source may be changed in place (a field swap before
  // a conversion into CF_YUV420). A failed frame leaves the plan usable.
  unsigned long Convert(unsigned char* const src, unsigned char* dst);
  // The same for one picture, with a plan that lives for the call (the
  // scaler of the VRSCL modes too). With `dst` null the required size is
  // stored in dstInfo->size and the answer is 0; a capacity below it answers
  // 2 with nothing written.
  static unsigned long Convert(unsigned char* const src, unsigned char* dst, PICTURE_INFO* srcInfo,
                               PICTURE_INFO* dstInfo, CONVERT_MODE* mode);
  // Frees the memory of the plan's work buffers; the plan stays valid and the
  // next Convert takes its memory back.
  void ReleaseConvertBuffer();

  // ---- Picture copy, rotate, delta and bitmaps ----------------------------

  // Copies a picture to another step. `dstSize` is in and out: the capacity on
  // entry, the bytes required (|dstStep| x height, plus chroma or alpha) on
  // return. A null picture stores the required size and answers 3; a capacity
  // below it answers 2 with nothing written. Opposite step signs turn the
  // picture upside down. `src` may equal `dst`: lines then move in place.
  static unsigned long CopyYUV420(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                  unsigned long width, unsigned long height, int srcStep,
                                  int dstStep);
  static unsigned long CopyYUY2(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                unsigned long width, unsigned long height, int srcStep,
                                int dstStep);
  static unsigned long CopyYUY2A(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                 unsigned long width, unsigned long height, int srcStep,
                                 int dstStep);
  static unsigned long CopyRGB24(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                 unsigned long width, unsigned long height, int srcStep,
                                 int dstStep);
  static unsigned long CopyRGB32(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                 unsigned long width, unsigned long height, int srcStep,
                                 int dstStep);
  // Turns a picture (generic positive lines) by quarter turns, with an optional
  // left-to-right flip. `width` and `height` are the source's.
  static unsigned long RotateRGB24(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                   unsigned long width, unsigned long height, ROTATE_MODE mode,
                                   bool flip);
  static unsigned long RotateRGB32(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                   unsigned long width, unsigned long height, ROTATE_MODE mode,
                                   bool flip);
  // A cheap difference of two dense top-down pictures: the sum of absolute luma
  // differences at one pixel in eight. 0 for null pictures or sizes past the limits.
  static unsigned long GetDeltaFromYUV420(unsigned char* pictureA, unsigned char* pictureB,
                                          unsigned long width, unsigned long height);
  static unsigned long GetDeltaFromYUY2(unsigned char* pictureA, unsigned char* pictureB,
                                        unsigned long width, unsigned long height);
  static unsigned long GetDeltaFromRGB24(unsigned char* pictureA, unsigned char* pictureB,
                                         unsigned long width, unsigned long height);
  static unsigned long GetDeltaFromRGB32(unsigned char* pictureA, unsigned char* pictureB,
                                         unsigned long width, unsigned long height);
  // Expand a 1-, 4- or 8-bit palette bitmap, or a 16/32-bit bit-field bitmap, to
  // 24-bit B G R. A bit count or compression the operation does not serve
  // answers 0 with nothing written (the required size is still stored); a
  // BITMAPINFO that disagrees with itself or with the steps answers 3.
  static unsigned long PaletteToRGB24(unsigned char* src, unsigned char* dst,
                                      unsigned long* dstSize, BITMAPINFO* info, int srcStep,
                                      int dstStep);
  static unsigned long BitFieldsToRGB24(unsigned char* src, unsigned char* dst,
                                        unsigned long* dstSize, BITMAPINFO* info, int srcStep,
                                        int dstStep);

  // ---- Mask copy -----------------------------------------------------------
  //
  // `dst` holds a picture made from `srcA` and `srcB` (a blend, or a field
  // taken from the wrong parity). Wherever A and B agree (the compared value of
  // both lines of a pair differs by less than 5), A's pixels are put back into
  // the chosen field of `dst`. The flat bands at the top and bottom of the
  // picture (letterbox bars) are found, and the whole lines at their inner
  // edges are put back from A, so that the edges stay clean. Compared value:
  // the Y byte for YUV420 (Y plane only) and YUY2 (chroma stays), the luma
  // (59 G + 30 R + 11 B) / 100 for RGB24 and RGB32 (the fourth byte stays).
  // A step of 0 is the format's generic step (bottom-up for RGB). `dstSize`
  // bounds every write: a line of dst that does not fit in it is left alone,
  // by the pixel test and by the edge-line copies. A null picture, an unknown field,
  // a step shorter than a line or a size past the limits answers 3 with
  // nothing written.
  static unsigned long MaskCopyYUV420(unsigned char* const srcA, unsigned char* const srcB,
                                      unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      FIELD_TYPE field);
  static unsigned long MaskCopyYUY2(unsigned char* const srcA, unsigned char* const srcB,
                                    unsigned char* dst, unsigned long dstSize, unsigned long width,
                                    unsigned long height, int step, FIELD_TYPE field);
  static unsigned long MaskCopyRGB24(unsigned char* const srcA, unsigned char* const srcB,
                                     unsigned char* dst, unsigned long dstSize, unsigned long width,
                                     unsigned long height, int step, FIELD_TYPE field);
  static unsigned long MaskCopyRGB32(unsigned char* const srcA, unsigned char* const srcB,
                                     unsigned char* dst, unsigned long dstSize, unsigned long width,
                                     unsigned long height, int step, FIELD_TYPE field);

  // ---- Blend and alpha composition -----------------------------------------
  //
  // Blend: `ratio` is the weight of the first picture. It becomes two 8-bit
  // alphas, a = ratio x 256 and b = (1 - ratio) x 256, each truncated and
  // limited to 0..255 (so 0.5 gives 128 and 128, which may add up above 255),
  // and every byte becomes min(255, (a x A + b x B) / 255) rounded to nearest.
  // Steps are signed (negative: bottom-up); the pointers are the lowest
  // addresses. A null picture, an unknown field, a step shorter than a line or
  // a size past the limits answers 3 with nothing written; a failing primitive
  // answers 4. Nothing outside the chosen lines is written.

  // In place: dst = ratio x src + (1 - ratio) x dst over the whole picture.
  static unsigned long BlendYUV420(unsigned char* src, unsigned char* dst, unsigned long width,
                                   unsigned long height, int step, float ratio);
  static unsigned long BlendYUY2(unsigned char* src, unsigned char* dst, unsigned long width,
                                 unsigned long height, int step, float ratio);
  static unsigned long BlendRGB24(unsigned char* src, unsigned char* dst, unsigned long width,
                                  unsigned long height, int step, float ratio);
  static unsigned long BlendRGB32(unsigned char* src, unsigned char* dst, unsigned long width,
                                  unsigned long height, int step, float ratio);
  // Two sources: dst = ratio x srcA + (1 - ratio) x srcB on the lines of
  // `field` (counted from the display's top). When srcA and srcB are the same
  // pointer the lines are copied from it unchanged. `size` is neither read nor
  // written. YUV420 mixes the Y lines and the matching chroma lines of both
  // planes; YUY2 and RGB32 mix every byte (the fourth of RGB32 too).
  static unsigned long BlendYUV420(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                   unsigned long* size, unsigned long width, unsigned long height,
                                   int step, FIELD_TYPE field, float ratio);
  static unsigned long BlendYUY2(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                 unsigned long* size, unsigned long width, unsigned long height,
                                 int step, FIELD_TYPE field, float ratio);
  static unsigned long BlendRGB24(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                  unsigned long* size, unsigned long width, unsigned long height,
                                  int step, FIELD_TYPE field, float ratio);
  static unsigned long BlendRGB32(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                  unsigned long* size, unsigned long width, unsigned long height,
                                  int step, FIELD_TYPE field, float ratio);

  // Alpha composition: the first picture over the second by its per-pixel
  // alpha (255 opaque). A null picture or a size past the limits answers 3;
  // a failure after the first write clears the destination and answers 4
  // (1 when a work picture could not be had).

  // `srcRGBA` (B G R A, lines of 4 x width) over `srcRGB` (B G R); `srcRGB`
  // and `dst` have the 4-byte aligned 24-bit line. Top-down.
  static unsigned long AlphaCompRGB24(unsigned char* srcRGBA, unsigned char* srcRGB,
                                      unsigned char* dst, unsigned long width,
                                      unsigned long height);
  // Three B G R A pictures with lines of 4 x width; the result's alpha is
  // that of A over B.
  static unsigned long AlphaCompRGB32(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                      unsigned long width, unsigned long height);
  // With signed steps (0 stands for -4 x width, bottom-up). Pictures of
  // opposite directions are reconciled by flipping through a work picture, or
  // by flipping the result. When srcB is dst their steps must be equal.
  static unsigned long AlphaCompRGB32(unsigned char* srcA, int stepA, unsigned char* srcB,
                                      int stepB, unsigned char* dst, int dstStep,
                                      unsigned long width, unsigned long height);
  // CF_YUY2A pictures packed without padding: YUY2 lines of 2 x width bytes,
  // then at 2 x width x height the alpha lines of width bytes. `srcA` goes
  // over `srcB` on the lines firstLine .. firstLine + lineCount (0: height
  // lines); lines past the picture's last one are not run, and a firstLine
  // past it answers 3. An odd width's lone last pixel is composed with its Y,
  // its one chroma byte and its alpha: nothing past a line is read or written.
  static unsigned long AlphaCompYUY2A(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                      unsigned long width, unsigned long height,
                                      unsigned long firstLine, unsigned long lineCount);

 private:
  // The library's own code (and its tests) reach the private conversions
  // through this door.
  friend struct orv::image::ConversionAccess;

  // ---- Format-pair conversions (full forms) ---------------------------------
  // `field` converts only FIELD_TOP or FIELD_BOTTOM (counted from the
  // display's top) and leaves the other lines as they were; `work` keeps work
  // planes between frames; `converter` is the instance's colour converter.
  ORV_HIDDEN static unsigned long YUV420ToRGB24(unsigned char* const src, unsigned char* dst,
                                                unsigned long* dstSize, unsigned long width,
                                                unsigned long height, int srcStep, int dstStep,
                                                bool progressive, FIELD_TYPE field);
  ORV_HIDDEN static unsigned long YUV420ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                                      unsigned long* dstSize, unsigned long width,
                                                      unsigned long height, int srcStep,
                                                      int dstStep, bool progressive,
                                                      FIELD_TYPE field,
                                                      orv::ColorSpaceConverter* converter);
  ORV_HIDDEN static unsigned long YUV420ToYV12(unsigned char* const src, unsigned char* dst,
                                               unsigned long* dstSize, unsigned long width,
                                               unsigned long height, int srcStep, int dstStep,
                                               FIELD_TYPE field);
  ORV_HIDDEN static unsigned long CCIR601YUY2ToYUV420(
      unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
      unsigned long height, int srcStep, int dstStep, bool progressive, FIELD_TYPE field,
      std::vector<OrvMemory*>* work, orv::ColorSpaceConverter* converter);
  ORV_HIDDEN static unsigned long CCIR601YUY2ToYV12(unsigned char* const src, unsigned char* dst,
                                                    unsigned long* dstSize, unsigned long width,
                                                    unsigned long height, int srcStep, int dstStep,
                                                    bool progressive, FIELD_TYPE field,
                                                    std::vector<OrvMemory*>* work);

  // ---- Colour-conversion dispatch ------------------------------------------
  // Runs the one conversion that serves the pair (srcFormat, dstFormat); 3 for
  // a pair with no route or an unknown format.
  ORV_HIDDEN static unsigned long ColorConvert(unsigned char* const src, unsigned char* dst,
                                               unsigned long* dstSize, unsigned long width,
                                               unsigned long height, COLOR_FORMAT_TYPE srcFormat,
                                               COLOR_FORMAT_TYPE dstFormat, int srcStep,
                                               int dstStep, bool progressive, FIELD_TYPE field,
                                               std::vector<OrvMemory*>* work,
                                               orv::ColorSpaceConverter* converter);
  // The common body of the conversions into CF_YUV420 from formats 0, 2, 3, 4, 5.
  ORV_HIDDEN static unsigned long ColorConvertToYUV420(COLOR_FORMAT_TYPE srcFormat,
                                                       unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep, bool progressive,
                                                       orv::ColorSpaceConverter* converter);

  // Lets the test suite reach the private stages.
  friend struct OrvImageTestAccess;

  // ---- Resizing through the image primitives (private) --------------------
  ORV_HIDDEN static bool GetResizeFactor(IppiSize src, IppiSize dst, double* xFactor,
                                         double* yFactor, int* srcTrimX, int* dstMarginX,
                                         bool* padded);
  ORV_HIDDEN static int GetInterpolation(INTERPOLATION_MODE mode, double xFactor, double yFactor);
  ORV_HIDDEN static bool IppResizeYUV420(unsigned char* src, unsigned char* dst, int srcStep,
                                         int dstStep, IppiSize srcSize, IppiSize dstSize,
                                         IppiRect srcRect, double xFactor, double yFactor,
                                         INTERPOLATION_MODE mode, FIELD_TYPE field, bool sameField);
  ORV_HIDDEN static bool IppResizeYUY2(unsigned char* src, unsigned char* dst, int srcStep,
                                       int dstStep, IppiSize srcSize, IppiSize dstSize,
                                       IppiRect srcRect, double xFactor, double yFactor,
                                       INTERPOLATION_MODE mode, TEMP_PLANAR_FORMAT* temp,
                                       FIELD_TYPE field, bool sameField);
  ORV_HIDDEN static bool IppResizeYUY2Ex(unsigned char* src, unsigned char* dst, int srcStep,
                                         int dstStep, IppiSize srcSize, IppiSize dstSize,
                                         IppiRect srcRect, double xFactor, double yFactor,
                                         INTERPOLATION_MODE mode, TEMP_PLANAR_FORMAT* temp);
  ORV_HIDDEN static bool IppResizePlane(unsigned char* src, unsigned char* dst, int srcStep,
                                        int dstStep, IppiSize srcSize, IppiSize dstSize,
                                        IppiRect srcRect, double xFactor, double yFactor,
                                        INTERPOLATION_MODE mode, FIELD_TYPE field, bool sameField);
  ORV_HIDDEN static bool AllocateTempBuffer(TEMP_PLANAR_FORMAT* temp, IppiSize src, IppiSize dst);
  ORV_HIDDEN static void ReleaseTempBuffer(TEMP_PLANAR_FORMAT* temp);
  ORV_HIDDEN static void ClearResizeInfo(RESIZE_INFO* info);

  // ---- Flat-band search of the mask copy (private) ------------------------
  // One robust colour for each of two lines, from ten samples.
  ORV_HIDDEN static void GetCheckColorYUV420(unsigned char* line1, unsigned char* line2,
                                             unsigned long width, unsigned char& color1,
                                             unsigned char& color2);
  ORV_HIDDEN static void GetCheckColorYUY2(unsigned char* line1, unsigned char* line2,
                                           unsigned long width, unsigned char& color1,
                                           unsigned char& color2);
  ORV_HIDDEN static void GetCheckColorRGB24(unsigned char* line1, unsigned char* line2,
                                            unsigned long width, unsigned char& color1,
                                            unsigned char& color2);
  ORV_HIDDEN static void GetCheckColorRGB32(unsigned char* line1, unsigned char* line2,
                                            unsigned long width, unsigned char& color1,
                                            unsigned char& color2);
  // Updates the walk of the mask copy down a picture by one pair of lines.
  ORV_HIDDEN static void CheckChangeLine(
      unsigned char* line, unsigned char* dstLine, unsigned long width, unsigned long height,
      int step, unsigned long lineNo, unsigned long sum1, unsigned long sum2, unsigned char color1,
      unsigned char color2, unsigned char prevColor, bool& inBand, bool& pastTop,
      unsigned char** src1, unsigned char** src2, unsigned char** dst1, unsigned char** dst2);

  // ---- Blend and alpha composition (private) ------------------------------
  // Float form of the YUY2 blend: dst = dst x (1 - ratio) + src x ratio per
  // Y, Cb and Cr plane, rounded to nearest. Lines are the aligned YUY2 line.
  // False on any failure. The library itself does not use it. Private, so
  // kept out of the exported symbols.
  ORV_HIDDEN static bool BlendYUY2(const unsigned char* src, unsigned char* dst, IppiSize size,
                                   float ratio);

  // ---- Conversion pipeline (private) --------------------------------------
  // Hidden: not part of the library's exported interface.
  // True when a resize is needed (always when keepAspect asks for bars);
  // fills the factors, trims and margins of `info`.
  ORV_HIDDEN static bool GetResizeFactorEx(PICTURE_INFO* src, PICTURE_INFO* dst, bool keepAspect,
                                           CONVERT_INFO* info);
  // Decides the scan stage; may change resizeKind. 3 when a de-interlace
  // mode that the scan stage has no use for is asked for.
  ORV_HIDDEN static unsigned long CheckInterlaceConv(PICTURE_INFO* src, PICTURE_INFO* dst,
                                                     DEINTERLACE_MODE deinterlace,
                                                     CONVERT_INFO* info);
  // Whether a plan serves the format pair; the step and size of the picture
  // the colour stage makes (destination format at the source's size).
  ORV_HIDDEN static bool CheckSupportColorConv(PICTURE_INFO* src, PICTURE_INFO* dst,
                                               unsigned long* step, unsigned long* size);
  // True when the field swap must run on the source before the colour stage.
  ORV_HIDDEN static bool CheckNeedPreFieldSwap(PICTURE_INFO* src, PICTURE_INFO* dst,
                                               CONVERT_INFO* info);
  // Frees everything a plan owns and zeroes it; null is accepted.
  ORV_HIDDEN static void ClearConvertInfo(CONVERT_INFO* info);
  // The stages of a plan after the shortcut for a plan without resize or
  // scan stage, shared by both Convert forms. In place, a source step above
  // `alphaStepLimit` makes the alpha of a CF_YUY2A destination go last.
  ORV_HIDDEN static unsigned long RunConvertStages(unsigned char* src, unsigned char* dst,
                                                   PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                                   CONVERT_MODE* mode, CONVERT_INFO* info,
                                                   int alphaStepLimit,
                                                   std::vector<OrvMemory*>* work,
                                                   orv::ColorSpaceConverter* converter);

  // ---- Pipeline stages (private) ------------------------------------------
  // Bring a picture already in the destination's format (at the source's
  // size, step magnitude info->srcStep, direction of srcInfo->step) to the
  // destination's size, direction and scan type. `src` may equal `dst`.
  ORV_HIDDEN static unsigned long ConvertYUV420(unsigned char* src, unsigned char* dst,
                                                PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                                CONVERT_MODE* mode, CONVERT_INFO* info);
  ORV_HIDDEN static unsigned long ConvertYUY2(unsigned char* src, unsigned char* dst,
                                              PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                              CONVERT_MODE* mode, CONVERT_INFO* info);
  ORV_HIDDEN static unsigned long ConvertRGB24(unsigned char* src, unsigned char* dst,
                                               PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                               CONVERT_MODE* mode, CONVERT_INFO* info);
  ORV_HIDDEN static unsigned long ConvertRGB32(unsigned char* src, unsigned char* dst,
                                               PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                               CONVERT_MODE* mode, CONVERT_INFO* info);
  // The whole pipeline for the alpha plane of a CF_YUY2A destination.
  ORV_HIDDEN static unsigned long SetAlphaYUY2A(unsigned char* src, unsigned char* dst,
                                                PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                                CONVERT_MODE* mode, CONVERT_INFO* info);
  // Nearest-neighbour resize of packed pixels, never reading past the
  // source's last line or pixel. Steps are magnitudes. False for bad input.
  ORV_HIDDEN static bool NearestResize(int bitsPerPixel, const unsigned char* src, int srcWidth,
                                       int srcHeight, int srcStep, unsigned char* dst, int dstWidth,
                                       int dstHeight, int dstStep);

  bool m_resizeValid;
  RESIZE_INFO m_resizeInfo;
  bool m_convertValid;
  PICTURE_INFO m_srcPicture;
  PICTURE_INFO m_dstPicture;
  CONVERT_MODE m_convertMode;
  CONVERT_INFO m_convertInfo;
  std::vector<OrvMemory*> m_workBuffers;
  orv::ColorSpaceConverter* m_colorConverter;

  // ---- Own scaler (private) ----
  // The resizer of INTERPOLATION_TAVO: two separable passes, horizontal first,
  // each by copy, halving, exact area weighting, repetition, doubling or
  // four-tap cubic interpolation, chosen by the ratio of the lengths. Steps are
  // magnitudes. `srcTrimX` source columns are dropped and `dstMarginX` /
  // `dstMarginY` destination columns / lines left untouched, half on each side.
  // `field` selects the source lines; with `sameField` the field goes into the
  // same field of the destination, otherwise it fills the whole destination.
  // The YUY2 form treats chroma as signed around 128 and refuses odd lengths
  // across. False for invalid arguments (nothing written) or a failed work
  // allocation; see image/tavo_resize.h. Private, so kept out of the exported
  // symbols.
  ORV_HIDDEN static bool TavoResizeYUV420(const unsigned char* src, unsigned char* dst, int srcStep,
                                          int dstStep, IppiSize srcSize, IppiSize dstSize,
                                          int srcTrimX, int dstMarginX, int dstMarginY,
                                          FIELD_TYPE field, bool sameField);
  ORV_HIDDEN static bool TavoResizeYUY2(const unsigned char* src, unsigned char* dst, int srcStep,
                                        int dstStep, IppiSize srcSize, IppiSize dstSize,
                                        int srcTrimX, int dstMarginX, int dstMarginY,
                                        FIELD_TYPE field, bool sameField);
};

#endif  // ORV_IMAGE_H_
