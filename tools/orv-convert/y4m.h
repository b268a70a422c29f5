// YUV4MPEG2: the header, frame markers and plane sizes of the raw video
// stream format that encoders and decoders exchange on pipes.
#ifndef ORV_TOOLS_ORV_CONVERT_Y4M_H_
#define ORV_TOOLS_ORV_CONVERT_Y4M_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace orvconvert {

enum class Y4mChroma { k420, k422, kMono };

struct Y4mHeader {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t rateNum = 30000;
  uint32_t rateDen = 1001;
  char interlace = 'p';  // p progressive, t top field first, b bottom field first
  uint32_t parX = 0;     // pixel aspect; 0:0 unknown
  uint32_t parY = 0;
  Y4mChroma chroma = Y4mChroma::k420;

  uint32_t ChromaWidth() const { return chroma == Y4mChroma::kMono ? 0 : (width + 1) / 2; }
  uint32_t ChromaHeight() const {
    return chroma == Y4mChroma::k420 ? (height + 1) / 2 : chroma == Y4mChroma::k422 ? height : 0;
  }
  // Bytes of one frame's planes.
  uint64_t FrameBytes() const {
    return uint64_t(width) * height + 2ull * ChromaWidth() * ChromaHeight();
  }
};

// Parses a header line (without its newline). False with a reason.
bool ParseY4mHeader(const std::string& line, Y4mHeader* header, std::string* error);
// The header line, with its newline.
std::string FormatY4mHeader(const Y4mHeader& header);

class Y4mReader {
 public:
  explicit Y4mReader(FILE* in) : in_(in) {}
  // Reads and checks the stream header.
  bool ReadHeader(std::string* error);
  const Y4mHeader& header() const { return header_; }
  // Reads the next frame's planes (Y, Cb, Cr, as in the file). At the clean
  // end of the stream: false with *end set and no error.
  bool ReadFrame(std::vector<uint8_t>* planes, bool* end, std::string* error);
  // Frames read so far.
  uint64_t frames() const { return frames_; }

 private:
  bool ReadLine(std::string* line, bool* atEnd);
  FILE* in_;
  Y4mHeader header_;
  uint64_t frames_ = 0;
};

}  // namespace orvconvert

#endif  // ORV_TOOLS_ORV_CONVERT_Y4M_H_
