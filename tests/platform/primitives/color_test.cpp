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

double Clamp(double v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

void StudioRgb(double y, double cb, double cr, double rgb[3]) {
  rgb[0] = Clamp(1.164 * (y - 16) + 1.596 * (cr - 128));
  rgb[1] = Clamp(1.164 * (y - 16) - 0.392 * (cb - 128) - 0.813 * (cr - 128));
  rgb[2] = Clamp(1.164 * (y - 16) + 2.017 * (cb - 128));
}
void JpegRgb(double y, double cb, double cr, double rgb[3]) {
  rgb[0] = Clamp(y + 1.402 * (cr - 128));
  rgb[1] = Clamp(y - 0.34414 * (cb - 128) - 0.71414 * (cr - 128));
  rgb[2] = Clamp(y + 1.772 * (cb - 128));
}

TEST(IppColor, Studio420ToBgrKnownValuesAndOneLevelAccuracy) {
  std::mt19937 rng(11);
  const int w = 64, h = 8;
  Picture y(w, h), u(w / 2, h / 2), v(w / 2, h / 2), d(3 * w, h);
  y.Random(rng);
  u.Random(rng);
  v.Random(rng);
  // Known corners: black, white, neutral, saturated extremes.
  y.at(0, 0) = 16;
  y.at(1, 0) = 235;
  u.at(0, 0) = 128;
  v.at(0, 0) = 128;
  const Ipp8u* src[3] = {y.p(), u.p(), v.p()};
  int steps[3] = {y.step(), u.step(), v.step()};
  ASSERT_EQ(ippiYCbCr420ToBGR_8u_P3C3R(src, steps, d.p(), d.step(), {w, h}), ippStsNoErr);
  EXPECT_EQ(d.row(0)[0], 0);
  EXPECT_EQ(d.row(0)[2], 0);
  EXPECT_EQ(d.row(0)[3], 255);
  EXPECT_EQ(d.row(0)[5], 255);
  int worst = 0;
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      double e[3];
      StudioRgb(y.at(i, j), u.at(i / 2, j / 2), v.at(i / 2, j / 2), e);
      for (int c = 0; c < 3; ++c)  // B G R in memory
        worst = std::max(
            worst, static_cast<int>(std::ceil(std::fabs(d.row(j)[3 * i + c] - e[2 - c]) - 1e-9)));
    }
  EXPECT_LE(worst, 1);
  EXPECT_TRUE(d.CanariesIntact());
}

TEST(IppColor, Packed422ToRgbBothLayoutsAgree) {
  std::mt19937 rng(12);
  const int w = 10, h = 3;
  Picture s(2 * w, h), c3(3 * w, h), pr(w, h), pg(w, h), pb(w, h);
  s.Random(rng);
  ASSERT_EQ(ippiYCbCr422ToRGB_8u_C2C3R(s.p(), s.step(), c3.p(), c3.step(), {w, h}), ippStsNoErr);
  Ipp8u* planes[3] = {pr.p(), pg.p(), pb.p()};
  ASSERT_EQ(ippiYCbCr422ToRGB_8u_C2P3R(s.p(), s.step(), planes, pr.step(), {w, h}), ippStsNoErr);
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      const uint8_t* pair = s.row(j) + 4 * (i / 2);
      double e[3];
      StudioRgb(pair[(i & 1) * 2], pair[1], pair[3], e);
      for (int c = 0; c < 3; ++c) EXPECT_LE(std::fabs(c3.row(j)[3 * i + c] - e[c]), 1.0);
      EXPECT_EQ(pr.row(j)[i], c3.row(j)[3 * i]);
      EXPECT_EQ(pg.row(j)[i], c3.row(j)[3 * i + 1]);
      EXPECT_EQ(pb.row(j)[i], c3.row(j)[3 * i + 2]);
    }
  EXPECT_TRUE(c3.CanariesIntact());
  EXPECT_TRUE(pb.CanariesIntact());
}

