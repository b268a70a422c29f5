// The conversion pipeline: a plan worked out once by InitializeConvert and run
// frame after frame by Convert, or a plan that lives for one static Convert.
// Three stages in this order: colour conversion at the source's size, then
// the resize and the scan stage of the destination's format family.
#include <OrvImage.h>

#include <cstdlib>
#include <new>

#include "colour/ColorSpaceConverter.h"
#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/scaler/vrscl.h"

namespace {

using orv::image::Guarded;
using orv::image::Raise;
using orv::image::StepMagnitude;
using Format = OrvImage::COLOR_FORMAT_TYPE;

// Bytes of one line's pixels, which a step must hold.
uint64_t MinLine(Format f, uint64_t width) {
  switch (f) {
    case OrvImage::CF_YUV420:
    case OrvImage::CF_BT709YUV420:
    case OrvImage::CF_YV12:
      return width;
    case OrvImage::CF_CCIR601YUY2:
    case OrvImage::CF_BT709YUY2:
    case OrvImage::CF_YUY2A:
      return 2 * width;
    case OrvImage::CF_RGB24:
    case OrvImage::CF_TavoShiftedStraightRGB24:
      return 3 * width;
    default:
      return 4 * width;
  }
}

// Checks a picture of a conversion and gives a step of 0 the format's own.
bool NormalisePicture(OrvImage::PICTURE_INFO* p) {
  if (!orv::image::IsKnownFormat(p->colorFormat)) return false;
  if (p->width == 0 || p->height == 0 || !orv::image::AreSidesValid(p->width, p->height)) {
    return false;
  }
  if (p->scanType != OrvImage::SCAN_PROGRESSIVE && p->scanType != OrvImage::SCAN_TOP_FIELD_FIRST &&
      p->scanType != OrvImage::SCAN_BOTTOM_FIELD_FIRST) {
    return false;
  }
  if (p->step == 0) p->step = OrvImage::GetGenericStep(p->colorFormat, p->width, p->height);
  if (p->step == 0 || p->step == INT32_MIN) return false;
  if (StepMagnitude(p->step) < MinLine(p->colorFormat, p->width)) return false;
  const uint64_t bytes = OrvImage::GetPictureSize(p->colorFormat, p->width, p->height, p->step);
  return bytes != 0 && bytes <= orv::image::kMaxBytes;
}

bool ValidMode(const OrvImage::CONVERT_MODE& m) {
  return m.interpolation >= OrvImage::INTERPOLATION_NEAREST &&
         m.interpolation <= OrvImage::INTERPOLATION_VRSCL_FRAME &&
         (m.deinterlace == OrvImage::DEINTERLACE_LINE_DOUBLE ||
          m.deinterlace == OrvImage::DEINTERLACE_FIELD_RESIZE);
}

// The format the resize and scan stages work in: a CF_YUY2A destination is
// handled as YUY2, its alpha plane on a path of its own.
Format StageFormat(Format dst) {
  return dst == OrvImage::CF_YUY2A ? OrvImage::CF_CCIR601YUY2 : dst;
}

// No colour stage runs when the source already is in the stage's format, or
// is a CF_YUY2A picture whose YUY2 part serves a YUY2 stage directly. The
// stages then read the source with its own step.
bool ColourStageSkipped(Format src, Format dst) {
  const Format stage = StageFormat(dst);
  return src == stage || (stage == OrvImage::CF_CCIR601YUY2 && src == OrvImage::CF_YUY2A) ||
         src == dst;
}

bool IsPlanarDst(Format f) { return orv::image::IsPlanar420(f); }

bool UsesScaler(const OrvImage::CONVERT_MODE& m, Format dst) {
  return (m.interpolation == OrvImage::INTERPOLATION_VRSCL_FIELD ||
          m.interpolation == OrvImage::INTERPOLATION_VRSCL_FRAME) &&
         IsPlanarDst(dst);
}

// Fixes the scaler's sizes for a plan and sets the plan's resize kind: the
// field mode scales the first field to the whole destination, the frame mode
// scales each field into its own lines through one set-up on whole frames.
// 1 when the scaler has no memory, 3 when it refuses the sizes.
unsigned long SetUpScaler(const OrvImage::CONVERT_MODE& m, const OrvImage::PICTURE_INFO& s,
                          const OrvImage::PICTURE_INFO& d, OrvImage::CONVERT_INFO* info) {
  if (info->vrscl == nullptr) {
    const int r = orv::VRSCLCreateInstance(&info->vrscl);
    if (r != orv::kVrsclOk) return OrvImage::ORV_IMG_NO_MEMORY;
  }
  int usedHeight;
  if (m.interpolation == OrvImage::INTERPOLATION_VRSCL_FIELD) {
    info->resizeKind = 3;
    usedHeight = static_cast<int>(s.height / 2);
  } else {
    info->resizeKind = 2;
    usedHeight = static_cast<int>(s.height);
  }
  const int sw = static_cast<int>(s.width), dw = static_cast<int>(d.width),
            dh = static_cast<int>(d.height);
  const int r =
      orv::VRSCLSetupConverter(info->vrscl, sw, usedHeight, sw, usedHeight, dw, dh, dw, dh);
  if (r == orv::kVrsclOk) return OrvImage::ORV_IMG_OK;
  return r == orv::kVrsclNoMemory ? OrvImage::ORV_IMG_NO_MEMORY : OrvImage::ORV_IMG_INVALID;
}

// Fills the sizes and steps of a fresh plan, keeping what it owns.
void StartPlan(const OrvImage::PICTURE_INFO& s, const OrvImage::PICTURE_INFO& d,
               OrvImage::CONVERT_INFO* info) {
  info->resizeKind = 0;
  info->interlaceKind = 0;
  info->srcWidth = static_cast<int32_t>(s.width);
  info->srcHeight = static_cast<int32_t>(s.height);
  info->dstWidth = static_cast<int32_t>(d.width);
  info->dstHeight = static_cast<int32_t>(d.height);
  info->srcStep = static_cast<uint32_t>(StepMagnitude(s.step));
  info->dstStep = static_cast<uint32_t>(StepMagnitude(d.step));
  info->srcTrimX = 0;
  info->dstMarginX = 0;
  info->dstMarginY = 0;
  info->xFactor = 1.0;
  info->yFactor = 1.0;
}

// A reduction of a progressive 4:2:0 picture into an RGB-like format, with
// no bars and no trim, is resized in 4:2:0 first and converted at the
// destination's size: the colour stage then sees a fraction of the pixels.
// Flat areas come out the same either way; edges differ by the order of two
// filters that are each exact on flat input.
bool ReduceBeforeColour(const OrvImage::PICTURE_INFO& s, const OrvImage::PICTURE_INFO& d,
                        const OrvImage::CONVERT_INFO& info) {
  switch (d.colorFormat) {
    case OrvImage::CF_RGB24:
    case OrvImage::CF_RGB32:
    case OrvImage::CF_TavoShiftedStraightRGB24:
    case OrvImage::CF_TavoShiftedStraightRGB32:
    case OrvImage::CF_RGBA:
      break;
    default:
      return false;
  }
  return s.colorFormat == OrvImage::CF_YUV420 && s.scanType == OrvImage::SCAN_PROGRESSIVE &&
         info.resizeKind == 1 && info.interlaceKind == 0 && info.srcTrimX == 0 &&
         info.dstMarginX == 0 && info.dstMarginY == 0 && info.xFactor <= 1.0 &&
         info.yFactor <= 1.0 && info.dstWidth >= 2 && info.dstHeight >= 2;
}

// The 4:2:0 step of the reduced picture: its width rounded up to 16.
int ReducedStep(const OrvImage::CONVERT_INFO& info) { return (info.dstWidth + 15) & ~15; }

}  // namespace

