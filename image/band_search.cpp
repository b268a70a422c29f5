// The flat-band search of the mask copy: a robust colour for a line, and the
// walk that finds the edges of flat bands at the top and bottom of a picture
// (letterbox bars), so that their seams can be restored.
#include <OrvImage.h>

#include <cstdlib>

namespace {

// Ten luma samples of a line, in order of position.
struct Samples {
  int value[10];
};

// Sum of the samples that differ from the sample before them by less than 30
// (the first always counts), divided by their count.
unsigned char RobustColour(const Samples& s) {
  int sum = s.value[0];
  int count = 1;
  for (int k = 1; k < 10; ++k) {
    if (std::abs(s.value[k] - s.value[k - 1]) < 30) {
      sum += s.value[k];
      ++count;
    }
  }
  return static_cast<unsigned char>(sum / count);
}

// Sample k = 1..10 of a plane line sits at byte k x (width / 10). The tenth
// falls one past the line when the width is a multiple of 10; it is taken from
// the line's last byte instead, so that no line is read past its end.
Samples PlaneSamples(const unsigned char* line, unsigned long width) {
  Samples s;
  for (int k = 1; k <= 10; ++k) {
    unsigned long x = k * (width / 10);
    if (x >= width) x = width - 1;
    s.value[k - 1] = line[x];
  }
  return s;
}

Samples Yuy2Samples(const unsigned char* line, unsigned long width) {
  Samples s;
  for (int k = 1; k <= 10; ++k) s.value[k - 1] = line[2 * ((2 * k - 1) * (width / 20))];
  return s;
}

Samples RgbSamples(const unsigned char* line, unsigned long width, int bytes) {
  Samples s;
  for (int k = 1; k <= 10; ++k) {
    const unsigned char* p = line + bytes * (width / 20 + (k - 1) * (width / 10));
    s.value[k - 1] = (59 * p[1] + 30 * p[2] + 11 * p[0]) / 100;
  }
  return s;
}

template <typename Sampler>
void CheckColours(const unsigned char* line1, const unsigned char* line2, unsigned long width,
                  unsigned char& color1, unsigned char& color2, Sampler sample) {
  if (line1 == nullptr || line2 == nullptr || width == 0) return;
  color1 = RobustColour(sample(line1, width));
  color2 = RobustColour(sample(line2, width));
}

bool Alike(int a, int b) { return std::abs(a - b) <= 30; }

}  // namespace

void OrvImage::GetCheckColorYUV420(unsigned char* line1, unsigned char* line2, unsigned long width,
                                   unsigned char& color1, unsigned char& color2) {
  CheckColours(line1, line2, width, color1, color2, PlaneSamples);
}

void OrvImage::GetCheckColorYUY2(unsigned char* line1, unsigned char* line2, unsigned long width,
                                 unsigned char& color1, unsigned char& color2) {
  CheckColours(line1, line2, width, color1, color2, Yuy2Samples);
}

void OrvImage::GetCheckColorRGB24(unsigned char* line1, unsigned char* line2, unsigned long width,
                                  unsigned char& color1, unsigned char& color2) {
  CheckColours(line1, line2, width, color1, color2,
               [](const unsigned char* l, unsigned long w) { return RgbSamples(l, w, 3); });
}

void OrvImage::GetCheckColorRGB32(unsigned char* line1, unsigned char* line2, unsigned long width,
                                  unsigned char& color1, unsigned char& color2) {
  CheckColours(line1, line2, width, color1, color2,
               [](const unsigned char* l, unsigned long w) { return RgbSamples(l, w, 4); });
}

void OrvImage::CheckChangeLine(unsigned char* line, unsigned char* dstLine, unsigned long width,
                               unsigned long /*height*/, int step, unsigned long lineNo,
                               unsigned long sum1, unsigned long sum2, unsigned char color1,
                               unsigned char color2, unsigned char prevColor, bool& inBand,
                               bool& pastTop, unsigned char** src1, unsigned char** src2,
                               unsigned char** dst1, unsigned char** dst2) {
  // A line is flat when its summed difference from its colour is at most a
  // mean of 8.5 a pixel.
  const unsigned long flatLimit = static_cast<unsigned long>(static_cast<double>(width) * 8.5);
  const bool firstFlat = sum1 <= flatLimit;
  const bool secondFlat = sum2 <= flatLimit;
  auto take = [&](int direction) {  // +1: this pair; -1: the seam above
    *src1 = line;
    *src2 = line + direction * step;
    *dst1 = dstLine;
    *dst2 = dstLine + direction * step;
  };
  if (inBand && !pastTop) {
    if (!firstFlat) {
      pastTop = true;
      inBand = false;
      if (lineNo != 0) take(-1);  // at line 0 there is no top band
    } else if (!Alike(color1, prevColor)) {
      pastTop = true;
      inBand = false;
      take(-1);
    } else if (secondFlat && Alike(color1, color2)) {
      // The top band goes on.
    } else {
      pastTop = true;
      inBand = false;
      take(+1);
    }
    return;
  }
  if (!secondFlat) {
    inBand = false;
    *src1 = *src2 = *dst1 = *dst2 = nullptr;
  } else if (!firstFlat || !Alike(color1, color2)) {
    inBand = true;
    take(+1);
  } else if (!Alike(prevColor, color1)) {
    inBand = true;
    take(-1);
  }
}