TEST(IppColor, StudioForwardGreyIsNeutralAndRoundTripsClosely) {
  // Every grey level: chroma exactly 128 and luma within one level of the formula.
  const int w = 256;
  Picture r(w, 1), g(w, 1), b(w, 1), yuy2(2 * w, 1);
  for (int i = 0; i < w; ++i) r.at(i, 0) = g.at(i, 0) = b.at(i, 0) = static_cast<uint8_t>(i);
  const Ipp8u* planes[3] = {r.p(), g.p(), b.p()};
  ASSERT_EQ(ippiRGBToYCbCr422_8u_P3C2R(planes, r.step(), yuy2.p(), yuy2.step(), {w, 1}),
            ippStsNoErr);
  for (int i = 0; i < w; ++i) {
    EXPECT_LE(std::fabs(yuy2.row(0)[2 * i] - (0.859 * i + 16)), 1.0) << i;
    if (i % 2 == 0) {
      EXPECT_EQ(yuy2.row(0)[2 * i + 1], 128);
      EXPECT_EQ(yuy2.row(0)[2 * i + 3], 128);
    }
  }
  EXPECT_EQ(yuy2.row(0)[0], 16);
  EXPECT_EQ(yuy2.row(0)[2 * 255], 235);
  // 4:2:0 from flat 2 x 2 blocks of random colour, and back: within a few levels.
  std::mt19937 rng(13);
  const int W = 16, H = 4;
  Picture rgb(3 * W, H), py(W, H), pu(W / 2, H / 2), pv(W / 2, H / 2), back(3 * W, H);
  for (int j = 0; j < H; j += 2)
    for (int i = 0; i < W; i += 2)
      for (int c = 0; c < 3; ++c) {
        const uint8_t v = static_cast<uint8_t>(rng());
        rgb.row(j)[3 * i + c] = rgb.row(j)[3 * i + 3 + c] = v;
        rgb.row(j + 1)[3 * i + c] = rgb.row(j + 1)[3 * i + 3 + c] = v;
      }
  Ipp8u* dst[3] = {py.p(), pu.p(), pv.p()};
  int dsteps[3] = {py.step(), pu.step(), pv.step()};
  ASSERT_EQ(ippiRGBToYCbCr420_8u_C3P3R(rgb.p(), rgb.step(), dst, dsteps, {W, H}), ippStsNoErr);
  const Ipp8u* src[3] = {py.p(), pu.p(), pv.p()};
  ASSERT_EQ(ippiYCbCr420ToBGR_8u_P3C3R(src, dsteps, back.p(), back.step(), {W, H}), ippStsNoErr);
  for (int j = 0; j < H; ++j)
    for (int i = 0; i < W; ++i)
      for (int c = 0; c < 3; ++c)  // input R G B, output B G R
        EXPECT_LE(std::abs(rgb.row(j)[3 * i + c] - back.row(j)[3 * i + 2 - c]), 3) << i << "," << j;
  EXPECT_TRUE(pu.CanariesIntact());
  EXPECT_TRUE(pv.CanariesIntact());
}

TEST(IppColor, JpegMatrixLeavesLumaUnscaled) {
  const int w = 256;
  Picture y(w, 1), cb(w, 1), cr(w, 1), bgr(3 * w, 1);
  for (int i = 0; i < w; ++i) {
    y.at(i, 0) = static_cast<uint8_t>(i);
    cb.at(i, 0) = cr.at(i, 0) = 128;
  }
  const Ipp8u* src[3] = {y.p(), cb.p(), cr.p()};
  ASSERT_EQ(ippiYCbCrToBGR_JPEG_8u_P3C3R(src, y.step(), bgr.p(), bgr.step(), {w, 1}), ippStsNoErr);
  for (int i = 0; i < w; ++i)
    for (int c = 0; c < 3; ++c) ASSERT_EQ(bgr.row(0)[3 * i + c], i);
  // And back: grey stays exactly grey with neutral chroma.
  Picture oy(w, 1), ocb(w, 1), ocr(w, 1);
  Ipp8u* dst[3] = {oy.p(), ocb.p(), ocr.p()};
  ASSERT_EQ(ippiBGRToYCbCr_JPEG_8u_C3P3R(bgr.p(), bgr.step(), dst, oy.step(), {w, 1}), ippStsNoErr);
  EXPECT_EQ(oy.Bytes(), y.Bytes());
  EXPECT_EQ(ocb.Bytes(), std::vector<uint8_t>(w, 128));
  EXPECT_EQ(ocr.Bytes(), std::vector<uint8_t>(w, 128));
}

