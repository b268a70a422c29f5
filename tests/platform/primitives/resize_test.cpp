#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "picture_helpers.h"
#include "platform/primitives/ipp.h"

namespace {

using namespace orv::ipp;
using orv_test::Picture;

IppStatus ResizeC(int C, const Picture& s, IppiSize ss, IppiRect roi, Picture& d, IppiSize ds,
                  double xf, double yf, int interp) {
  switch (C) {
    case 1:
      return ippiResize_8u_C1R(s.p(), ss, s.step(), roi, d.p(), d.step(), ds, xf, yf, interp);
    case 3:
      return ippiResize_8u_C3R(s.p(), ss, s.step(), roi, d.p(), d.step(), ds, xf, yf, interp);
    default:
      return ippiResize_8u_C4R(s.p(), ss, s.step(), roi, d.p(), d.step(), ds, xf, yf, interp);
  }
}

TEST(IppResize, FactorOneCopiesExactlyWithEveryInterpolation) {
  std::mt19937 rng(21);
  for (int C : {1, 3, 4})
    for (int interp : {IPPI_INTER_NN, IPPI_INTER_LINEAR, IPPI_INTER_CUBIC, IPPI_INTER_SUPER}) {
      const int w = 13, h = 7;
      Picture s(C * w, h), d(C * w, h);
      s.Random(rng);
      ASSERT_EQ(ResizeC(C, s, {w, h}, {0, 0, w, h}, d, {w, h}, 1.0, 1.0, interp), ippStsNoErr);
      EXPECT_EQ(d.Bytes(), s.Bytes()) << "C" << C << " interpolation " << interp;
      EXPECT_TRUE(d.CanariesIntact());
    }
}

TEST(IppResize, NearestDoublingFillsTwoByTwoBlocks) {
  std::mt19937 rng(22);
  for (int C : {1, 3, 4}) {
    const int w = 5, h = 3;
    Picture s(C * w, h), d(C * 2 * w, 2 * h);
    s.Random(rng);
    ASSERT_EQ(ResizeC(C, s, {w, h}, {0, 0, w, h}, d, {2 * w, 2 * h}, 2.0, 2.0, IPPI_INTER_NN),
              ippStsNoErr);
    for (int y = 0; y < 2 * h; ++y)
      for (int x = 0; x < 2 * w; ++x)
        for (int c = 0; c < C; ++c)
          ASSERT_EQ(d.row(y)[C * x + c], s.row(y / 2)[C * (x / 2) + c]) << x << "," << y;
    EXPECT_TRUE(d.CanariesIntact());
  }
  // The chroma expansion of the picture engine: a W/2 x H/2 plane about its
  // centre onto a W x H plane.
  Picture s(4, 3), d(8, 6);
  s.Random(rng);
  ASSERT_EQ(ippiResizeCenter_8u_C1R(s.p(), {4, 3}, s.step(), {0, 0, 4, 3}, d.p(), d.step(), {8, 6},
                                    2.0, 2.0, 2.0, 1.5, IPPI_INTER_NN),
            ippStsNoErr);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 8; ++x) ASSERT_EQ(d.at(x, y), s.at(x / 2, y / 2));
}

