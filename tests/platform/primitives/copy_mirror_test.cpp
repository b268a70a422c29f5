#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "picture_helpers.h"
#include "platform/primitives/ipp.h"

namespace {

using namespace orv::ipp;
using orv_test::Picture;

TEST(IppMemory, StepsArePaddedAndAligned) {
  int step = 0;
  Ipp8u* p = ippiMalloc_8u_C1(5, 3, &step);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(step, 64);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
  p[step * 3 - 1] = 1;  // the whole block is usable
  ippiFree(p);
  Ipp8u* q = ippiMalloc_8u_C3(100, 2, &step);
  EXPECT_EQ(step, 320);
  ippiFree(q);
  Ipp8u* a = ippiMalloc_8u_AC4(17, 2, &step);
  EXPECT_EQ(step, 128);
  ippiFree(a);
  Ipp32f* f = ippiMalloc_32f_C3(11, 2, &step);
  EXPECT_EQ(step, 192);
  ippiFree(f);
  Ipp32f* g = ippiMalloc_32f_C1(16, 2, &step);
  EXPECT_EQ(step, 64);
  ippiFree(g);
  ippiFree(nullptr);
}

TEST(IppMemory, BadRequestsAnswerNull) {
  int step = 12345;
  EXPECT_EQ(ippiMalloc_8u_C1(0, 3, &step), nullptr);
  EXPECT_EQ(ippiMalloc_8u_C1(3, -1, &step), nullptr);
  EXPECT_EQ(ippiMalloc_8u_C1(65536, 1, &step), nullptr);
  EXPECT_EQ(ippiMalloc_8u_C3(3, 3, nullptr), nullptr);
  EXPECT_EQ(ippiMalloc_32f_C3(65535, 65535, &step), nullptr);  // beyond 31 bits
  EXPECT_EQ(step, 12345);
}

TEST(IppCopy, ChannelMovesKeepTheirBytes) {
  std::mt19937 rng(1);
  const int w = 7, h = 3;
  Picture c3(3 * w, h), c4(4 * w, h);
  c3.Random(rng);
  c4.Fill(9);
  ASSERT_EQ(ippiCopy_8u_C3AC4R(c3.p(), c3.step(), c4.p(), c4.step(), {w, h}), ippStsNoErr);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      for (int c = 0; c < 3; ++c) EXPECT_EQ(c4.row(y)[4 * x + c], c3.row(y)[3 * x + c]);
      EXPECT_EQ(c4.row(y)[4 * x + 3], 9);  // fourth byte untouched
    }
  Picture back(3 * w, h);
  ASSERT_EQ(ippiCopy_8u_AC4C3R(c4.p(), c4.step(), back.p(), back.step(), {w, h}), ippStsNoErr);
  EXPECT_EQ(back.Bytes(), c3.Bytes());
  EXPECT_TRUE(c4.CanariesIntact());
  EXPECT_TRUE(back.CanariesIntact());

  // Split into planes and join again; C4C1 picks the channel its pointer names.
  c4.Random(rng);
  Picture pl[4] = {Picture(w, h), Picture(w, h), Picture(w, h), Picture(w, h)};
  Ipp8u* planes[4] = {pl[0].p(), pl[1].p(), pl[2].p(), pl[3].p()};
  ASSERT_EQ(ippiCopy_8u_C4P4R(c4.p(), c4.step(), planes, pl[0].step(), {w, h}), ippStsNoErr);
  for (int c = 0; c < 4; ++c) EXPECT_EQ(pl[c].row(2)[5], c4.row(2)[4 * 5 + c]);
  Picture joined(4 * w, h);
  ASSERT_EQ(ippiCopy_8u_P4C4R(planes, pl[0].step(), joined.p(), joined.step(), {w, h}),
            ippStsNoErr);
  EXPECT_EQ(joined.Bytes(), c4.Bytes());
  Picture alpha(w, h);
  ASSERT_EQ(ippiCopy_8u_C4C1R(c4.p() + 3, c4.step(), alpha.p(), alpha.step(), {w, h}), ippStsNoErr);
  EXPECT_EQ(alpha.Bytes(), pl[3].Bytes());
  Ipp8u* p3[3] = {pl[0].p(), pl[1].p(), pl[2].p()};
  ASSERT_EQ(ippiCopy_8u_C3P3R(c3.p(), c3.step(), p3, pl[0].step(), {w, h}), ippStsNoErr);
  EXPECT_EQ(pl[2].row(1)[6], c3.row(1)[3 * 6 + 2]);
  for (auto& p : pl) EXPECT_TRUE(p.CanariesIntact());
  EXPECT_TRUE(alpha.CanariesIntact());
  EXPECT_TRUE(joined.CanariesIntact());
}