TEST(IppColor, JpegBothDirectionsWithinOneLevel) {
  std::mt19937 rng(14);
  const int w = 97, h = 5;
  Picture y(w, h), cb(w, h), cr(w, h), bgr(3 * w, h), r(w, h), g(w, h), b(w, h);
  y.Random(rng);
  cb.Random(rng);
  cr.Random(rng);
  const Ipp8u* src[3] = {y.p(), cb.p(), cr.p()};
  ASSERT_EQ(ippiYCbCrToBGR_JPEG_8u_P3C3R(src, y.step(), bgr.p(), bgr.step(), {w, h}), ippStsNoErr);
  Ipp8u* planes[3] = {r.p(), g.p(), b.p()};
  ASSERT_EQ(ippiYCbCrToRGB_JPEG_8u_P3R(src, y.step(), planes, r.step(), {w, h}), ippStsNoErr);
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      double e[3];
      JpegRgb(y.at(i, j), cb.at(i, j), cr.at(i, j), e);
      EXPECT_LE(std::fabs(bgr.row(j)[3 * i + 2] - e[0]), 1.0);
      EXPECT_LE(std::fabs(bgr.row(j)[3 * i] - e[2]), 1.0);
      EXPECT_EQ(r.at(i, j), bgr.row(j)[3 * i + 2]);
      EXPECT_EQ(g.at(i, j), bgr.row(j)[3 * i + 1]);
      EXPECT_EQ(b.at(i, j), bgr.row(j)[3 * i]);
    }
  // Forward matrix against the formula on random B G R.
  bgr.Random(rng);
  Ipp8u* dst[3] = {y.p(), cb.p(), cr.p()};
  ASSERT_EQ(ippiBGRToYCbCr_JPEG_8u_C3P3R(bgr.p(), bgr.step(), dst, y.step(), {w, h}), ippStsNoErr);
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      const double B = bgr.row(j)[3 * i], G = bgr.row(j)[3 * i + 1], R = bgr.row(j)[3 * i + 2];
      EXPECT_LE(std::fabs(y.at(i, j) - Clamp(0.299 * R + 0.587 * G + 0.114 * B)), 1.0);
      EXPECT_LE(std::fabs(cb.at(i, j) - Clamp(-0.16874 * R - 0.33126 * G + 0.5 * B + 128)), 1.0);
      EXPECT_LE(std::fabs(cr.at(i, j) - Clamp(0.5 * R - 0.41869 * G - 0.08131 * B + 128)), 1.0);
    }
  EXPECT_TRUE(y.CanariesIntact());
  EXPECT_TRUE(b.CanariesIntact());
}

TEST(IppColor, OddSizesTakeTheChromaOfTheLastPair) {
  // 3 x 3 picture: chroma plane is 1 x 1; the last column and line reuse it.
  Picture y(3, 3), u(1, 1), v(1, 1), d(9, 3);
  y.Fill(100);
  u.Fill(60);
  v.Fill(200);
  const Ipp8u* src[3] = {y.p(), u.p(), v.p()};
  int steps[3] = {y.step(), u.step(), v.step()};
  ASSERT_EQ(ippiYCbCr420ToBGR_8u_P3C3R(src, steps, d.p(), d.step(), {3, 3}), ippStsNoErr);
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 3; ++i)
      for (int c = 0; c < 3; ++c) EXPECT_EQ(d.row(j)[3 * i + c], d.row(0)[c]);
  // One pixel wide: no chroma at all, converted as neutral grey.
  Picture y1(1, 1), d1(3, 1);
  y1.Fill(235);
  const Ipp8u* s1[3] = {y1.p(), u.p(), v.p()};
  ASSERT_EQ(ippiYCbCr420ToBGR_8u_P3C3R(s1, steps, d1.p(), d1.step(), {1, 1}), ippStsNoErr);
  EXPECT_EQ(d1.Bytes(), (std::vector<uint8_t>{255, 255, 255}));
  // Odd-width join: the lone pixel's chroma byte is the Cb of the pair before it.
  Picture jy(3, 1), jcb(1, 1), jcr(1, 1), out(6, 1);
  jy.row(0)[0] = 1, jy.row(0)[1] = 2, jy.row(0)[2] = 3;
  jcb.Fill(40);
  jcr.Fill(50);
  const Ipp8u* jp[3] = {jy.p(), jcb.p(), jcr.p()};
  int js[3] = {jy.step(), jcb.step(), jcr.step()};
  ASSERT_EQ(ippiYCbCr422_8u_P3C2R(jp, js, out.p(), out.step(), {3, 1}), ippStsNoErr);
  EXPECT_EQ(out.Bytes(), (std::vector<uint8_t>{1, 40, 2, 50, 3, 40}));
  EXPECT_TRUE(out.CanariesIntact());
  EXPECT_TRUE(d.CanariesIntact());
}