TEST(IppResize, CentreLandsSmallPicturesInTheMiddleAndLeavesTheRest) {
  Picture s(4, 2), d(8, 4);
  for (int x = 0; x < 4; ++x) s.at(x, 0) = s.at(x, 1) = static_cast<uint8_t>(10 + x);
  d.Fill(0);
  ASSERT_EQ(ippiResizeCenter_8u_C1R(s.p(), {4, 2}, s.step(), {0, 0, 4, 2}, d.p(), d.step(), {8, 4},
                                    1.0, 1.0, 2.0, 1.0, IPPI_INTER_CUBIC),
            ippStsNoErr);
  const std::vector<uint8_t> expect = {0, 0, 0,  0,  0,  0,  0, 0,  //
                                       0, 0, 10, 11, 12, 13, 0, 0,  //
                                       0, 0, 10, 11, 12, 13, 0, 0,  //
                                       0, 0, 0,  0,  0,  0,  0, 0};
  EXPECT_EQ(d.Bytes(), expect);
  // A crop about the centre takes both sides alike.
  Picture wide(8, 1), narrow(4, 1);
  for (int x = 0; x < 8; ++x) wide.at(x, 0) = static_cast<uint8_t>(x);
  ASSERT_EQ(ippiResizeCenter_8u_C1R(wide.p(), {8, 1}, wide.step(), {0, 0, 8, 1}, narrow.p(),
                                    narrow.step(), {4, 1}, 1.0, 1.0, 4.0, 0.5, IPPI_INTER_SUPER),
            ippStsNoErr);
  EXPECT_EQ(narrow.Bytes(), (std::vector<uint8_t>{2, 3, 4, 5}));
  // ippiResize anchors the corners instead: pixels past the scaled source stay.
  Picture big(8, 1);
  big.Fill(99);
  ASSERT_EQ(ippiResize_8u_C1R(s.p(), {4, 2}, s.step(), {1, 0, 3, 1}, big.p(), big.step(), {8, 1},
                              2.0, 1.0, IPPI_INTER_NN),
            ippStsNoErr);
  EXPECT_EQ(big.Bytes(), (std::vector<uint8_t>{11, 11, 12, 12, 13, 13, 99, 99}));
  EXPECT_TRUE(big.CanariesIntact());
  EXPECT_TRUE(d.CanariesIntact());
}

TEST(IppResize, SuperSamplingAveragesAreas) {
  Picture s(4, 2), d(2, 1);
  const uint8_t v[8] = {0, 1, 10, 30, 2, 2, 20, 40};
  for (int i = 0; i < 8; ++i) s.at(i % 4, i / 4) = v[i];
  ASSERT_EQ(ippiResize_8u_C1R(s.p(), {4, 2}, s.step(), {0, 0, 4, 2}, d.p(), d.step(), {2, 1}, 0.5,
                              0.5, IPPI_INTER_SUPER),
            ippStsNoErr);
  EXPECT_EQ(d.at(0, 0), 1);   // 5 / 4 = 1.25
  EXPECT_EQ(d.at(1, 0), 25);  // 100 / 4
  // Three to one: a third each.
  Picture t(6, 1), e(2, 1);
  const uint8_t u[6] = {0, 3, 9, 255, 255, 254};
  for (int i = 0; i < 6; ++i) t.at(i, 0) = u[i];
  ASSERT_EQ(ippiResize_8u_C1R(t.p(), {6, 1}, t.step(), {0, 0, 6, 1}, e.p(), e.step(), {2, 1},
                              1.0 / 3.0, 1.0, IPPI_INTER_SUPER),
            ippStsNoErr);
  EXPECT_EQ(e.at(0, 0), 4);
  EXPECT_EQ(e.at(1, 0), 255);  // 254.67
  // The picture engine's factors (w + 0.01) / W still write every pixel.
  Picture big(720, 3), small(704, 3);
  big.Fill(77);
  small.Fill(0);
  ASSERT_EQ(ippiResize_8u_C1R(big.p(), {720, 3}, big.step(), {0, 0, 720, 3}, small.p(),
                              small.step(), {704, 3}, 704.01 / 720, 3.01 / 3, IPPI_INTER_SUPER),
            ippStsNoErr);
  EXPECT_EQ(small.Bytes(), std::vector<uint8_t>(704 * 3, 77));
}