unsigned long OrvImage::InitializeConvert(PICTURE_INFO* src, PICTURE_INFO* dst,
                                          CONVERT_MODE* mode) {
  if (src == nullptr || dst == nullptr || mode == nullptr) return ORV_IMG_INVALID;
  m_convertValid = false;
  PICTURE_INFO s = *src, d = *dst;
  if (!NormalisePicture(&s) || !NormalisePicture(&d) || !ValidMode(*mode)) {
    ClearConvertInfo(&m_convertInfo);
    return ORV_IMG_INVALID;
  }
  m_srcPicture = s;
  m_dstPicture = d;
  m_convertMode = *mode;
  CONVERT_INFO* info = &m_convertInfo;
  auto refuse = [&](unsigned long code) {
    ClearConvertInfo(info);
    return code;
  };
  StartPlan(s, d, info);

  // The destination's size is the whole picture as it is laid out, so that a
  // buffer of this size holds every byte the stages write (the alpha plane
  // of CF_YUY2A has 4-byte aligned lines).
  const unsigned long dstBytes = GetPictureSize(d.colorFormat, d.width, d.height, d.step);
  m_dstPicture.size = static_cast<uint32_t>(dstBytes);
  dst->size = static_cast<uint32_t>(dstBytes);

  if (orv::image::IsPlanar420(d.colorFormat) ||
      (s.colorFormat == CF_YUV420 && d.colorFormat == CF_CCIR601YUY2)) {
    if (m_colorConverter == nullptr) m_colorConverter = new (std::nothrow) orv::ColorSpaceConverter;
    if (m_colorConverter == nullptr || !m_colorConverter->Initialize()) {
      delete m_colorConverter;
      m_colorConverter = nullptr;
      return refuse(ORV_IMG_NO_MEMORY);
    }
  }

  const bool differ = s.colorFormat != d.colorFormat;
  const bool skipped = ColourStageSkipped(s.colorFormat, d.colorFormat);
  unsigned long intermediateBytes = 0;
  if (differ) {
    unsigned long step = 0;
    if (!CheckSupportColorConv(&m_srcPicture, &m_dstPicture, &step, &intermediateBytes)) {
      ClearConvertInfo(info);
      return ORV_IMG_OK;  // no plan: the next Convert answers 4
    }
    info->srcStep = static_cast<uint32_t>(step);
    if (skipped) {
      info->srcStep = static_cast<uint32_t>(StepMagnitude(s.step));
      intermediateBytes = 0;
    }
  }

  if (GetResizeFactorEx(&m_srcPicture, &m_dstPicture, mode->keepAspect, info)) {
    info->resizeKind = 1;
  } else {
    info->resizeKind = 0;
    if (differ && !skipped) {
      // Without a resize the colour stage writes straight into the
      // destination, with its step.
      info->srcStep = info->dstStep;
      intermediateBytes = GetPictureSize(d.colorFormat, s.width, s.height, d.step);
    }
  }

  if (mode->convertInterlace) {
    const unsigned long c =
        CheckInterlaceConv(&m_srcPicture, &m_dstPicture, mode->deinterlace, info);
    if (c != ORV_IMG_OK) return refuse(c);
  }

  // The scaler's modes decide the resize kind of a planar destination. This
  // comes before the intermediate is sized, so that a resize it asks for at
  // equal sizes still has a picture to read apart from the destination.
  if (UsesScaler(*mode, d.colorFormat)) {
    const unsigned long c = SetUpScaler(*mode, s, d, info);
    if (c != ORV_IMG_OK) return refuse(c);
  } else if (info->vrscl != nullptr) {
    orv::VRSCLReleaseInstance(&info->vrscl);
  }

  if (intermediateBytes == 0 || info->resizeKind == 0) {
    delete info->intermediate;
    info->intermediate = nullptr;
  } else {
    if (info->intermediate == nullptr) info->intermediate = new (std::nothrow) OrvMemory;
    if (info->intermediate == nullptr ||
        !info->intermediate->Initialize(nullptr, static_cast<unsigned int>(intermediateBytes),
                                        16)) {
      return refuse(ORV_IMG_NO_MEMORY);
    }
  }

  const Format stage = StageFormat(d.colorFormat);
  if (info->resizeKind != 0 && mode->interpolation != INTERPOLATION_TAVO &&
      (stage == CF_CCIR601YUY2 || stage == CF_BT709YUY2)) {
    if (info->temp == nullptr) {
      info->temp = new (std::nothrow) TEMP_PLANAR_FORMAT();
      if (info->temp == nullptr) return refuse(ORV_IMG_NO_MEMORY);
    } else {
      ReleaseTempBuffer(info->temp);
    }
  } else if (info->temp != nullptr) {
    ReleaseTempBuffer(info->temp);
    delete info->temp;
    info->temp = nullptr;
  }

  // Work buffers of a previous plan have the wrong size.
  for (OrvMemory* m : m_workBuffers) delete m;
  m_workBuffers.clear();

  m_convertValid = true;
  return ORV_IMG_OK;
}