TEST(IppColor, SplitAndJoinRoundTrip) {
  std::mt19937 rng(15);
  const int w = 18, h = 4;
  Picture s(2 * w, h), y(w, h), cb(w / 2, h), cr(w / 2, h), back(2 * w, h);
  s.Random(rng);
  Ipp8u* planes[3] = {y.p(), cb.p(), cr.p()};
  int steps[3] = {y.step(), cb.step(), cr.step()};
  ASSERT_EQ(ippiYCbCr422_8u_C2P3R(s.p(), s.step(), planes, steps, {w, h}), ippStsNoErr);
  EXPECT_EQ(y.at(5, 2), s.row(2)[10]);
  EXPECT_EQ(cb.at(4, 3), s.row(3)[17]);
  EXPECT_EQ(cr.at(4, 3), s.row(3)[19]);
  const Ipp8u* src[3] = {y.p(), cb.p(), cr.p()};
  ASSERT_EQ(ippiYCbCr422_8u_P3C2R(src, steps, back.p(), back.step(), {w, h}), ippStsNoErr);
  EXPECT_EQ(back.Bytes(), s.Bytes());
  EXPECT_TRUE(cb.CanariesIntact());
  EXPECT_TRUE(back.CanariesIntact());
}

TEST(IppColor, SampleDownAveragesAndRepeatsTheEdge) {
  Picture s(5, 3), d2(3, 2), d1(3, 3);
  const uint8_t vals[15] = {10, 20, 30, 41, 50, 11, 21, 31, 40, 51, 100, 100, 0, 1, 7};
  for (int i = 0; i < 15; ++i) s.at(i % 5, i / 5) = vals[i];
  ASSERT_EQ(ippiSampleDownH2V2_JPEG_8u_C1R(s.p(), s.step(), {5, 3}, d2.p(), d2.step(), {3, 2}),
            ippStsNoErr);
  EXPECT_EQ(d2.at(0, 0), (10 + 20 + 11 + 21 + 2) / 4);
  EXPECT_EQ(d2.at(1, 0), (30 + 41 + 31 + 40 + 2) / 4);
  EXPECT_EQ(d2.at(2, 0), 51);   // column 4 repeated: (50 + 50 + 51 + 51 + 2) / 4
  EXPECT_EQ(d2.at(0, 1), 100);  // line 2 repeated
  EXPECT_EQ(d2.at(2, 1), 7);
  ASSERT_EQ(ippiSampleDownH2V1_JPEG_8u_C1R(s.p(), s.step(), {5, 3}, d1.p(), d1.step(), {3, 3}),
            ippStsNoErr);
  EXPECT_EQ(d1.at(0, 0), 15);
  EXPECT_EQ(d1.at(1, 0), 36);  // (30 + 41 + 1) / 2
  EXPECT_EQ(d1.at(2, 0), 50);
  EXPECT_EQ(d1.at(1, 2), 1);  // (0 + 1 + 1) / 2
  EXPECT_TRUE(d1.CanariesIntact());
  EXPECT_TRUE(d2.CanariesIntact());
  EXPECT_EQ(ippiSampleDownH2V2_JPEG_8u_C1R(s.p(), s.step(), {5, 3}, d2.p(), d2.step(), {4, 2}),
            ippStsSizeErr);
}

}  // namespace
