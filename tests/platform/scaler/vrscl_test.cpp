#include "platform/scaler/vrscl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/platform/scaler/scaler_test_util.h"

namespace {

using scaler_test::Picture;
using scaler_test::Plane;

// An instance that is released at the end of the test.
class Scaler {
 public:
  explicit Scaler(orv::SimdLevel level = orv::DetectSimdLevel()) {
    EXPECT_EQ(orv::VRSCLCreateInstance(&handle_, level), orv::kVrsclOk);
  }
  ~Scaler() { orv::VRSCLReleaseInstance(&handle_); }
  int Setup(int sw, int sh, int dw, int dh) {
    return orv::VRSCLSetupConverter(handle_, sw, sh, sw, sh, dw, dh, dw, dh);
  }
  int Convert(Picture* dst, const Picture& src) {
    return orv::VRSCLConvert(handle_, dst->y.data(), dst->cb.data(), dst->cr.data(), dst->y.step,
                             dst->cb.step, src.y.data(), src.cb.data(), src.cr.data(), src.y.step,
                             src.cb.step);
  }
  orv::VRSCLHandle handle() const { return handle_; }

 private:
  orv::VRSCLHandle handle_ = nullptr;
};

// The filter in double, written out independently of the scaler's tables:
// centre-aligned geometry with the luma ratio, the interpolating cubic
// stretched by the reduction, edge samples repeated, weights normalised.
double RefCubic(double x) {
  x = std::fabs(x);
  if (x < 1) return 1.5 * x * x * x - 2.5 * x * x + 1;
  if (x < 2) return -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2;
  return 0;
}

std::vector<std::vector<double>> RefWeights(int srcSize, int dstSize, double ratio,
                                            std::vector<int>* first) {
  const double stretch = std::max(1.0, ratio);
  std::vector<std::vector<double>> out(dstSize, std::vector<double>(srcSize, 0.0));
  for (int i = 0; i < dstSize; ++i) {
    const double c = (i + 0.5) * ratio - 0.5;
    double sum = 0;
    for (int j = static_cast<int>(std::floor(c - 2 * stretch)) - 1; j <= c + 2 * stretch + 1; ++j) {
      const double k = RefCubic((j - c) / stretch);
      out[i][std::min(std::max(j, 0), srcSize - 1)] += k;
      sum += k;
    }
    for (double& w : out[i]) w /= sum;
  }
  (void)first;
  return out;
}

std::vector<double> RefScale(const Plane& src, int dw, int dh, double rx, double ry) {
  const auto wx = RefWeights(src.width, dw, rx, nullptr);
  const auto wy = RefWeights(src.height, dh, ry, nullptr);
  std::vector<double> mid(static_cast<size_t>(dh) * src.width, 0.0);
  for (int y = 0; y < dh; ++y)
    for (int j = 0; j < src.height; ++j)
      if (wy[y][j] != 0)
        for (int x = 0; x < src.width; ++x) mid[y * src.width + x] += wy[y][j] * src.at(x, j);
  std::vector<double> out(static_cast<size_t>(dw) * dh, 0.0);
  for (int y = 0; y < dh; ++y)
    for (int x = 0; x < dw; ++x)
      for (int i = 0; i < src.width; ++i) out[y * dw + x] += wx[x][i] * mid[y * src.width + i];
  return out;
}

// Largest difference between a plane and the rounded, clamped reference.
int MaxRefError(const Plane& got, const std::vector<double>& ref) {
  int worst = 0;
  for (int y = 0; y < got.height; ++y)
    for (int x = 0; x < got.width; ++x) {
      const double r = std::min(std::max(ref[y * got.width + x], 0.0), 255.0);
      worst = std::max(worst, std::abs(got.at(x, y) - static_cast<int>(std::lround(r))));
    }
  return worst;
}

TEST(VrsclContract, RefusesBadArguments) {
  EXPECT_EQ(orv::VRSCLCreateInstance(nullptr), orv::kVrsclNullPointer);
  EXPECT_EQ(orv::VRSCLSetupConverter(nullptr, 8, 8, 8, 8, 4, 4, 4, 4), orv::kVrsclNullHandle);
  Picture src(8, 8), dst(4, 4);
  EXPECT_EQ(orv::VRSCLConvert(nullptr, dst.y.data(), dst.cb.data(), dst.cr.data(), 4, 2,
                              src.y.data(), src.cb.data(), src.cr.data(), 8, 4),
            orv::kVrsclNullHandle);

  Scaler s;
  EXPECT_EQ(s.Convert(&dst, src), orv::kVrsclNotSetUp);
  for (int bad : {0, 1, -2, 65536, 1 << 30}) {
    EXPECT_EQ(s.Setup(bad, 8, 4, 4), orv::kVrsclBadSize) << bad;
    EXPECT_EQ(s.Setup(8, bad, 4, 4), orv::kVrsclBadSize) << bad;
    EXPECT_EQ(s.Setup(8, 8, bad, 4), orv::kVrsclBadSize) << bad;
    EXPECT_EQ(s.Setup(8, 8, 4, bad), orv::kVrsclBadSize) << bad;
  }
  // The second pair of each side must repeat the first.
  EXPECT_EQ(orv::VRSCLSetupConverter(s.handle(), 8, 8, 6, 8, 4, 4, 4, 4), orv::kVrsclBadSize);
  EXPECT_EQ(orv::VRSCLSetupConverter(s.handle(), 8, 8, 8, 8, 4, 4, 4, 2), orv::kVrsclBadSize);
  EXPECT_EQ(s.Convert(&dst, src), orv::kVrsclNotSetUp);

  ASSERT_EQ(s.Setup(8, 8, 4, 4), orv::kVrsclOk);
  uint8_t* d[3] = {dst.y.data(), dst.cb.data(), dst.cr.data()};
  const uint8_t* sp[3] = {src.y.data(), src.cb.data(), src.cr.data()};
  for (int k = 0; k < 6; ++k) {
    uint8_t* dd[3] = {d[0], d[1], d[2]};
    const uint8_t* ss[3] = {sp[0], sp[1], sp[2]};
    if (k < 3)
      dd[k] = nullptr;
    else
      ss[k - 3] = nullptr;
    EXPECT_EQ(orv::VRSCLConvert(s.handle(), dd[0], dd[1], dd[2], 4, 2, ss[0], ss[1], ss[2], 8, 4),
              orv::kVrsclNullPointer)
        << k;
  }
  const int good[4] = {4, 2, 8, 4};
  for (int k = 0; k < 4; ++k) {
    for (int delta : {1, 100}) {
      int st[4] = {good[0], good[1], good[2], good[3]};
      st[k] = delta == 1 ? st[k] - 1 : -st[k];
      EXPECT_EQ(orv::VRSCLConvert(s.handle(), d[0], d[1], d[2], st[0], st[1], sp[0], sp[1], sp[2],
                                  st[2], st[3]),
                orv::kVrsclBadStep)
          << k;
    }
  }
  EXPECT_TRUE(dst.CanariesIntact());
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 4; ++x) EXPECT_EQ(dst.y.at(x, y), scaler_test::kCanary);  // nothing written