// Separable reference in double with edge clamping.
double Ref(const Picture& s, int w, int h, double xf, double yf, int x, int y, bool cubic) {
  auto weights = [&](double u, int n, int* idx, double* wt) {
    const double p = u - 0.5, f = std::floor(p), t = p - f;
    if (!cubic) {
      idx[0] = static_cast<int>(f);
      idx[1] = idx[0] + 1;
      wt[0] = 1 - t;
      wt[1] = t;
      for (int i = 0; i < 2; ++i) idx[i] = std::min(std::max(idx[i], 0), n - 1);
      return 2;
    }
    const double t2 = t * t, t3 = t2 * t;
    wt[0] = 0.5 * (-t3 + 2 * t2 - t);
    wt[1] = 0.5 * (3 * t3 - 5 * t2 + 2);
    wt[2] = 0.5 * (-3 * t3 + 4 * t2 + t);
    wt[3] = 0.5 * (t3 - t2);
    for (int i = 0; i < 4; ++i) idx[i] = std::min(std::max(static_cast<int>(f) + i - 1, 0), n - 1);
    return 4;
  };
  int ix[4], iy[4];
  double wx[4], wy[4];
  const int nx = weights((x + 0.5) / xf, w, ix, wx);
  const int ny = weights((y + 0.5) / yf, h, iy, wy);
  double v = 0;
  for (int b = 0; b < ny; ++b)
    for (int a = 0; a < nx; ++a) v += wy[b] * wx[a] * s.row(iy[b])[ix[a]];
  return std::min(255.0, std::max(0.0, v));
}

TEST(IppResize, LinearAndCubicFollowTheirFormulas) {
  std::mt19937 rng(23);
  const int w = 23, h = 11;
  Picture s(w, h);
  s.Random(rng);
  for (int interp : {IPPI_INTER_LINEAR, IPPI_INTER_CUBIC})
    for (double f : {0.61, 1.5, 2.0, 3.7}) {
      const int dw = static_cast<int>(w * f), dh = static_cast<int>(h * f);
      Picture d(dw, dh);
      ASSERT_EQ(ippiResize_8u_C1R(s.p(), {w, h}, s.step(), {0, 0, w, h}, d.p(), d.step(), {dw, dh},
                                  f, f, interp),
                ippStsNoErr);
      for (int y = 0; y < dh; ++y)
        for (int x = 0; x < dw; ++x)
          ASSERT_LE(std::fabs(d.at(x, y) - Ref(s, w, h, f, f, x, y, interp == IPPI_INTER_CUBIC)),
                    1.0)
              << "interp " << interp << " factor " << f << " at " << x << "," << y;
      EXPECT_TRUE(d.CanariesIntact());
    }
  // A linear ramp between two samples, known values.
  Picture two(2, 1), eight(8, 1);
  two.at(0, 0) = 0;
  two.at(1, 0) = 100;
  ASSERT_EQ(ippiResize_8u_C1R(two.p(), {2, 1}, two.step(), {0, 0, 2, 1}, eight.p(), eight.step(),
                              {8, 1}, 4.0, 1.0, IPPI_INTER_LINEAR),
            ippStsNoErr);
  EXPECT_EQ(eight.Bytes(), (std::vector<uint8_t>{0, 0, 13, 38, 63, 88, 100, 100}));
}

TEST(IppResize, CubicOvershootSaturates) {
  Picture s(6, 1), d(24, 1);
  const uint8_t v[6] = {0, 0, 0, 255, 255, 255};
  for (int i = 0; i < 6; ++i) s.at(i, 0) = v[i];
  ASSERT_EQ(ippiResize_8u_C1R(s.p(), {6, 1}, s.step(), {0, 0, 6, 1}, d.p(), d.step(), {24, 1}, 4.0,
                              1.0, IPPI_INTER_CUBIC),
            ippStsNoErr);
  EXPECT_EQ(d.at(0, 0), 0);
  EXPECT_EQ(d.at(23, 0), 255);
  // Clipping turns the ringing of the edge into a monotonic ramp.
  for (int x = 1; x < 24; ++x) EXPECT_GE(d.at(x, 0), d.at(x - 1, 0)) << x;
  EXPECT_EQ(d.at(9, 0), 0);     // the undershoot is clipped to 0
  EXPECT_EQ(d.at(14, 0), 255);  // the overshoot to 255
}

