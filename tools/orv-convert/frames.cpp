#include "frames.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orvconvert {

namespace {

uint32_t StepOf(const Picture& p) {
  return static_cast<uint32_t>(p.info.step < 0 ? -p.info.step : p.info.step);
}

int BytesPerPixel(OrvImage::COLOR_FORMAT_TYPE f) {
  return static_cast<int>(OrvImage::GetBitPixel(f) / 8);
}

}  // namespace

Picture MakePicture(OrvImage::COLOR_FORMAT_TYPE format, uint32_t width, uint32_t height,
                    OrvImage::SCAN_TYPE scan) {
  Picture p;
  p.info.width = width;
  p.info.height = height;
  p.info.colorFormat = format;
  p.info.scanType = scan;
  const int step = OrvImage::GetGenericStep(format, width, height);
  p.info.step = step < 0 ? -step : step;
  p.info.size = static_cast<uint32_t>(OrvImage::GetPictureSize(format, width, height, p.info.step));
  p.data.assign(p.info.size, 0);
  return p;
}

void Y4mToPicture(const Y4mHeader& h, const std::vector<uint8_t>& planes, Picture* p) {
  const uint32_t w = h.width, ht = h.height, s = StepOf(*p);
  const uint32_t cw = h.ChromaWidth(), ch = h.ChromaHeight();
  const uint8_t* y = planes.data();
  const uint8_t* cb = y + size_t(w) * ht;
  const uint8_t* cr = cb + size_t(cw) * ch;
  uint8_t* out = p->data.data();
  if (h.chroma == Y4mChroma::k422) {
    for (uint32_t line = 0; line < ht; ++line) {
      uint8_t* o = out + size_t(line) * s;
      for (uint32_t x = 0; x < w; ++x) {
        o[2 * x] = y[size_t(line) * w + x];
        if ((x & 1) == 0 && x + 1 < w) {
          o[2 * x + 1] = cb[size_t(line) * cw + x / 2];
          o[2 * x + 3] = cr[size_t(line) * cw + x / 2];
        }
      }
    }
    return;
  }
  for (uint32_t line = 0; line < ht; ++line)
    std::memcpy(out + size_t(line) * s, y + size_t(line) * w, w);
  uint8_t* pcb = out + size_t(s) * ht;
  uint8_t* pcr = pcb + size_t(ht / 2) * (s / 2);
  for (uint32_t line = 0; line < ht / 2; ++line) {
    for (uint32_t x = 0; x < w / 2; ++x) {
      const bool mono = h.chroma == Y4mChroma::kMono;
      pcb[size_t(line) * (s / 2) + x] = mono ? 128 : cb[size_t(line) * cw + x];
      pcr[size_t(line) * (s / 2) + x] = mono ? 128 : cr[size_t(line) * cw + x];
    }
  }
}

void PictureToY4m(const Picture& p, std::vector<uint8_t>* planes) {
  const uint32_t w = p.info.width, h = p.info.height, s = StepOf(p);
  const uint32_t cw = (w + 1) / 2;
  const uint8_t* in = p.data.data();
  if (p.info.colorFormat == OrvImage::CF_CCIR601YUY2) {
    planes->assign(size_t(w) * h + 2ull * cw * h, 0);
    uint8_t* y = planes->data();
    uint8_t* cb = y + size_t(w) * h;
    uint8_t* cr = cb + size_t(cw) * h;
    for (uint32_t line = 0; line < h; ++line) {
      const uint8_t* i = in + size_t(line) * s;
      for (uint32_t x = 0; x < w; ++x) y[size_t(line) * w + x] = i[2 * x];
      for (uint32_t c = 0; c < cw; ++c) {
        const uint32_t pair = std::min(c, w / 2 == 0 ? 0 : w / 2 - 1);
        cb[size_t(line) * cw + c] = w >= 2 ? i[4 * pair + 1] : 128;
        cr[size_t(line) * cw + c] = w >= 2 ? i[4 * pair + 3] : 128;
      }
    }
    return;
  }
  const uint32_t ch = (h + 1) / 2;
  planes->assign(size_t(w) * h + 2ull * cw * ch, 128);
  uint8_t* y = planes->data();
  uint8_t* cb = y + size_t(w) * h;
  uint8_t* cr = cb + size_t(cw) * ch;
  for (uint32_t line = 0; line < h; ++line)
    std::memcpy(y + size_t(line) * w, in + size_t(line) * s, w);
  const uint8_t* p1 = in + size_t(s) * h;
  const uint8_t* p2 = p1 + size_t(h / 2) * (s / 2);
  const bool yv12 = p.info.colorFormat == OrvImage::CF_YV12;
  const uint8_t* pcb = yv12 ? p2 : p1;
  const uint8_t* pcr = yv12 ? p1 : p2;
  if (w < 2 || h < 2) return;  // no chroma of its own: neutral
  for (uint32_t line = 0; line < ch; ++line) {
    const uint32_t from = std::min(line, h / 2 - 1);
    for (uint32_t c = 0; c < cw; ++c) {
      const uint32_t col = std::min(c, w / 2 - 1);
      cb[size_t(line) * cw + c] = pcb[size_t(from) * (s / 2) + col];
      cr[size_t(line) * cw + c] = pcr[size_t(from) * (s / 2) + col];
    }
  }
}