unsigned long OrvImage::RunConvertStages(unsigned char* src, unsigned char* dst,
                                         PICTURE_INFO* srcInfo, PICTURE_INFO* dstInfo,
                                         CONVERT_MODE* mode, CONVERT_INFO* info, int alphaStepLimit,
                                         std::vector<OrvMemory*>* work,
                                         orv::ColorSpaceConverter* converter) {
  // The destination's format is changed for CF_YUY2A during the call and put
  // back on every way out.
  struct FormatGuard {
    PICTURE_INFO* p;
    Format saved;
    ~FormatGuard() { p->colorFormat = saved; }
  } guard{dstInfo, dstInfo->colorFormat};

  bool alphaLast = false;
  if (guard.saved == CF_YUY2A) {
    dstInfo->colorFormat = CF_CCIR601YUY2;
    if (src == dst && StepMagnitude(srcInfo->step) > static_cast<uint64_t>(alphaStepLimit)) {
      // In place, the alpha plane would overlap source lines still to be read.
      alphaLast = true;
    } else {
      const unsigned long r = SetAlphaYUY2A(src, dst, srcInfo, dstInfo, mode, info);
      if (r != ORV_IMG_OK) return r;
    }
  }

  const Format stage = dstInfo->colorFormat;
  if (ReduceBeforeColour(*srcInfo, *dstInfo, *info) && info->intermediate != nullptr &&
      info->intermediate->GetSize() >=
          GetPictureSize(CF_YUV420, info->dstWidth, info->dstHeight, ReducedStep(*info))) {
    unsigned char* m = static_cast<unsigned char*>(info->intermediate->GetBuffer());
    if (m == nullptr) Raise(ORV_IMG_NO_MEMORY);
    const int t = ReducedStep(*info);
    const IppiSize ss = {info->srcWidth, info->srcHeight};
    const IppiSize ds = {info->dstWidth, info->dstHeight};
    ClearPicture(m, CF_YUV420, info->dstWidth, info->dstHeight, t, false);
    if (!IppResizeYUV420(src, m, static_cast<int>(StepMagnitude(srcInfo->step)), t, ss, ds,
                         {0, 0, info->srcWidth, info->srcHeight}, info->xFactor, info->yFactor,
                         mode->interpolation, FIELD_FRAME, false)) {
      Raise(ORV_IMG_FAILED);
    }
    unsigned long bytes = dstInfo->size;
    return ColorConvert(m, dst, &bytes, dstInfo->width, dstInfo->height, CF_YUV420, stage,
                        srcInfo->step < 0 ? -t : t, dstInfo->step, true, FIELD_FRAME, work,
                        converter);
  }
  unsigned char* stageSrc = src;
  if (!ColourStageSkipped(srcInfo->colorFormat, stage)) {
    unsigned char* m = dst;
    unsigned long mBytes = dstInfo->size;
    if (info->intermediate != nullptr) {
      m = static_cast<unsigned char*>(info->intermediate->GetBuffer());
      if (m == nullptr) Raise(ORV_IMG_NO_MEMORY);
      mBytes = info->intermediate->GetSize();
    }
    // The intermediate takes the source's direction.
    const int mStep =
        srcInfo->step < 0 ? -static_cast<int>(info->srcStep) : static_cast<int>(info->srcStep);
    if (CheckNeedPreFieldSwap(srcInfo, dstInfo, info)) {
      const uint64_t bytes = StepMagnitude(srcInfo->step) * srcInfo->height;
      const unsigned long r =
          FieldSwapYUY2(src, src, static_cast<unsigned long>(bytes), srcInfo->width,
                        srcInfo->height, srcInfo->step, srcInfo->scanType);
      if (r != ORV_IMG_OK) Raise(r);
    }
    // Only the lines the later stages read are converted. The conversions
    // count a field from the display's top; the stages from the buffer's
    // start. The two agree for a top-down source; a bottom-up source is
    // converted whole.
    FIELD_TYPE field = FIELD_FRAME;
    if (info->resizeKind == 3 || info->interlaceKind == 1) {
      field = FIELD_TOP;
    } else if (info->resizeKind == 4 || info->interlaceKind == 2) {
      field = FIELD_BOTTOM;
    }
    if (srcInfo->step < 0) field = FIELD_FRAME;
    const unsigned long r = ColorConvert(
        src, m, &mBytes, srcInfo->width, srcInfo->height, srcInfo->colorFormat, stage,
        srcInfo->step, mStep, srcInfo->scanType == SCAN_PROGRESSIVE, field, work, converter);
    if (r != ORV_IMG_OK) Raise(r);
    stageSrc = m;
  }

  switch (stage) {
    case CF_CCIR601YUY2:
    case CF_BT709YUY2: {
      if (info->temp != nullptr &&
          !AllocateTempBuffer(info->temp, {info->srcWidth, info->srcHeight},
                              {info->dstWidth, info->dstHeight})) {
        Raise(ORV_IMG_NO_MEMORY);
      }
      unsigned long r = ConvertYUY2(stageSrc, dst, srcInfo, dstInfo, mode, info);
      if (r == ORV_IMG_OK && alphaLast) r = SetAlphaYUY2A(src, dst, srcInfo, dstInfo, mode, info);
      return r;
    }
    case CF_YUV420:
    case CF_BT709YUV420:
    case CF_YV12:
      return ConvertYUV420(stageSrc, dst, srcInfo, dstInfo, mode, info);
    case CF_RGB24:
    case CF_TavoShiftedStraightRGB24:
      return ConvertRGB24(stageSrc, dst, srcInfo, dstInfo, mode, info);
    case CF_RGB32:
    case CF_TavoShiftedStraightRGB32:
    case CF_VUYA:
    case CF_RGBA:
      return ConvertRGB32(stageSrc, dst, srcInfo, dstInfo, mode, info);
    default:
      return ORV_IMG_INVALID;
  }
}

