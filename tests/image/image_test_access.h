// Reaches the private stages of OrvImage from the tests.
#ifndef ORV_TESTS_IMAGE_IMAGE_TEST_ACCESS_H_
#define ORV_TESTS_IMAGE_IMAGE_TEST_ACCESS_H_

#include <OrvImage.h>

struct OrvImageTestAccess {
  using IppiSize = OrvImage::IppiSize;
  static bool GetResizeFactor(IppiSize src, IppiSize dst, double* x, double* y, int* trim,
                              int* margin, bool* padded) {
    return OrvImage::GetResizeFactor(src, dst, x, y, trim, margin, padded);
  }
  static int GetInterpolation(OrvImage::INTERPOLATION_MODE mode, double x, double y) {
    return OrvImage::GetInterpolation(mode, x, y);
  }
  static bool IppResizeYUV420(unsigned char* src, unsigned char* dst, int srcStep, int dstStep,
                              IppiSize srcSize, IppiSize dstSize, OrvImage::IppiRect srcRect,
                              double x, double y, OrvImage::INTERPOLATION_MODE mode,
                              OrvImage::FIELD_TYPE field, bool sameField) {
    return OrvImage::IppResizeYUV420(src, dst, srcStep, dstStep, srcSize, dstSize, srcRect, x, y,
                                     mode, field, sameField);
  }
  static bool IppResizePlane(unsigned char* src, unsigned char* dst, int srcStep, int dstStep,
                             IppiSize srcSize, IppiSize dstSize, OrvImage::IppiRect srcRect,
                             double x, double y, OrvImage::INTERPOLATION_MODE mode,
                             OrvImage::FIELD_TYPE field, bool sameField) {
    return OrvImage::IppResizePlane(src, dst, srcStep, dstStep, srcSize, dstSize, srcRect, x, y,
                                    mode, field, sameField);
  }
  static bool AllocateTempBuffer(OrvImage::TEMP_PLANAR_FORMAT* t, IppiSize s, IppiSize d) {
    return OrvImage::AllocateTempBuffer(t, s, d);
  }
  static void ReleaseTempBuffer(OrvImage::TEMP_PLANAR_FORMAT* t) { OrvImage::ReleaseTempBuffer(t); }
  static const OrvImage::RESIZE_INFO& ResizeInfo(const OrvImage& image) {
    return image.m_resizeInfo;
  }
  static void CheckColours(int family, unsigned char* l1, unsigned char* l2, unsigned long width,
                           unsigned char& c1, unsigned char& c2) {
    switch (family) {
      case 0:
        OrvImage::GetCheckColorYUV420(l1, l2, width, c1, c2);
        break;
      case 1:
        OrvImage::GetCheckColorYUY2(l1, l2, width, c1, c2);
        break;
      case 2:
        OrvImage::GetCheckColorRGB24(l1, l2, width, c1, c2);
        break;
      default:
        OrvImage::GetCheckColorRGB32(l1, l2, width, c1, c2);
        break;
    }
  }
  static void CheckChangeLine(unsigned char* line, unsigned char* dstLine, unsigned long width,
                              int step, unsigned long lineNo, unsigned long sum1,
                              unsigned long sum2, unsigned char c1, unsigned char c2,
                              unsigned char prev, bool& inBand, bool& pastTop, unsigned char** s1,
                              unsigned char** s2, unsigned char** d1, unsigned char** d2) {
    OrvImage::CheckChangeLine(line, dstLine, width, 0, step, lineNo, sum1, sum2, c1, c2, prev,
                              inBand, pastTop, s1, s2, d1, d2);
  }
  static bool BlendYUY2Float(const unsigned char* src, unsigned char* dst, IppiSize size,
                             float ratio) {
    return OrvImage::BlendYUY2(src, dst, size, ratio);
  }
  // ---- Conversion pipeline ----
  static bool GetResizeFactorEx(OrvImage::PICTURE_INFO* s, OrvImage::PICTURE_INFO* d, bool keep,
                                OrvImage::CONVERT_INFO* info) {
    return OrvImage::GetResizeFactorEx(s, d, keep, info);
  }
  static unsigned long CheckInterlaceConv(OrvImage::PICTURE_INFO* s, OrvImage::PICTURE_INFO* d,
                                          OrvImage::DEINTERLACE_MODE m,
                                          OrvImage::CONVERT_INFO* info) {
    return OrvImage::CheckInterlaceConv(s, d, m, info);
  }
  static bool CheckSupportColorConv(OrvImage::PICTURE_INFO* s, OrvImage::PICTURE_INFO* d,
                                    unsigned long* step, unsigned long* size) {
    return OrvImage::CheckSupportColorConv(s, d, step, size);
  }
  static bool CheckNeedPreFieldSwap(OrvImage::PICTURE_INFO* s, OrvImage::PICTURE_INFO* d,
                                    OrvImage::CONVERT_INFO* info) {
    return OrvImage::CheckNeedPreFieldSwap(s, d, info);
  }
  static bool NearestResize(int bits, const unsigned char* src, int sw, int sh, int ss,
                            unsigned char* dst, int dw, int dh, int ds) {
    return OrvImage::NearestResize(bits, src, sw, sh, ss, dst, dw, dh, ds);
  }
  static const OrvImage::CONVERT_INFO& ConvertInfo(const OrvImage& image) {
    return image.m_convertInfo;
  }
  static void ClearConvertInfo(OrvImage::CONVERT_INFO* info) { OrvImage::ClearConvertInfo(info); }
};

#endif  // ORV_TESTS_IMAGE_IMAGE_TEST_ACCESS_H_
