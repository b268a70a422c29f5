// orv-convert: converts raw video with one OrvImage conversion plan: pixel
// format, size, aspect (bars or stretch), scan type and field order at once.
// Reads YUV4MPEG2 from a file or standard input, or draws a moving test
// pattern; writes YUV4MPEG2 (4:2:0, 4:2:2) or raw RGB frames; can write a
// PNG contact sheet of a few output frames.
#include <OrvUtility.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "frames.h"
#include "png.h"
#include "y4m.h"

namespace {

using namespace orvconvert;
using Clock = std::chrono::steady_clock;

const char kUsage[] =
    "Usage: orv-convert [options]\n"
    "\n"
    "Converts raw video frame by frame with one OrvImage conversion plan: pixel\n"
    "format, size, aspect, scan type and field order change in one step, with the\n"
    "two fields of interlaced pictures kept apart.\n"
    "\n"
    "Input (one of):\n"
    "  -i, --input FILE        YUV4MPEG2 stream (\"-\" for standard input). Its header\n"
    "                          gives the size, frame rate, scan type (It, Ib, Ip) and\n"
    "                          pixel aspect (A); C420*, C422 and Cmono are read.\n"
    "  (no --input)            a built-in moving test pattern: colour bars, a zone\n"
    "                          plate and a box moving between the fields\n"
    "      --pattern-size WxH  size of the pattern (default 1920x1080)\n"
    "      --pattern-scan S    progressive, tff or bff (default tff)\n"
    "      --pattern-format F  yuy2 or yuv420 (default yuy2)\n"
    "  -n, --frames N          convert at most N frames (pattern default: 60)\n"
    "\n"
    "Output:\n"
    "  -o, --output FILE       where to write (\"-\" for standard output). yuv420,\n"
    "                          yv12 and yuy2 are written as YUV4MPEG2 (C420jpeg or\n"
    "                          C422); rgb24, rgb32 and rgba as raw frames, top line\n"
    "                          first, bytes B G R (X or A) per pixel. Without -o the\n"
    "                          frames are converted and counted only.\n"
    "  -f, --format F          yuv420 (default), yv12, yuy2, rgb24, rgb32, rgba\n"
    "  -s, --size WxH          output size (default: the input's)\n"
    "      --scan S            progressive, tff or bff (default: the input's)\n"
    "      --aspect A          keep (bars where the shapes differ) or stretch\n"
    "                          (default stretch)\n"
    "      --dar X:Y           display aspect of the output (default: its size,\n"
    "                          square pixels)\n"
    "      --interpolation M   nearest, linear, cubic, auto (default), tavo (the\n"
    "                          library's own scaler), vrscl-field, vrscl-frame\n"
    "      --deinterlace D     double (line doubling, default) or resize (one\n"
    "                          field stretched by the resizer)\n"
    "      --snapshot FILE.png a contact sheet of up to six output frames\n"
    "  -q, --quiet             no progress line and no summary\n"
    "  -h, --help              this text\n"
    "\n"
    "Files are written under a temporary name and renamed when complete, so a\n"
    "failed run leaves nothing half-written. Exit status: 0 success, 1 the input\n"
    "or the conversion failed, 2 bad arguments.\n"
    "\n"
    "Example: orv-convert --pattern-size 1920x1080 --pattern-scan tff -f rgb32 \\\n"
    "           -s 720x480 --scan progressive -o out.rgb --snapshot sheet.png\n";

struct Options {
  std::string input, output, snapshot;
  bool haveInput = false;
  OrvImage::COLOR_FORMAT_TYPE format = OrvImage::CF_YUV420;
  uint32_t width = 0, height = 0;
  int scan = -1;  // -1: the input's
  bool keepAspect = false;
  uint32_t darX = 0, darY = 0;
  OrvImage::INTERPOLATION_MODE interpolation = OrvImage::INTERPOLATION_AUTO;
  OrvImage::DEINTERLACE_MODE deinterlace = OrvImage::DEINTERLACE_LINE_DOUBLE;
  uint32_t patternW = 1920, patternH = 1080;
  OrvImage::SCAN_TYPE patternScan = OrvImage::SCAN_TOP_FIELD_FIRST;
  OrvImage::COLOR_FORMAT_TYPE patternFormat = OrvImage::CF_CCIR601YUY2;
  int64_t frames = -1;
  bool quiet = false;
};

[[noreturn]] void Usage(const std::string& message) {
  std::fprintf(stderr, "orv-convert: %s\nTry 'orv-convert --help'.\n", message.c_str());
  std::exit(2);
}

bool ParseSize(const char* text, uint32_t* w, uint32_t* h) {
  char* end = nullptr;
  const unsigned long a = std::strtoul(text, &end, 10);
  if (end == text || (*end != 'x' && *end != 'X')) return false;
  const char* second = end + 1;
  const unsigned long b = std::strtoul(second, &end, 10);
  if (end == second || *end != '\0' || a < 1 || b < 1 || a > 65535 || b > 65535) return false;
  *w = static_cast<uint32_t>(a);
  *h = static_cast<uint32_t>(b);
  return true;
}

bool ParseRatioArg(const char* text, uint32_t* x, uint32_t* y) {
  char* end = nullptr;
  const unsigned long a = std::strtoul(text, &end, 10);
  if (end == text || *end != ':') return false;
  const char* second = end + 1;
  const unsigned long b = std::strtoul(second, &end, 10);
  if (end == second || *end != '\0' || a < 1 || b < 1 || a > 1000000 || b > 1000000) return false;
  *x = static_cast<uint32_t>(a);
  *y = static_cast<uint32_t>(b);
  return true;
}

int ParseScan(const std::string& s) {
  if (s == "progressive" || s == "p") return OrvImage::SCAN_PROGRESSIVE;
  if (s == "tff" || s == "t") return OrvImage::SCAN_TOP_FIELD_FIRST;
  if (s == "bff" || s == "b") return OrvImage::SCAN_BOTTOM_FIELD_FIRST;
  return -1;
}

struct FormatName {
  const char* name;
  OrvImage::COLOR_FORMAT_TYPE format;
};
const FormatName kFormats[] = {{"yuv420", OrvImage::CF_YUV420},    {"yv12", OrvImage::CF_YV12},
                               {"yuy2", OrvImage::CF_CCIR601YUY2}, {"rgb24", OrvImage::CF_RGB24},
                               {"rgb32", OrvImage::CF_RGB32},      {"rgba", OrvImage::CF_RGBA}};

const char* NameOf(OrvImage::COLOR_FORMAT_TYPE f) {
  for (const FormatName& n : kFormats) {
    if (n.format == f) return n.name;
  }
  return "?";
}

const char* ScanName(int scan) {
  return scan == OrvImage::SCAN_TOP_FIELD_FIRST      ? "tff"
         : scan == OrvImage::SCAN_BOTTOM_FIELD_FIRST ? "bff"
                                                     : "progressive";
}

Options ParseOptions(int argc, char** argv) {
  enum {
    kPatternSize = 1000,
    kPatternScan,
    kPatternFormat,
    kScan,
    kAspect,
    kDar,
    kInterpolation,
    kDeinterlace,
    kSnapshot
  };
  static const option longOptions[] = {
      {"input", required_argument, nullptr, 'i'},
      {"output", required_argument, nullptr, 'o'},
      {"format", required_argument, nullptr, 'f'},
      {"size", required_argument, nullptr, 's'},
      {"frames", required_argument, nullptr, 'n'},
      {"quiet", no_argument, nullptr, 'q'},
      {"help", no_argument, nullptr, 'h'},
      {"pattern-size", required_argument, nullptr, kPatternSize},
      {"pattern-scan", required_argument, nullptr, kPatternScan},
      {"pattern-format", required_argument, nullptr, kPatternFormat},
      {"scan", required_argument, nullptr, kScan},
      {"aspect", required_argument, nullptr, kAspect},
      {"dar", required_argument, nullptr, kDar},
      {"interpolation", required_argument, nullptr, kInterpolation},
      {"deinterlace", required_argument, nullptr, kDeinterlace},
      {"snapshot", required_argument, nullptr, kSnapshot},
      {nullptr, 0, nullptr, 0}};
  Options o;
  opterr = 0;
  int c;
  while ((c = getopt_long(argc, argv, ":i:o:f:s:n:qh", longOptions, nullptr)) != -1) {
    const std::string arg = optarg ? optarg : "";
    switch (c) {
      case 'i':
        o.input = arg;
        o.haveInput = true;
        break;
      case 'o':
        o.output = arg;
        break;
      case 'f': {
        bool found = false;
        for (const FormatName& n : kFormats) {
          if (arg == n.name) o.format = n.format, found = true;
        }
        if (!found) Usage("unknown output format '" + arg + "'");
        break;
      }
      case 's':
        if (!ParseSize(optarg, &o.width, &o.height)) Usage("bad size '" + arg + "' (want WxH)");
        break;
      case 'n': {
        char* end = nullptr;
        const long long n = std::strtoll(optarg, &end, 10);
        if (end == optarg || *end != '\0' || n < 0) Usage("bad frame count '" + arg + "'");
        o.frames = n;
        break;
      }
      case 'q':
        o.quiet = true;
        break;
      case 'h':
        std::fputs(kUsage, stdout);
        std::exit(0);
      case kPatternSize:
        if (!ParseSize(optarg, &o.patternW, &o.patternH)) Usage("bad pattern size '" + arg + "'");
        break;
      case kPatternScan: {
        const int s = ParseScan(arg);
        if (s < 0) Usage("bad pattern scan '" + arg + "'");
        o.patternScan = static_cast<OrvImage::SCAN_TYPE>(s);
        break;
      }
      case kPatternFormat:
        if (arg == "yuy2") {
          o.patternFormat = OrvImage::CF_CCIR601YUY2;
        } else if (arg == "yuv420") {
          o.patternFormat = OrvImage::CF_YUV420;
        } else {
          Usage("bad pattern format '" + arg + "' (yuy2 or yuv420)");
        }
        break;
      case kScan:
        o.scan = ParseScan(arg);
        if (o.scan < 0) Usage("bad scan '" + arg + "' (progressive, tff or bff)");
        break;
      case kAspect:
        if (arg == "keep") {
          o.keepAspect = true;
        } else if (arg == "stretch") {
          o.keepAspect = false;
        } else {
          Usage("bad aspect '" + arg + "' (keep or stretch)");
        }
        break;
      case kDar:
        if (!ParseRatioArg(optarg, &o.darX, &o.darY)) Usage("bad display aspect '" + arg + "'");
        break;
      case kInterpolation: {
        static const char* names[] = {"nearest", "linear",      "cubic",      "auto",
                                      "tavo",    "vrscl-field", "vrscl-frame"};
        int found = -1;
        for (int i = 0; i < 7; ++i) {
          if (arg == names[i]) found = i;
        }
        if (found < 0) Usage("unknown interpolation '" + arg + "'");
        o.interpolation = static_cast<OrvImage::INTERPOLATION_MODE>(found);
        break;
      }
      case kDeinterlace:
        if (arg == "double") {
          o.deinterlace = OrvImage::DEINTERLACE_LINE_DOUBLE;
        } else if (arg == "resize") {
          o.deinterlace = OrvImage::DEINTERLACE_FIELD_RESIZE;
        } else {
          Usage("bad de-interlace mode '" + arg + "' (double or resize)");
        }
        break;
      case kSnapshot:
        o.snapshot = arg;
        break;
      case ':':
        Usage(std::string("option '") + argv[optind - 1] + "' needs a value");
      default:
        Usage(std::string("unknown option '") + argv[optind - 1] + "'");
    }
  }
  if (optind < argc) Usage(std::string("unexpected argument '") + argv[optind] + "'");
  return o;
}

// True while a progress line stands on the terminal without its newline.
bool g_progressShown = false;

class OutputFile;
// Files still being written; a failed run drops them all.
std::vector<OutputFile*>& OpenOutputs() {
  static std::vector<OutputFile*> open;
  return open;
}

// A file written under a temporary name in its own directory and renamed
// into place by Commit; dropped if the run ends any other way.
class OutputFile {
 public:
  OutputFile() { OpenOutputs().push_back(this); }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Closes and removes the temporary file of an uncommitted output.
  void Drop() {
    if (file_ != nullptr && file_ != stdout) {
      std::fclose(file_);
      ::unlink(temp_.c_str());
    }
    file_ = nullptr;
  }
  bool Open(const std::string& path, std::string* error) {
    path_ = path;
    if (path == "-") {
      file_ = stdout;
      return true;
    }
    temp_ = path + ".partXXXXXX";
    std::vector<char> name(temp_.begin(), temp_.end());
    name.push_back('\0');
    const int fd = mkstemp(name.data());
    if (fd < 0) {
      *error = "cannot create '" + path + "': " + std::strerror(errno);
      return false;
    }
    temp_ = name.data();
    file_ = fdopen(fd, "wb");
    if (file_ == nullptr) {
      ::close(fd);
      ::unlink(temp_.c_str());
      *error = "cannot open '" + path + "'";
      return false;
    }
    return true;
  }
  bool Write(const void* data, size_t size) {
    return size == 0 || std::fwrite(data, 1, size, file_) == size;
  }
  bool Commit(std::string* error) {
    if (file_ == nullptr) return true;
    if (file_ == stdout) {
      file_ = nullptr;
      return std::fflush(stdout) == 0;
    }
    const bool ok = std::fflush(file_) == 0 && std::ferror(file_) == 0;
    std::fclose(file_);
    file_ = nullptr;
    if (!ok || std::rename(temp_.c_str(), path_.c_str()) != 0) {
      ::unlink(temp_.c_str());
      *error = "cannot write '" + path_ + "': " + std::strerror(errno);
      return false;
    }
    // mkstemp makes the file private; give it the usual permissions.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::chmod(path_.c_str(), 0666 & ~mask);
    return true;
  }
  ~OutputFile() {
    Drop();
    auto& open = OpenOutputs();
    open.erase(std::remove(open.begin(), open.end(), this), open.end());
  }
  bool open() const { return file_ != nullptr; }