unsigned long OrvImage::Convert(unsigned char* const src, unsigned char* dst) {
  if (!m_convertValid) return ORV_IMG_FAILED;
  if (src == nullptr || dst == nullptr) return ORV_IMG_INVALID;
  return Guarded(
      [&]() -> unsigned long {
        CONVERT_INFO* info = &m_convertInfo;
        PICTURE_INFO* s = &m_srcPicture;
        PICTURE_INFO* d = &m_dstPicture;
        if (info->resizeKind == 0 && info->interlaceKind == 0) {
          // At most a colour stage.
          const bool sameSign = (s->step < 0) == (d->step < 0);
          const bool toAlpha = s->colorFormat == CF_CCIR601YUY2 && d->colorFormat == CF_YUY2A;
          if (info->srcStep == info->dstStep && sameSign &&
              (s->colorFormat == d->colorFormat || src == dst) && !toAlpha) {
            if (s->colorFormat != d->colorFormat) return ORV_IMG_INVALID;
            if (src == dst) return ORV_IMG_OK;
            OrvMemory::Copy(dst, d->size, src, d->size);
            return ORV_IMG_OK;
          }
          unsigned long bytes = d->size;
          return ColorConvert(src, dst, &bytes, s->width, s->height, s->colorFormat, d->colorFormat,
                              s->step, d->step, s->scanType == SCAN_PROGRESSIVE, FIELD_FRAME,
                              &m_workBuffers, m_colorConverter);
        }
        if (src == dst && info->resizeKind != 0) return ORV_IMG_INVALID;  // never in place
        return RunConvertStages(src, dst, s, d, &m_convertMode, info,
                                GetGenericStep(CF_YUY2A, s->width, s->height), &m_workBuffers,
                                m_colorConverter);
      },
      ORV_IMG_INVALID);
}

