#include "y4m.h"

#include <cstdlib>
#include <sstream>

namespace orvconvert {

namespace {

constexpr size_t kMaxLine = 4096;
constexpr uint32_t kMaxSide = 65535;

bool ParseUnsigned(const std::string& text, uint32_t* value) {
  if (text.empty() || text.size() > 10) return false;
  uint64_t v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    v = v * 10 + uint64_t(c - '0');
  }
  if (v > 0xFFFFFFFFull) return false;
  *value = static_cast<uint32_t>(v);
  return true;
}

bool ParseRatio(const std::string& text, uint32_t* a, uint32_t* b) {
  const size_t colon = text.find(':');
  return colon != std::string::npos && ParseUnsigned(text.substr(0, colon), a) &&
         ParseUnsigned(text.substr(colon + 1), b);
}

}  // namespace

bool ParseY4mHeader(const std::string& line, Y4mHeader* h, std::string* error) {
  std::istringstream tokens(line);
  std::string magic;
  tokens >> magic;
  if (magic != "YUV4MPEG2") {
    *error = "not a YUV4MPEG2 stream (the header must start with \"YUV4MPEG2\")";
    return false;
  }
  *h = Y4mHeader();
  bool haveW = false, haveH = false;
  std::string t;
  while (tokens >> t) {
    const char tag = t[0];
    const std::string v = t.substr(1);
    switch (tag) {
      case 'W':
        if (!ParseUnsigned(v, &h->width)) {
          *error = "bad width \"" + t + "\"";
          return false;
        }
        haveW = true;
        break;
      case 'H':
        if (!ParseUnsigned(v, &h->height)) {
          *error = "bad height \"" + t + "\"";
          return false;
        }
        haveH = true;
        break;
      case 'F':
        if (!ParseRatio(v, &h->rateNum, &h->rateDen) || h->rateNum == 0 || h->rateDen == 0) {
          *error = "bad frame rate \"" + t + "\"";
          return false;
        }
        break;
      case 'I':
        if (v == "p" || v == "?") {
          h->interlace = 'p';
        } else if (v == "t" || v == "b") {
          h->interlace = v[0];
        } else if (v == "m") {
          *error = "mixed scan types (Im) are not supported: each frame would need its own";
          return false;
        } else {
          *error = "bad interlace value \"" + t + "\"";
          return false;
        }
        break;
      case 'A':
        if (!ParseRatio(v, &h->parX, &h->parY)) {
          *error = "bad pixel aspect \"" + t + "\"";
          return false;
        }
        break;
      case 'C':
        if (v.compare(0, 3, "420") == 0) {
          h->chroma = Y4mChroma::k420;
        } else if (v == "422") {
          h->chroma = Y4mChroma::k422;
        } else if (v == "mono") {
          h->chroma = Y4mChroma::kMono;
        } else {
          *error = "colour space \"" + t + "\" is not supported (420, 422 and mono are)";
          return false;
        }
        break;
      case 'X':
        break;  // application data
      default:
        *error = "unknown header field \"" + t + "\"";
        return false;
    }
  }
  if (!haveW || !haveH) {
    *error = "the header has no width (W) or no height (H)";
    return false;
  }
  if (h->width == 0 || h->height == 0 || h->width > kMaxSide || h->height > kMaxSide) {
    *error = "picture size " + std::to_string(h->width) + "x" + std::to_string(h->height) +
             " is outside 1..65535";
    return false;
  }
  return true;
}

std::string FormatY4mHeader(const Y4mHeader& h) {
  std::ostringstream s;
  s << "YUV4MPEG2 W" << h.width << " H" << h.height << " F" << h.rateNum << ":" << h.rateDen << " I"
    << h.interlace << " A" << h.parX << ":" << h.parY << " C"
    << (h.chroma == Y4mChroma::k420   ? "420jpeg"
        : h.chroma == Y4mChroma::k422 ? "422"
                                      : "mono")
    << "\n";
  return s.str();
}

bool Y4mReader::ReadLine(std::string* line, bool* atEnd) {
  line->clear();
  *atEnd = false;
  for (;;) {
    const int c = std::fgetc(in_);
    if (c == EOF) {
      *atEnd = line->empty();
      return false;
    }
    if (c == '\n') return true;
    if (line->size() >= kMaxLine) return false;
    line->push_back(static_cast<char>(c));
  }
}

bool Y4mReader::ReadHeader(std::string* error) {
  std::string line;
  bool atEnd;
  if (!ReadLine(&line, &atEnd)) {
    *error = atEnd ? "the input is empty" : "the header line is cut short or too long";
    return false;
  }
  if (!ParseY4mHeader(line, &header_, error)) return false;
  if (header_.FrameBytes() > (1ull << 31)) {
    *error = "frames of " + std::to_string(header_.FrameBytes()) + " bytes are too large";
    return false;
  }
  return true;
}

bool Y4mReader::ReadFrame(std::vector<uint8_t>* planes, bool* end, std::string* error) {
  *end = false;
  const std::string where = "frame " + std::to_string(frames_) + ": ";
  std::string line;
  bool atEnd;
  if (!ReadLine(&line, &atEnd)) {
    if (atEnd) {
      *end = true;
      return false;
    }
    *error = where + "the frame marker is cut short or too long";
    return false;
  }
  if (line.compare(0, 5, "FRAME") != 0 || (line.size() > 5 && line[5] != ' ')) {
    *error = where + "expected \"FRAME\", found \"" + line.substr(0, 40) + "\"";
    return false;
  }
  const uint64_t bytes = header_.FrameBytes();
  planes->resize(bytes);
  const size_t got = std::fread(planes->data(), 1, bytes, in_);
  if (got != bytes) {
    *error =
        where + "truncated: " + std::to_string(got) + " of " + std::to_string(bytes) + " bytes";
    return false;
  }
  ++frames_;
  return true;
}

}  // namespace orvconvert
