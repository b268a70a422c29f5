// Construction and destruction of OrvImage. The instance holds a resize plan,
// a conversion plan, work buffers reused between frames, and the colour-space
// converter, all created on first need.
#include <OrvImage.h>

#include <cstring>

#include "colour/ColorSpaceConverter.h"

OrvImage::OrvImage()
    : m_resizeValid(false),
      m_resizeInfo(),
      m_convertValid(false),
      m_srcPicture(),
      m_dstPicture(),
      m_convertMode(),
      m_convertInfo(),
      m_workBuffers(),
      m_colorConverter(nullptr) {}

OrvImage::~OrvImage() {
  ClearResizeInfo(&m_resizeInfo);
  ClearConvertInfo(&m_convertInfo);
  for (OrvMemory* buffer : m_workBuffers) delete buffer;
  delete m_colorConverter;
}