unsigned long OrvImage::Convert(unsigned char* const src, unsigned char* dst, PICTURE_INFO* srcInfo,
                                PICTURE_INFO* dstInfo, CONVERT_MODE* mode) {
  if (src == nullptr || srcInfo == nullptr || dstInfo == nullptr || mode == nullptr) {
    return ORV_IMG_INVALID;
  }
  PICTURE_INFO s = *srcInfo, d = *dstInfo;
  CONVERT_MODE m = *mode;
  if (!NormalisePicture(&s) || !NormalisePicture(&d) || !ValidMode(m)) return ORV_IMG_INVALID;

  CONVERT_INFO info = {};
  std::vector<OrvMemory*> work;
  struct PlanGuard {
    CONVERT_INFO* info;
    std::vector<OrvMemory*>* work;
    ~PlanGuard() {
      ClearConvertInfo(info);
      for (OrvMemory* w : *work) delete w;
    }
  } guard{&info, &work};

  return Guarded([&]() -> unsigned long {
    StartPlan(s, d, &info);
    const bool differ = s.colorFormat != d.colorFormat;
    const bool skipped = ColourStageSkipped(s.colorFormat, d.colorFormat);
    const bool colourStage = differ && !skipped;
    int alphaStepLimit = GetGenericStep(CF_YUY2A, s.width, s.height);
    if (colourStage) {
      int step = GetGenericStep(d.colorFormat, s.width, s.height);
      if ((step < 0) != (s.step < 0)) step = -step;
      info.srcStep = static_cast<uint32_t>(StepMagnitude(step));
      alphaStepLimit = static_cast<int>(info.srcStep);
    }

    const unsigned long required = GetPictureSize(d.colorFormat, d.width, d.height, d.step);
    if (dst == nullptr) {
      dstInfo->size = static_cast<uint32_t>(required);
      return ORV_IMG_OK;
    }
    if (dstInfo->size < required) return ORV_IMG_DST_TOO_SMALL;
    dstInfo->size = static_cast<uint32_t>(required);
    d.size = static_cast<uint32_t>(required);

    if (GetResizeFactorEx(&s, &d, m.keepAspect, &info)) {
      info.resizeKind = 1;
    } else {
      info.resizeKind = 0;
      if (colourStage) {
        info.srcStep = info.dstStep;
        alphaStepLimit = static_cast<int>(info.srcStep);
      }
    }
    if (m.convertInterlace) {
      const unsigned long c = CheckInterlaceConv(&s, &d, m.deinterlace, &info);
      if (c != ORV_IMG_OK) return c;
    }
    // The scaler's modes: an instance made and released for this call.
    if (UsesScaler(m, d.colorFormat)) {
      const unsigned long c = SetUpScaler(m, s, d, &info);
      if (c != ORV_IMG_OK) return c;
    }

    if (info.resizeKind == 0 && info.interlaceKind == 0) {
      const bool sameSign = (s.step < 0) == (d.step < 0);
      if (info.srcStep == info.dstStep && sameSign &&
          (s.colorFormat == d.colorFormat || src == dst)) {
        if (s.colorFormat != d.colorFormat) return ORV_IMG_INVALID;
        if (src == dst) return ORV_IMG_OK;
        OrvMemory::Copy(dst, d.size, src, d.size);
        return ORV_IMG_OK;
      }
      unsigned long bytes = d.size;
      return ColorConvert(src, dst, &bytes, s.width, s.height, s.colorFormat, d.colorFormat, s.step,
                          d.step, s.scanType == SCAN_PROGRESSIVE, FIELD_FRAME, nullptr, nullptr);
    }
    if (src == dst && info.resizeKind != 0) return ORV_IMG_INVALID;

    if (info.resizeKind != 0 && colourStage) {
      const unsigned long bytes =
          GetPictureSize(d.colorFormat, s.width, s.height, static_cast<int>(info.srcStep));
      info.intermediate = new OrvMemory;
      if (bytes == 0 ||
          !info.intermediate->Initialize(nullptr, static_cast<unsigned int>(bytes), 16)) {
        return ORV_IMG_NO_MEMORY;
      }
    }
    const Format stage = StageFormat(d.colorFormat);
    if (info.resizeKind != 0 && m.interpolation != INTERPOLATION_TAVO &&
        (stage == CF_CCIR601YUY2 || stage == CF_BT709YUY2)) {
      info.temp = new TEMP_PLANAR_FORMAT();
    }
    return RunConvertStages(src, dst, &s, &d, &m, &info, alphaStepLimit, &work, nullptr);
  });
}

void OrvImage::ReleaseConvertBuffer() {
  if (m_convertInfo.intermediate != nullptr) m_convertInfo.intermediate->ReleaseBuffer();
  if (m_convertInfo.temp != nullptr) ReleaseTempBuffer(m_convertInfo.temp);
  for (OrvMemory* m : m_workBuffers) {
    if (m != nullptr) m->ReleaseBuffer();
  }
}