TEST(IppCopy, PlainCopiesAndSets) {
  std::mt19937 rng(2);
  for (int C : {1, 3, 4}) {
    Picture s(C * 5, 4), d(C * 5, 4);
    s.Random(rng);
    IppStatus st = C == 1   ? ippiCopy_8u_C1R(s.p(), s.step(), d.p(), d.step(), {5, 4})
                   : C == 3 ? ippiCopy_8u_C3R(s.p(), s.step(), d.p(), d.step(), {5, 4})
                            : ippiCopy_8u_C4R(s.p(), s.step(), d.p(), d.step(), {5, 4});
    ASSERT_EQ(st, ippStsNoErr);
    EXPECT_EQ(d.Bytes(), s.Bytes());
    EXPECT_TRUE(d.CanariesIntact());
  }
  Picture p(4 * 3, 2);
  const Ipp8u v[4] = {127, 127, 16, 255};
  ASSERT_EQ(ippiSet_8u_C4R(v, p.p(), p.step(), {3, 2}), ippStsNoErr);
  EXPECT_EQ(p.row(1)[8], 127);
  EXPECT_EQ(p.row(1)[10], 16);
  EXPECT_EQ(p.row(1)[11], 255);
  ASSERT_EQ(ippiSet_8u_C4CR(0, p.p() + 3, p.step(), {3, 2}), ippStsNoErr);
  EXPECT_EQ(p.row(0)[3], 0);
  EXPECT_EQ(p.row(0)[2], 16);  // other channels untouched
  EXPECT_EQ(p.row(1)[11], 0);
  Picture q(6, 2);
  ASSERT_EQ(ippiSet_8u_C1R(235, q.p(), q.step(), {6, 2}), ippStsNoErr);
  EXPECT_EQ(q.Bytes(), std::vector<uint8_t>(12, 235));
  EXPECT_TRUE(p.CanariesIntact());
  EXPECT_TRUE(q.CanariesIntact());
}

TEST(IppCopy, SwapChannelsReordersAndWorksInPlace) {
  Picture s(6, 1), d(6, 1);
  const uint8_t px[6] = {1, 2, 3, 4, 5, 6};
  std::copy(px, px + 6, s.p());
  const int order[3] = {2, 1, 0};
  ASSERT_EQ(ippiSwapChannels_8u_C3R(s.p(), s.step(), d.p(), d.step(), {2, 1}, order), ippStsNoErr);
  EXPECT_EQ(d.Bytes(), (std::vector<uint8_t>{3, 2, 1, 6, 5, 4}));
  const int rot[3] = {1, 2, 0};
  ASSERT_EQ(ippiSwapChannels_8u_C3IR(s.p(), s.step(), {2, 1}, rot), ippStsNoErr);
  EXPECT_EQ(s.Bytes(), (std::vector<uint8_t>{2, 3, 1, 5, 6, 4}));
  const int bad[3] = {0, 3, 1};
  EXPECT_EQ(ippiSwapChannels_8u_C3IR(s.p(), s.step(), {2, 1}, bad), ippStsChannelOrderErr);
  EXPECT_EQ(ippiSwapChannels_8u_C3IR(s.p(), s.step(), {2, 1}, nullptr), ippStsNullPtrErr);
  EXPECT_EQ(s.Bytes(), (std::vector<uint8_t>{2, 3, 1, 5, 6, 4}));
}

// Expected mirror of a C-channel picture by definition.
std::vector<uint8_t> Mirrored(const Picture& s, int w, int h, int C, int axis) {
  std::vector<uint8_t> out;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int sy = axis == 1 ? y : h - 1 - y;
      const int sx = axis == 0 ? x : w - 1 - x;
      for (int c = 0; c < C; ++c) out.push_back(s.row(sy)[sx * C + c]);
    }
  return out;
}

TEST(IppMirror, AllAxesAllChannelCountsBothForms) {
  std::mt19937 rng(3);
  for (int C : {1, 3, 4})
    for (int axis : {0, 1, 2})
      for (int h : {1, 4, 5}) {
        const int w = 7;
        Picture s(C * w, h), d(C * w, h);
        s.Random(rng);
        const std::vector<uint8_t> expect = Mirrored(s, w, h, C, axis);
        const IppiAxis a = static_cast<IppiAxis>(axis);
        IppStatus st = C == 1   ? ippiMirror_8u_C1R(s.p(), s.step(), d.p(), d.step(), {w, h}, a)
                       : C == 3 ? ippiMirror_8u_C3R(s.p(), s.step(), d.p(), d.step(), {w, h}, a)
                                : ippiMirror_8u_C4R(s.p(), s.step(), d.p(), d.step(), {w, h}, a);
        ASSERT_EQ(st, ippStsNoErr);
        EXPECT_EQ(d.Bytes(), expect) << "C" << C << " axis " << axis << " h " << h;
        st = C == 1   ? ippiMirror_8u_C1IR(s.p(), s.step(), {w, h}, a)
             : C == 3 ? ippiMirror_8u_C3IR(s.p(), s.step(), {w, h}, a)
                      : ippiMirror_8u_C4IR(s.p(), s.step(), {w, h}, a);
        ASSERT_EQ(st, ippStsNoErr);
        EXPECT_EQ(s.Bytes(), expect) << "in place C" << C << " axis " << axis << " h " << h;
        EXPECT_TRUE(s.CanariesIntact());
        EXPECT_TRUE(d.CanariesIntact());
      }
}

TEST(IppMirror, HorizontalAxisTurnsUpsideDown) {
  Picture p(2, 3);
  for (int y = 0; y < 3; ++y) p.row(y)[0] = p.row(y)[1] = static_cast<uint8_t>(10 * y);
  ASSERT_EQ(ippiMirror_8u_C1IR(p.p(), p.step(), {2, 3}, ippAxsHorizontal), ippStsNoErr);
  EXPECT_EQ(p.Bytes(), (std::vector<uint8_t>{20, 20, 10, 10, 0, 0}));
  EXPECT_EQ(ippiMirror_8u_C1IR(p.p(), p.step(), {2, 3}, static_cast<IppiAxis>(3)),
            ippStsMirrorFlipErr);
  EXPECT_EQ(p.Bytes(), (std::vector<uint8_t>{20, 20, 10, 10, 0, 0}));
}

}  // namespace