 private:
  std::string path_, temp_;
  FILE* file_ = nullptr;
};

const char* ResultText(unsigned long code) {
  switch (code) {
    case 1:
      return "out of memory";
    case 2:
      return "destination too small";
    case 3:
      return "invalid or unsupported request";
    case 4:
      return "processing failed";
    default:
      return "unknown failure";
  }
}

[[noreturn]] void Fail(const std::string& message) {
  for (OutputFile* f : OpenOutputs()) f->Drop();
  std::fprintf(stderr, "%sorv-convert: %s\n", g_progressShown ? "\n" : "", message.c_str());
  std::exit(1);
}

// Reduces a ratio until both terms fit in 32 bits.
void Reduce(uint64_t* a, uint64_t* b) {
  const uint64_t g = std::gcd(*a, *b);
  if (g > 1) *a /= g, *b /= g;
  while (*a > 0xFFFFFFFFull || *b > 0xFFFFFFFFull) *a >>= 1, *b >>= 1;
}

// A frame of the contact sheet: R G B, top line first.
struct Thumb {
  uint64_t index;
  std::vector<uint8_t> rgb;
};

Thumb MakeThumb(const Picture& out, uint64_t index, uint32_t tw, uint32_t th) {
  Picture src = out;
  if (src.info.colorFormat == OrvImage::CF_YV12) {
    // Swap the chroma planes: the same picture as CF_YUV420.
    const uint32_t s = static_cast<uint32_t>(src.info.step);
    const size_t plane = size_t(src.info.height / 2) * (s / 2);
    uint8_t* c1 = src.data.data() + size_t(s) * src.info.height;
    std::swap_ranges(c1, c1 + plane, c1 + plane);
    src.info.colorFormat = OrvImage::CF_YUV420;
  }
  src.info.scanType = OrvImage::SCAN_PROGRESSIVE;
  src.info.aspectX = src.info.aspectY = 0;
  Picture rgb = MakePicture(OrvImage::CF_RGB24, tw, th, OrvImage::SCAN_PROGRESSIVE);
  OrvImage::CONVERT_MODE mode = {};
  mode.interpolation = OrvImage::INTERPOLATION_AUTO;
  const unsigned long r =
      OrvImage::Convert(src.data.data(), rgb.data.data(), &src.info, &rgb.info, &mode);
  if (r != 0) Fail(std::string("snapshot: conversion to RGB failed: ") + ResultText(r));
  Thumb t;
  t.index = index;
  t.rgb.resize(size_t(tw) * th * 3);
  for (uint32_t y = 0; y < th; ++y) {
    const uint8_t* line = rgb.data.data() + size_t(y) * rgb.info.step;
    for (uint32_t x = 0; x < tw; ++x) {
      uint8_t* o = &t.rgb[(size_t(y) * tw + x) * 3];
      o[0] = line[3 * x + 2];
      o[1] = line[3 * x + 1];
      o[2] = line[3 * x];
    }
  }
  return t;
}

}  // namespace