void PictureToRaw(const Picture& p, std::vector<uint8_t>* out) {
  const size_t line = size_t(p.info.width) * BytesPerPixel(p.info.colorFormat);
  const uint32_t s = StepOf(p);
  out->resize(line * p.info.height);
  for (uint32_t y = 0; y < p.info.height; ++y) {
    // A bottom-up picture has its top line last in memory.
    const uint32_t from = p.info.step < 0 ? p.info.height - 1 - y : y;
    std::memcpy(out->data() + line * y, p.data.data() + size_t(from) * s, line);
  }
}

namespace {

struct Yuv {
  uint8_t y, u, v;
};

// 75% colour bars at studio levels, BT.601.
const Yuv kBars[8] = {{180, 128, 128}, {162, 44, 142}, {131, 156, 44}, {112, 72, 58},
                      {84, 184, 198},  {65, 100, 212}, {35, 212, 114}, {16, 128, 128}};

// The colour of pixel (x, line) at time t (in frames; the two fields of an
// interlaced frame are half a frame apart).
Yuv PatternAt(uint32_t x, uint32_t line, uint32_t w, uint32_t h, double t) {
  const uint32_t barsEnd = h * 3 / 5;
  if (line < barsEnd) return kBars[std::min<uint32_t>(7, x * 8 / w)];
  const uint32_t lowerH = h - barsEnd;
  if (x < w / 2) {
    // Zone plate: rings whose spatial frequency grows towards the corners up
    // to the Nyquist limit, moving outwards with time.
    const double cx = x - w / 4.0, cy = (line - barsEnd) - lowerH / 2.0;
    const double r2 = cx * cx + cy * cy;
    const double k = 3.14159265358979 / (2.0 * std::max(w / 4.0, lowerH / 2.0));
    const double v = std::cos(k * r2 - 0.6 * t);
    return {static_cast<uint8_t>(126 + std::lround(100 * v)), 128, 128};
  }
  // A box that moves across a grey field, with a fixed vertical stripe.
  const uint32_t areaW = w - w / 2;
  const uint32_t box = std::max<uint32_t>(4, areaW / 8);
  const double speed = areaW / 60.0;  // crosses the area in two seconds
  const uint32_t pos = static_cast<uint32_t>(std::fmod(speed * t, double(areaW - box)));
  const uint32_t lx = x - w / 2, ly = line - barsEnd;
  if (lx >= pos && lx < pos + box && ly >= lowerH / 4 && ly < lowerH * 3 / 4) {
    return {235, 128, 128};
  }
  if (lx >= areaW / 2 && lx < areaW / 2 + 2) return {81, 90, 240};
  return {104, 128, 128};
}

}  // namespace

void DrawPattern(uint64_t index, Picture* p) {
  const uint32_t w = p->info.width, h = p->info.height, s = StepOf(*p);
  const OrvImage::SCAN_TYPE scan = p->info.scanType;
  auto timeOf = [&](uint32_t line) {
    if (scan == OrvImage::SCAN_PROGRESSIVE) return double(index);
    const bool top = (line & 1) == 0;
    const bool earlier = top == (scan == OrvImage::SCAN_TOP_FIELD_FIRST);
    return double(index) + (earlier ? 0.0 : 0.5);
  };
  uint8_t* out = p->data.data();
  if (p->info.colorFormat == OrvImage::CF_CCIR601YUY2) {
    for (uint32_t line = 0; line < h; ++line) {
      const double t = timeOf(line);
      uint8_t* o = out + size_t(line) * s;
      for (uint32_t x = 0; x + 1 < w; x += 2) {
        const Yuv a = PatternAt(x, line, w, h, t), b = PatternAt(x + 1, line, w, h, t);
        o[2 * x] = a.y;
        o[2 * x + 1] = static_cast<uint8_t>((a.u + b.u + 1) / 2);
        o[2 * x + 2] = b.y;
        o[2 * x + 3] = static_cast<uint8_t>((a.v + b.v + 1) / 2);
      }
      if (w & 1) o[2 * (w - 1)] = PatternAt(w - 1, line, w, h, t).y;
    }
    return;
  }
  uint8_t* cb = out + size_t(s) * h;
  uint8_t* cr = cb + size_t(h / 2) * (s / 2);
  for (uint32_t line = 0; line < h; ++line) {
    const double t = timeOf(line);
    for (uint32_t x = 0; x < w; ++x) out[size_t(line) * s + x] = PatternAt(x, line, w, h, t).y;
  }
  // Chroma lines of an interlaced picture belong to the fields in turn.
  for (uint32_t c = 0; c < h / 2; ++c) {
    const uint32_t line = scan == OrvImage::SCAN_PROGRESSIVE ? 2 * c : (c / 2) * 4 + (c % 2);
    const double t = timeOf(line);
    for (uint32_t x = 0; x < w / 2; ++x) {
      const Yuv v = PatternAt(2 * x, std::min(line, h - 1), w, h, t);
      cb[size_t(c) * (s / 2) + x] = v.u;
      cr[size_t(c) * (s / 2) + x] = v.v;
    }
  }
}

}  // namespace orvconvert