TEST(IppResize, BadArgumentsWriteNothing) {
  Picture s(4, 4), d(4, 4);
  d.Fill(5);
  const IppiRect roi = {0, 0, 4, 4};
  EXPECT_EQ(ippiResize_8u_C1R(nullptr, {4, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 1, 1, 1),
            ippStsNullPtrErr);
  EXPECT_EQ(ippiResize_8u_C1R(s.p(), {0, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 1, 1, 1),
            ippStsSizeErr);
  EXPECT_EQ(
      ippiResize_8u_C1R(s.p(), {4, 4}, s.step(), {0, 0, 0, 4}, d.p(), d.step(), {4, 4}, 1, 1, 1),
      ippStsSizeErr);
  EXPECT_EQ(ippiResize_8u_C3R(s.p(), {4, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 1, 1, 1),
            ippStsStepErr);
  EXPECT_EQ(ippiResize_8u_C1R(s.p(), {4, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 0, 1, 1),
            ippStsResizeFactorErr);
  EXPECT_EQ(
      ippiResize_8u_C1R(s.p(), {4, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 1, std::nan(""), 1),
      ippStsResizeFactorErr);
  EXPECT_EQ(ippiResize_8u_C1R(s.p(), {4, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 1, 1, 3),
            ippStsInterpolationErr);
  EXPECT_EQ(ippiResizeCenter_8u_C1R(s.p(), {4, 4}, s.step(), roi, d.p(), d.step(), {4, 4}, 1, 1,
                                    INFINITY, 0, 1),
            ippStsResizeFactorErr);
  EXPECT_EQ(
      ippiResize_8u_C1R(s.p(), {4, 4}, s.step(), {9, 9, 2, 2}, d.p(), d.step(), {4, 4}, 1, 1, 1),
      ippStsWrongIntersectROI);
  EXPECT_EQ(d.Bytes(), std::vector<uint8_t>(16, 5));
  EXPECT_TRUE(d.CanariesIntact());
}

TEST(IppRotate, QuarterAndHalfTurnsMoveWholePixels) {
  std::mt19937 rng(24);
  for (int C : {3, 4}) {
    const int w = 5, h = 3;
    Picture s(C * w, h), d(C * h, w), e(C * w, h);
    s.Random(rng);
    auto rotate = C == 3 ? ippiRotate_8u_C3R : ippiRotate_8u_C4R;
    ASSERT_EQ(rotate(s.p(), {w, h}, s.step(), {0, 0, w, h}, d.p(), d.step(), {0, 0, h, w}, 90.0,
                     0.0, w - 1, IPPI_INTER_CUBIC),
              ippStsNoErr);
    for (int y = 0; y < w; ++y)
      for (int x = 0; x < h; ++x)
        for (int c = 0; c < C; ++c) ASSERT_EQ(d.row(y)[C * x + c], s.row(x)[C * (w - 1 - y) + c]);
    ASSERT_EQ(rotate(s.p(), {w, h}, s.step(), {0, 0, w, h}, e.p(), e.step(), {0, 0, w, h}, 180.0,
                     w - 1, h - 1, IPPI_INTER_LINEAR),
              ippStsNoErr);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        for (int c = 0; c < C; ++c)
          ASSERT_EQ(e.row(y)[C * x + c], s.row(h - 1 - y)[C * (w - 1 - x) + c]);
    EXPECT_TRUE(d.CanariesIntact());
    EXPECT_TRUE(e.CanariesIntact());
    EXPECT_EQ(rotate(s.p(), {w, h}, s.step(), {0, 0, w, h}, e.p(), e.step(), {0, 0, w, h}, 10.0, 0,
                     0, IPPI_INTER_SUPER),
              ippStsInterpolationErr);
    EXPECT_EQ(rotate(s.p(), {w, h}, s.step(), {0, 0, w, h}, e.p(), e.step(), {0, 0, w, h}, 0.0,
                     100.0, 0, IPPI_INTER_NN),
              ippStsWrongIntersectROI);
  }
}

}  // namespace
