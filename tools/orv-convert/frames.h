// Pictures of the converter: library pictures, and their exchange with
// YUV4MPEG2 planes and raw frames; the built-in moving test pattern.
#ifndef ORV_TOOLS_ORV_CONVERT_FRAMES_H_
#define ORV_TOOLS_ORV_CONVERT_FRAMES_H_

#include <OrvUtility.h>

#include <cstdint>
#include <vector>

#include "y4m.h"

namespace orvconvert {

struct Picture {
  OrvImage::PICTURE_INFO info = {};
  std::vector<uint8_t> data;
};

// A top-down picture (positive step) with the format's aligned line.
Picture MakePicture(OrvImage::COLOR_FORMAT_TYPE format, uint32_t width, uint32_t height,
                    OrvImage::SCAN_TYPE scan);

// YUV4MPEG2 planes into a picture: 4:2:0 and mono into CF_YUV420, 4:2:2 into
// CF_CCIR601YUY2. `picture` must have been made with that format and size.
void Y4mToPicture(const Y4mHeader& header, const std::vector<uint8_t>& planes, Picture* picture);
// A CF_YUV420, CF_YV12 or CF_CCIR601YUY2 picture into YUV4MPEG2 planes
// (4:2:0 or 4:2:2); an odd side repeats its last chroma sample.
void PictureToY4m(const Picture& picture, std::vector<uint8_t>* planes);
// Packed pixels, top line first, lines without padding.
void PictureToRaw(const Picture& picture, std::vector<uint8_t>* out);

// Frame `index` of the moving test pattern, in CF_CCIR601YUY2 or CF_YUV420:
// colour bars, a zone plate whose rings move, and a box that moves between
// the two fields of an interlaced frame, so that scan handling shows.
void DrawPattern(uint64_t index, Picture* picture);

}  // namespace orvconvert

#endif  // ORV_TOOLS_ORV_CONVERT_FRAMES_H_