  // A refused set-up discards the previous one.
  EXPECT_EQ(s.Setup(8, 0, 4, 4), orv::kVrsclBadSize);
  EXPECT_EQ(s.Convert(&dst, src), orv::kVrsclNotSetUp);

  orv::VRSCLHandle none = nullptr;
  orv::VRSCLReleaseInstance(&none);
  orv::VRSCLReleaseInstance(nullptr);
  EXPECT_EQ(none, nullptr);
}

TEST(VrsclContract, ReleaseClearsHandleAndExplicitLevelsAreHonoured) {
  orv::VRSCLHandle h = nullptr;
  ASSERT_EQ(orv::VRSCLCreateInstance(&h, orv::SimdLevel::kPlain), orv::kVrsclOk);
  EXPECT_EQ(orv::VRSCLInstanceLevel(h), orv::SimdLevel::kPlain);
  orv::VRSCLReleaseInstance(&h);
  EXPECT_EQ(h, nullptr);
  ASSERT_EQ(orv::VRSCLCreateInstance(&h), orv::kVrsclOk);
  EXPECT_LE(orv::VRSCLInstanceLevel(h), orv::DetectSimdLevel());
  orv::VRSCLReleaseInstance(&h);
}

TEST(VrsclPicture, IdentitySizesCopyExactly) {
  std::mt19937 rng(11);
  for (auto wh : {std::make_pair(2, 2), std::make_pair(37, 23), std::make_pair(64, 48),
                  std::make_pair(720, 480)}) {
    Picture src(wh.first, wh.second, 5, 3), dst(wh.first, wh.second, 1, 7);
    src.Fill(&rng);
    Scaler s;
    ASSERT_EQ(s.Setup(wh.first, wh.second, wh.first, wh.second), orv::kVrsclOk);
    ASSERT_EQ(s.Convert(&dst, src), orv::kVrsclOk);
    EXPECT_TRUE(dst.SamePixels(src)) << wh.first << "x" << wh.second;
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

TEST(VrsclPicture, OneAxisIdentityKeepsThatAxisExact) {
  // Only the width changes: a picture whose lines are each flat keeps every line's value.
  std::mt19937 rng(5);
  Picture src(40, 30), dst(97, 30);
  for (int y = 0; y < 30; ++y) {
    const uint8_t v = static_cast<uint8_t>(rng());
    for (int x = 0; x < 40; ++x) src.y.at(x, y) = v;
  }
  for (Plane* p : {&src.cb, &src.cr})
    for (int y = 0; y < p->height; ++y)
      for (int x = 0; x < p->width; ++x) p->at(x, y) = static_cast<uint8_t>(y * 9);
  Scaler s;
  ASSERT_EQ(s.Setup(40, 30, 97, 30), orv::kVrsclOk);
  ASSERT_EQ(s.Convert(&dst, src), orv::kVrsclOk);
  for (int y = 0; y < 30; ++y)
    for (int x = 0; x < 97; ++x) ASSERT_EQ(dst.y.at(x, y), src.y.at(0, y)) << x << "," << y;
  for (int y = 0; y < 15; ++y)
    for (int x = 0; x < 48; ++x) ASSERT_EQ(dst.cb.at(x, y), y * 9);
}

const std::pair<int, int> kSizes[] = {{2, 2},    {3, 5},    {16, 16},   {33, 17}, {64, 36},
                                      {100, 75}, {161, 99}, {720, 480}, {17, 241}};

// True if the filter window of destination sample i (source centre
// (i + 0.5) r - 0.5, radius 2 max(1, r)) lies inside the source: its value
// owes nothing to the repeated edge sample. r is the luma ratio.
bool Interior(int i, int srcSize, double r) {
  const double c = (i + 0.5) * r - 0.5;
  const double radius = 2 * std::max(1.0, r);
  return c - radius >= 0 && c + radius <= srcSize - 1;
}
bool Interior(int i, int srcSize, int dstSize) {
  return Interior(i, srcSize, static_cast<double>(srcSize) / dstSize);
}

TEST(VrsclPicture, FlatPlanesStayFlat) {
  for (auto from : kSizes) {
    for (auto to : kSizes) {
      Picture src(from.first, from.second), dst(to.first, to.second, 3, 2);
      for (Plane* p : {&src.y, &src.cb, &src.cr}) {
        const uint8_t v = p == &src.y ? 235 : (p == &src.cb ? 16 : 127);
        for (int y = 0; y < p->height; ++y)
          for (int x = 0; x < p->width; ++x) p->at(x, y) = v;
      }
      Scaler s;
      ASSERT_EQ(s.Setup(from.first, from.second, to.first, to.second), orv::kVrsclOk);
      ASSERT_EQ(s.Convert(&dst, src), orv::kVrsclOk);
      for (int y = 0; y < to.second; ++y)
        for (int x = 0; x < to.first; ++x) ASSERT_EQ(dst.y.at(x, y), 235);
      for (int y = 0; y < to.second / 2; ++y)
        for (int x = 0; x < to.first / 2; ++x) {
          ASSERT_EQ(dst.cb.at(x, y), 16);
          ASSERT_EQ(dst.cr.at(x, y), 127);
        }
      EXPECT_TRUE(dst.CanariesIntact());
    }
  }
}

// Ramps: the cubic reproduces a straight line exactly, so away from the
// edges a ramp stays monotone. At a plane's edge the ramp meets the repeated
// edge sample, a kink over which the cubic overshoots by about 1 % of one
// source step; there a drop of at most one level is allowed.
TEST(VrsclPicture, RampsStayMonotone) {
  for (auto from : kSizes) {
    for (auto to : kSizes) {
      if (from.first < 8 || from.second < 8) continue;
      Picture src(from.first, from.second), dst(to.first, to.second);
      for (int y = 0; y < from.second; ++y)
        for (int x = 0; x < from.first; ++x) {
          src.y.at(x, y) = static_cast<uint8_t>(16 + x * 219 / (from.first - 1));
          if (x < from.first / 2 && y < from.second / 2) {
            src.cb.at(x, y) = static_cast<uint8_t>(240 - y * 224 / (from.second / 2 - 1));
            src.cr.at(x, y) = static_cast<uint8_t>(x * 255 / (from.first / 2 - 1));
          }
        }
      Scaler s;
      ASSERT_EQ(s.Setup(from.first, from.second, to.first, to.second), orv::kVrsclOk);
      ASSERT_EQ(s.Convert(&dst, src), orv::kVrsclOk);
      const double rx = static_cast<double>(from.first) / to.first;
      const double ry = static_cast<double>(from.second) / to.second;
      SCOPED_TRACE(testing::Message()
                   << from.first << "x" << from.second << "->" << to.first << "x" << to.second);
      auto allowed = [](bool inside) { return inside ? 0 : 1; };
      for (int y = 0; y < to.second; ++y)
        for (int x = 1; x < to.first; ++x) {
          const bool in = Interior(x - 1, from.first, rx) && Interior(x, from.first, rx);
          ASSERT_LE(dst.y.at(x - 1, y), dst.y.at(x, y) + allowed(in)) << x;
        }
      for (int y = 1; y < to.second / 2; ++y)
        for (int x = 0; x < to.first / 2; ++x) {
          const bool in = Interior(y - 1, from.second / 2, ry) && Interior(y, from.second / 2, ry);
          ASSERT_GE(dst.cb.at(x, y - 1) + allowed(in), dst.cb.at(x, y)) << y;
        }
      for (int y = 0; y < to.second / 2; ++y)
        for (int x = 1; x < to.first / 2; ++x) {
          const bool in = Interior(x - 1, from.first / 2, rx) && Interior(x, from.first / 2, rx);
          ASSERT_LE(dst.cr.at(x - 1, y), dst.cr.at(x, y) + allowed(in)) << x;
        }
    }
  }
}

TEST(VrsclPicture, MatchesTheFilterInDoubleWithinOne) {
  std::mt19937 rng(3);
  const std::pair<int, int> sizes[] = {{33, 17}, {64, 36}, {100, 75}, {161, 99}, {7, 9}};
  for (auto from : sizes) {
    for (auto to : sizes) {
      Picture src(from.first, from.second, 2, 1), dst(to.first, to.second);
      src.Fill(&rng);
      Scaler s;
      ASSERT_EQ(s.Setup(from.first, from.second, to.first, to.second), orv::kVrsclOk);
      ASSERT_EQ(s.Convert(&dst, src), orv::kVrsclOk);
      const double rx = static_cast<double>(from.first) / to.first;
      const double ry = static_cast<double>(from.second) / to.second;
      EXPECT_LE(MaxRefError(dst.y, RefScale(src.y, to.first, to.second, rx, ry)), 1)
          << from.first << "x" << from.second << "->" << to.first << "x" << to.second;
      // Chroma is scaled with the luma ratio, so that it stays registered on odd sizes.
      EXPECT_LE(MaxRefError(dst.cb, RefScale(src.cb, to.first / 2, to.second / 2, rx, ry)), 1);
      EXPECT_LE(MaxRefError(dst.cr, RefScale(src.cr, to.first / 2, to.second / 2, rx, ry)), 1);
    }
  }
}

TEST(VrsclPicture, FieldStepsReadOneFieldOfAFrame) {
  // Twice the step reads the first field: the same result as scaling a copy
  // of that field on its own.
  std::mt19937 rng(8);
  const int w = 90, h = 60;
  Picture frame(w, h), field(w, h / 2), a(64, 48), b(64, 48);
  frame.Fill(&rng);
  for (int y = 0; y < h / 2; ++y)
    for (int x = 0; x < w; ++x) field.y.at(x, y) = frame.y.at(x, 2 * y);
  for (int y = 0; y < h / 4; ++y)
    for (int x = 0; x < w / 2; ++x) {
      field.cb.at(x, y) = frame.cb.at(x, 2 * y);
      field.cr.at(x, y) = frame.cr.at(x, 2 * y);
    }
  Scaler s;
  ASSERT_EQ(s.Setup(w, h / 2, 64, 48), orv::kVrsclOk);
  ASSERT_EQ(orv::VRSCLConvert(s.handle(), a.y.data(), a.cb.data(), a.cr.data(), a.y.step, a.cb.step,
                              frame.y.data(), frame.cb.data(), frame.cr.data(), 2 * frame.y.step,
                              2 * frame.cb.step),
            orv::kVrsclOk);
  ASSERT_EQ(s.Convert(&b, field), orv::kVrsclOk);
  EXPECT_TRUE(a.SamePixels(b));
  EXPECT_TRUE(a.CanariesIntact());
}

// Reduction of fine patterns: 1920x1080 -> 720x480.
class VrsclAntiAlias : public ::testing::Test {
 protected:
  static constexpr int kSw = 1920, kSh = 1080, kDw = 720, kDh = 480;
  void Run(Picture* dst, const Picture& src) {
    Scaler s;
    ASSERT_EQ(s.Setup(kSw, kSh, kDw, kDh), orv::kVrsclOk);
    ASSERT_EQ(s.Convert(dst, src), orv::kVrsclOk);
  }
};

TEST_F(VrsclAntiAlias, OnePixelCheckerboardBecomesMidGrey) {
  Picture src(kSw, kSh), dst(kDw, kDh);
  for (Plane* p : {&src.y, &src.cb, &src.cr})
    for (int y = 0; y < p->height; ++y)
      for (int x = 0; x < p->width; ++x) p->at(x, y) = ((x ^ y) & 1) ? 255 : 0;
  Run(&dst, src);
  // Bound: away from the corners every sample is 127 or 128 (within
  // 127.5 +- 0.5); over the whole plane the energy of the residual (mean
  // squared deviation from 127.5) stays below 0.3. Only the corner samples,
  // whose windows reach past two edges where the edge sample repeats,
  // deviate more (by at most 5).
  for (const Plane* p : {&dst.y, &dst.cb, &dst.cr}) {
    double energy = 0;
    int worst = 0, worstCorner = 0;
    for (int y = 0; y < p->height; ++y)
      for (int x = 0; x < p->width; ++x) {
        const double d = p->at(x, y) - 127.5;
        energy += d * d;
        const int dev = static_cast<int>(std::ceil(std::fabs(d)));
        const bool corner = !Interior(x, p == &dst.y ? kSw : kSw / 2, double(kSw) / kDw) &&
                            !Interior(y, p == &dst.y ? kSh : kSh / 2, double(kSh) / kDh);
        (corner ? worstCorner : worst) = std::max(corner ? worstCorner : worst, dev);
      }
    energy /= p->width * p->height;
    EXPECT_LE(worst, 1);
    EXPECT_LE(worstCorner, 5);
    EXPECT_LT(energy, 0.3);
  }
}

TEST_F(VrsclAntiAlias, ZonePlateKeepsLowAndDropsHighFrequencies) {
  // Luma cos(pi (x^2 / 2W + y^2 / 2H)): the local frequency rises from 0 at
  // the top left corner to 0.5 cycles per sample (the source's limit) at the
  // right and bottom edges.
  Picture src(kSw, kSh), dst(kDw, kDh);
  for (int y = 0; y < kSh; ++y)
    for (int x = 0; x < kSw; ++x) {
      const double phase = M_PI * (double(x) * x / (2.0 * kSw) + double(y) * y / (2.0 * kSh));
      src.y.at(x, y) = static_cast<uint8_t>(std::lround(127.5 + 127.0 * std::cos(phase)));
    }
  for (Plane* p : {&src.cb, &src.cr}) std::fill(p->bytes.begin(), p->bytes.end(), 127);
  Run(&dst, src);
  // Columns whose source frequency is at least 0.9 cycles per destination
  // sample (x >= 0.675 W) and lines likewise (y >= 0.81 H) lie in the
  // stop band: away from the edges, max deviation from the mean at most 4,
  // mean squared below 2. An unfiltered reduction leaves a full-amplitude
  // moire there. (The last column and line, whose windows reach past the
  // source's edge, see the repeated edge sample instead of the pattern.)
  double energy = 0;
  int count = 0, worst = 0;
  double lowEnergy = 0;
  int lowCount = 0;
  for (int y = 0; y < kDh; ++y)
    for (int x = 0; x < kDw; ++x) {
      const double sx = (x + 0.5) * kSw / kDw, sy = (y + 0.5) * kSh / kDh;
      const double d = dst.y.at(x, y) - 127.5;
      if (!Interior(x, kSw, kDw) || !Interior(y, kSh, kDh)) continue;
      if (sx >= 0.7 * kSw || sy >= 0.82 * kSh) {
        energy += d * d;
        ++count;
        worst = std::max(worst, static_cast<int>(std::ceil(std::fabs(d))));
      } else if (sx < 0.2 * kSw && sy < 0.2 * kSh) {
        lowEnergy += d * d;
        ++lowCount;
      }
    }
  EXPECT_LE(worst, 4);
  EXPECT_LT(energy / count, 2.0);
  // The pass band keeps its contrast: a cosine of amplitude 127 has a mean
  // square of about 8064; at least 80 % of it stays.
  EXPECT_GT(lowEnergy / lowCount, 0.8 * 127.0 * 127.0 / 2);
}

}  // namespace