int main(int argc, char** argv) {
  const Options o = ParseOptions(argc, argv);

  // The source.
  FILE* in = nullptr;
  Y4mReader* reader = nullptr;
  Picture source;
  uint32_t rateNum = 30000, rateDen = 1001;
  int64_t total = -1;        // frames to expect, when known (for the contact sheet)
  int64_t limit = o.frames;  // frames to convert at most; -1: all
  if (o.haveInput) {
    in = o.input == "-" ? stdin : std::fopen(o.input.c_str(), "rb");
    if (in == nullptr) Fail("cannot open '" + o.input + "': " + std::strerror(errno));
    reader = new Y4mReader(in);
    std::string error;
    if (!reader->ReadHeader(&error)) Fail(o.input + ": header: " + error);
    const Y4mHeader& h = reader->header();
    const auto scan = h.interlace == 't'   ? OrvImage::SCAN_TOP_FIELD_FIRST
                      : h.interlace == 'b' ? OrvImage::SCAN_BOTTOM_FIELD_FIRST
                                           : OrvImage::SCAN_PROGRESSIVE;
    source =
        MakePicture(h.chroma == Y4mChroma::k422 ? OrvImage::CF_CCIR601YUY2 : OrvImage::CF_YUV420,
                    h.width, h.height, scan);
    if (h.parX != 0 && h.parY != 0) {
      uint64_t ax = uint64_t(h.width) * h.parX, ay = uint64_t(h.height) * h.parY;
      Reduce(&ax, &ay);
      source.info.aspectX = static_cast<uint32_t>(ax);
      source.info.aspectY = static_cast<uint32_t>(ay);
    }
    rateNum = h.rateNum;
    rateDen = h.rateDen;
    struct stat st;
    if (in != stdin && fstat(fileno(in), &st) == 0 && S_ISREG(st.st_mode)) {
      total = static_cast<int64_t>(uint64_t(st.st_size) / (h.FrameBytes() + 6));
    }
    if (o.frames >= 0 && (total < 0 || o.frames < total)) total = o.frames;
    if (total == 0 && o.frames != 0) total = -1;
  } else {
    source = MakePicture(o.patternFormat, o.patternW, o.patternH, o.patternScan);
    source.info.aspectX = 16;
    source.info.aspectY = 9;
    total = o.frames >= 0 ? o.frames : 60;
    limit = total;
  }

  // The destination and the plan.
  const uint32_t dw = o.width ? o.width : source.info.width;
  const uint32_t dh = o.height ? o.height : source.info.height;
  const auto dscan = o.scan >= 0 ? static_cast<OrvImage::SCAN_TYPE>(o.scan) : source.info.scanType;
  Picture out = MakePicture(o.format, dw, dh, dscan);
  out.info.aspectX = o.darX;
  out.info.aspectY = o.darY;
  OrvImage::CONVERT_MODE mode = {};
  mode.keepAspect = o.keepAspect;
  mode.convertInterlace = true;
  mode.interpolation = o.interpolation;
  mode.deinterlace = o.deinterlace;
  OrvImage image;
  OrvImage::PICTURE_INFO planInfo = out.info;
  const unsigned long init = image.InitializeConvert(&source.info, &planInfo, &mode);
  if (init != 0) {
    Fail(std::string("cannot plan the conversion from ") +
         (source.info.colorFormat == OrvImage::CF_CCIR601YUY2 ? "yuy2" : "yuv420") + " to " +
         NameOf(o.format) + ": " + ResultText(init));
  }
  if (planInfo.size > out.data.size()) out.data.resize(planInfo.size);

  const bool y4mOut = o.format == OrvImage::CF_YUV420 || o.format == OrvImage::CF_YV12 ||
                      o.format == OrvImage::CF_CCIR601YUY2;
  OutputFile output;
  std::string error;
  if (!o.output.empty()) {
    if (!output.Open(o.output, &error)) Fail(error);
    if (y4mOut) {
      Y4mHeader h;
      h.width = dw;
      h.height = dh;
      h.rateNum = rateNum;
      h.rateDen = rateDen;
      h.interlace = dscan == OrvImage::SCAN_TOP_FIELD_FIRST      ? 't'
                    : dscan == OrvImage::SCAN_BOTTOM_FIELD_FIRST ? 'b'
                                                                 : 'p';
      h.chroma = o.format == OrvImage::CF_CCIR601YUY2 ? Y4mChroma::k422 : Y4mChroma::k420;
      h.parX = h.parY = 1;
      if (o.darX != 0) {
        uint64_t px = uint64_t(o.darX) * dh, py = uint64_t(o.darY) * dw;
        Reduce(&px, &py);
        h.parX = static_cast<uint32_t>(px);
        h.parY = static_cast<uint32_t>(py);
      }
      const std::string header = FormatY4mHeader(h);
      if (!output.Write(header.data(), header.size())) Fail("cannot write '" + o.output + "'");
    }
  }

  // Which frames go on the contact sheet: spread over the run when its length
  // is known, else the first ones.
  const int sheetFrames = 6;
  std::vector<uint64_t> picks;
  if (!o.snapshot.empty()) {
    if (total > 0) {
      const int n = static_cast<int>(std::min<int64_t>(sheetFrames, total));
      for (int i = 0; i < n; ++i) {
        picks.push_back(n == 1 ? 0 : uint64_t(i) * uint64_t(total - 1) / uint64_t(n - 1));
      }
    } else {
      for (int i = 0; i < sheetFrames; ++i) picks.push_back(i);
    }
  }
  const uint32_t darX = o.darX ? o.darX : dw, darY = o.darY ? o.darY : dh;
  uint32_t tw = std::min<uint32_t>(480, dw);
  uint32_t th = static_cast<uint32_t>(std::max<uint64_t>(2, uint64_t(tw) * darY / darX));
  if (th > 360) {
    th = 360;
    tw = static_cast<uint32_t>(std::max<uint64_t>(2, uint64_t(th) * darX / darY));
  }
  std::vector<Thumb> thumbs;

  const bool progress = !o.quiet && isatty(2);
  const auto start = Clock::now();
  auto lastShown = start;
  std::vector<uint8_t> planes, bytes;
  uint64_t done = 0;
  for (;;) {
    if (limit >= 0 && int64_t(done) >= limit) break;
    if (reader) {
      bool end = false;
      if (!reader->ReadFrame(&planes, &end, &error)) {
        if (end) break;
        Fail(o.input + ": " + error);
      }
      Y4mToPicture(reader->header(), planes, &source);
    } else {
      DrawPattern(done, &source);
    }
    const unsigned long r = image.Convert(source.data.data(), out.data.data());
    if (r != 0) {
      Fail("frame " + std::to_string(done) + ": conversion from " +
           (source.info.colorFormat == OrvImage::CF_CCIR601YUY2 ? "yuy2" : "yuv420") + " " +
           std::to_string(source.info.width) + "x" + std::to_string(source.info.height) + " to " +
           NameOf(o.format) + " " + std::to_string(dw) + "x" + std::to_string(dh) +
           " failed: " + ResultText(r));
    }
    if (output.open()) {
      bool ok;
      if (y4mOut) {
        PictureToY4m(out, &bytes);
        ok = output.Write("FRAME\n", 6) && output.Write(bytes.data(), bytes.size());
      } else {
        PictureToRaw(out, &bytes);
        ok = output.Write(bytes.data(), bytes.size());
      }
      if (!ok) Fail("cannot write '" + o.output + "': " + std::strerror(errno));
    }
    if (std::find(picks.begin(), picks.end(), done) != picks.end()) {
      thumbs.push_back(MakeThumb(out, done, tw, th));
    }
    ++done;
    const auto now = Clock::now();
    if (progress && now - lastShown > std::chrono::milliseconds(200)) {
      lastShown = now;
      g_progressShown = true;
      const double s = std::chrono::duration<double>(now - start).count();
      if (total >= 0) {
        std::fprintf(stderr, "\rframe %llu/%lld  %.1f fps ", (unsigned long long)done,
                     (long long)total, done / s);
      } else {
        std::fprintf(stderr, "\rframe %llu  %.1f fps ", (unsigned long long)done, done / s);
      }
    }
  }
  if (reader && done == 0 && limit != 0) Fail(o.input + ": the stream has no frames");
  if (!output.Commit(&error)) Fail(error);

  if (!o.snapshot.empty() && !thumbs.empty()) {
    const uint32_t gap = 8;
    const uint32_t cols = std::min<uint32_t>(3, static_cast<uint32_t>(thumbs.size()));
    const uint32_t rows = static_cast<uint32_t>((thumbs.size() + cols - 1) / cols);
    const uint32_t sw = cols * tw + (cols + 1) * gap, sh = rows * th + (rows + 1) * gap;
    std::vector<uint8_t> sheet(size_t(sw) * sh * 3, 48);
    for (size_t i = 0; i < thumbs.size(); ++i) {
      const uint32_t x0 = gap + uint32_t(i % cols) * (tw + gap);
      const uint32_t y0 = gap + uint32_t(i / cols) * (th + gap);
      for (uint32_t y = 0; y < th; ++y) {
        std::memcpy(&sheet[(size_t(y0 + y) * sw + x0) * 3], &thumbs[i].rgb[size_t(y) * tw * 3],
                    size_t(tw) * 3);
      }
    }
    const std::vector<uint8_t> png = EncodePng(sheet, sw, sh);
    OutputFile pngFile;
    if (!pngFile.Open(o.snapshot, &error)) Fail(error);
    if (!pngFile.Write(png.data(), png.size())) Fail("cannot write '" + o.snapshot + "'");
    if (!pngFile.Commit(&error)) Fail(error);
  }

  if (!o.quiet) {
    const double s = std::chrono::duration<double>(Clock::now() - start).count();
    std::fprintf(stderr,
                 "%sconverted %llu frames: %s %ux%u %s -> %s %ux%u %s in %.2f s (%.1f fps)\n",
                 g_progressShown ? "\r" : "", (unsigned long long)done,
                 source.info.colorFormat == OrvImage::CF_CCIR601YUY2 ? "yuy2" : "yuv420",
                 source.info.width, source.info.height, ScanName(source.info.scanType),
                 NameOf(o.format), dw, dh, ScanName(dscan), s, s > 0 ? done / s : 0.0);
    if (!o.snapshot.empty()) {
      std::fprintf(stderr, "contact sheet of %zu frames: %s\n", thumbs.size(), o.snapshot.c_str());
    }
  }
  delete reader;
  if (in != nullptr && in != stdin) std::fclose(in);
  return 0;
}
