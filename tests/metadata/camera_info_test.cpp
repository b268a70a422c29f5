#include <OrvCameraInfo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

// A record as a decoder's caller prepares it: no-information values, and a
// pattern in the caller's words that the decoders must never touch.
ORV_AUX_INFO FreshRecord() {
  ORV_AUX_INFO info;
  std::memset(&info, 0, sizeof(info));
  for (uint32_t i = 0; i < 11; ++i) info.callerWords[i] = 0xA5A50000u + i;
  info.aeMode = ORV_AUX_AEMODE_NONE;
  info.irisState = ORV_AUX_IRIS_NONE;
  info.irisValue = 0x1234;
  info.gain = 0x5678;
  info.shutterSpeed = 0x9ABC;
  info.whiteBalanceMode = ORV_AUX_WBMODE_NONE;
  info.whiteBalance = ORV_AUX_WB_NONE;
  info.timeCodeHours = 77;
  info.timeCodeMinutes = 77;
  info.timeCodeSeconds = 77;
  info.timeCodeFrames = 77;
  info.xvyccPrecision = ORV_AUX_XVYCC_UNKNOWN;
  info.xvyccColorSpace = ORV_AUX_XVYCC_UNKNOWN;
  for (uint32_t& v : info.xvyccBoundary) v = 0xDEAD;
  return info;
}

bool SameRecord(const ORV_AUX_INFO& a, const ORV_AUX_INFO& b) {
  return std::memcmp(&a, &b, sizeof(a)) == 0;
}

TEST(AuxRecord, CallerWordsTakeTheFirst44Bytes) {
  EXPECT_EQ(offsetof(ORV_AUX_INFO, cameraInfoValid), 44u);
}

TEST(ConsumerCamera1, NoInformationPackKeepsTheNoInformationValues) {
  ORV_AUX_INFO info = FreshRecord();
  unsigned char pack[4] = {63 | 0xC0, 0xFF, 0xFF, 0x00};
  OrvCameraInfo::GetConsumerCamera1(pack, &info);
  ORV_AUX_INFO expected = FreshRecord();
  expected.cameraInfoValid = 1;
  EXPECT_TRUE(SameRecord(info, expected));
  EXPECT_EQ(info.irisState, 15u);
  EXPECT_EQ(info.aeMode, 15u);
  EXPECT_EQ(info.gainValid, 0);
  EXPECT_EQ(info.whiteBalanceMode, 7u);
  EXPECT_EQ(info.whiteBalance, 31u);
}

TEST(ConsumerCamera1, IrisValuesFollowTheFNumberScale) {
  const uint32_t expected[61] = {
      10,  11,  12,  13,  14,  16,  17,   18,   20,   22,   24,   26,   28,  31,  34,  37,
      40,  44,  48,  52,  56,  62,  68,   73,   80,   87,   96,   100,  110, 120, 140, 150,
      160, 170, 190, 200, 220, 240, 260,  280,  320,  340,  380,  410,  450, 490, 540, 590,
      640, 700, 760, 830, 900, 990, 1080, 1170, 1280, 1400, 1520, 1660, 1810};
  for (unsigned raw = 0; raw <= 60; ++raw) {
    for (unsigned high : {0u, 0x40u, 0xC0u}) {  // bits 6 and 7 are ignored
      ORV_AUX_INFO info = FreshRecord();
      unsigned char pack[4] = {static_cast<unsigned char>(raw | high), 0xFF, 0xFF, 0};
      OrvCameraInfo::GetConsumerCamera1(pack, &info);
      EXPECT_EQ(info.irisState, 0u) << raw;
      EXPECT_EQ(info.irisValue, expected[raw]) << raw;
    }
    // Each value lies within 8 % of 10 times 2 to the power of raw / 8.
    const double exact = 10.0 * std::pow(2.0, raw / 8.0);
    EXPECT_LT(std::fabs(expected[raw] - exact) / exact, 0.08) << raw;
  }
  const struct {
    unsigned raw;
    uint32_t state;
  } states[] = {{61, 1}, {62, 2}, {63, 15}};
  for (const auto& s : states) {
    ORV_AUX_INFO info = FreshRecord();
    unsigned char pack[4] = {static_cast<unsigned char>(s.raw), 0xFF, 0xFF, 0};
    OrvCameraInfo::GetConsumerCamera1(pack, &info);
    EXPECT_EQ(info.irisState, s.state);
    EXPECT_EQ(info.irisValue, 0x1234u);  // not written
  }
}

TEST(ConsumerCamera1, ExposureGainAndWhiteBalanceMaps) {
  for (unsigned raw = 0; raw < 16; ++raw) {
    ORV_AUX_INFO info = FreshRecord();
    unsigned char pack[4] = {63, static_cast<unsigned char>(raw << 4 | raw), 0xFF, 0};
    OrvCameraInfo::GetConsumerCamera1(pack, &info);
    const uint32_t ae = (raw <= 4 || raw == 15) ? raw : 5;
    EXPECT_EQ(info.aeMode, ae) << raw;
    if (raw == 15) {
      EXPECT_EQ(info.gainValid, 0);
      EXPECT_EQ(info.gain, 0x5678);
    } else {
      EXPECT_EQ(info.gainValid, 1);
      EXPECT_EQ(info.gain, static_cast<int32_t>(raw) * 3 - 3) << raw;
    }
  }
  for (unsigned mode = 0; mode < 8; ++mode) {
    for (unsigned wb = 0; wb < 32; ++wb) {
      ORV_AUX_INFO info = FreshRecord();
      unsigned char pack[4] = {63, 0xFF, static_cast<unsigned char>(mode << 5 | wb), 0};
      OrvCameraInfo::GetConsumerCamera1(pack, &info);
      EXPECT_EQ(info.whiteBalanceMode, (mode >= 4 && mode <= 6) ? 4u : mode);
      EXPECT_EQ(info.whiteBalance, (wb <= 5 || wb == 31) ? wb : 6u);
    }
  }
  ORV_AUX_INFO info = FreshRecord();
  unsigned char pack[4] = {0, 0x0E, 5 << 5, 0};  // worked values
  OrvCameraInfo::GetConsumerCamera1(pack, &info);
  EXPECT_EQ(info.gain, 39);
  EXPECT_EQ(info.whiteBalanceMode, 4u);
  EXPECT_EQ(info.aeMode, 0u);
  EXPECT_EQ(info.irisValue, 10u);
  unsigned char pack7[4] = {0, 0x70, 0, 0};
  OrvCameraInfo::GetConsumerCamera1(pack7, &info);
  EXPECT_EQ(info.aeMode, 5u);
  EXPECT_EQ(info.gain, -3);
}

TEST(ConsumerCamera2, CameraFlagIsBit7OfByte1Inverted) {
  ORV_AUX_INFO info = FreshRecord();
  unsigned char clear[4] = {0xFF, 0x7F, 0xFF, 0xFF};
  OrvCameraInfo::GetConsumerCamera2(clear, &info);
  EXPECT_EQ(info.cameraInfoValid, 1);
  EXPECT_EQ(info.cameraFlag, 1);
  unsigned char set[4] = {0, 0x80, 0, 0};
  OrvCameraInfo::GetConsumerCamera2(set, &info);
  EXPECT_EQ(info.cameraFlag, 0);
  ORV_AUX_INFO expected = FreshRecord();
  expected.cameraInfoValid = 1;
  EXPECT_TRUE(SameRecord(info, expected));
}

struct Row {
  uint32_t speed;
  uint32_t threshold;
};

const std::vector<Row> kTables[4] = {
    {{2, 8400},  {3, 5244}, {4, 4200}, {6, 2622}, {8, 2100}, {12, 1311}, {15, 1050},
     {24, 655},  {30, 525}, {40, 393}, {48, 327}, {60, 262}, {90, 172},  {100, 157},
     {125, 122}, {180, 86}, {250, 61}, {350, 43}, {500, 30}, {725, 21},  {1000, 15},
     {1500, 10}, {2000, 7}, {3000, 5}, {4000, 3}, {6000, 2}, {10000, 1}},
    {{2, 10000}, {3, 5000},  {6, 2500},  {12, 1250}, {25, 625}, {50, 312}, {60, 262},
     {100, 156}, {120, 130}, {150, 102}, {215, 72},  {300, 51}, {425, 36}, {600, 25},
     {1000, 15}, {1250, 12}, {1750, 8},  {2500, 6},  {3500, 4}, {6000, 2}, {10000, 1}},
    {{2, 16858}, {3, 11238}, {4, 8429},  {6, 5619}, {8, 4214}, {12, 2809}, {15, 2247},
     {24, 1404}, {30, 1123}, {40, 842},  {48, 702}, {60, 561}, {90, 374},  {100, 337},
     {125, 269}, {180, 187}, {250, 134}, {350, 96}, {500, 67}, {725, 46},  {1000, 33},
     {1500, 22}, {2000, 16}, {3000, 11}, {4000, 8}, {6000, 5}, {10000, 3}},
    {{2, 14062}, {3, 9375},  {6, 4687},  {12, 2343}, {25, 1125}, {50, 562}, {60, 468},
     {100, 281}, {120, 234}, {150, 187}, {215, 130}, {300, 93},  {425, 66}, {600, 46},
     {1000, 28}, {1250, 22}, {1750, 16}, {2500, 11}, {3500, 8},  {6000, 4}, {10000, 2}}};

ORV_AUX_INFO Shutter(uint32_t raw, int table, unsigned char flag = 0) {
  ORV_AUX_INFO info = FreshRecord();
  info.shutterValid = 1;  // must be cleared whenever no speed results
  unsigned char pack[4] = {0xAA, 0x55, static_cast<unsigned char>(raw & 0xFF),
                           static_cast<unsigned char>((raw >> 8) | flag)};
  OrvCameraInfo::GetShutter(pack, &info, static_cast<SHUTTER_TABLE_TYPE>(table));
  EXPECT_EQ(info.cameraInfoValid, 1);
  return info;
}

TEST(Shutter, EveryThresholdAndOneBelowIt) {
  for (int t = 0; t < 4; ++t) {
    const std::vector<Row>& rows = kTables[t];
    for (size_t i = 0; i < rows.size(); ++i) {
      ORV_AUX_INFO at = Shutter(rows[i].threshold, t);
      EXPECT_EQ(at.shutterSpeed, rows[i].speed) << "table " << t << " row " << i;
      EXPECT_EQ(at.shutterValid, 1);
      ORV_AUX_INFO below = Shutter(rows[i].threshold - 1, t);
      const uint32_t next = i + 1 < rows.size() ? rows[i + 1].speed : 0;
      EXPECT_EQ(below.shutterSpeed, next) << "table " << t << " row " << i;
      EXPECT_EQ(below.shutterValid, next != 0 ? 1 : 0);
    }
    EXPECT_EQ(Shutter(32766, t).shutterSpeed, 2u);  // above the first threshold
  }
}

TEST(Shutter, WorkedValuesAndNoSpeed) {
  EXPECT_EQ(Shutter(1, 0).shutterSpeed, 10000u);
  ORV_AUX_INFO zero = Shutter(0, 0);
  EXPECT_EQ(zero.shutterSpeed, 0u);
  EXPECT_EQ(zero.shutterValid, 0);
  ORV_AUX_INFO none = Shutter(32767, 1);
  EXPECT_EQ(none.shutterSpeed, 0u);
  EXPECT_EQ(none.shutterValid, 0);
  ORV_AUX_INFO low = Shutter(2, 2);
  EXPECT_EQ(low.shutterSpeed, 0u);
  EXPECT_EQ(low.shutterValid, 0);
  // Bit 7 of byte 3 is not part of the value.
  EXPECT_EQ(Shutter(262, 0, 0x80).shutterSpeed, 60u);
  ORV_AUX_INFO unknown = Shutter(262, 4);
  EXPECT_EQ(unknown.shutterSpeed, 0u);
  EXPECT_EQ(unknown.shutterValid, 0);
  EXPECT_EQ(Shutter(262, -1).shutterSpeed, 0u);
}

TEST(TimeCode, BcdFieldsWithFlagsIgnored) {
  ORV_AUX_INFO info = FreshRecord();
  unsigned char pack[4] = {0x25, 0x59, 0x59, 0x23};
  OrvCameraInfo::GetTTC(pack, &info);
  EXPECT_EQ(info.timeCodeValid, 1);
  EXPECT_EQ(info.timeCodeHours, 23u);
  EXPECT_EQ(info.timeCodeMinutes, 59u);
  EXPECT_EQ(info.timeCodeSeconds, 59u);
  EXPECT_EQ(info.timeCodeFrames, 25u);
  unsigned char flagged[4] = {0x25 | 0xC0, 0x59 | 0x80, 0x07 | 0x80, 0x19 | 0xC0};
  OrvCameraInfo::GetTTC(flagged, &info);
  EXPECT_EQ(info.timeCodeHours, 19u);
  EXPECT_EQ(info.timeCodeMinutes, 7u);
  EXPECT_EQ(info.timeCodeSeconds, 59u);
  EXPECT_EQ(info.timeCodeFrames, 25u);
}

TEST(TimeCode, FourFFBytesChangeNothing) {
  ORV_AUX_INFO info = FreshRecord();
  unsigned char none[4] = {0xFF, 0xFF, 0xFF, 0xFF};
  OrvCameraInfo::GetTTC(none, &info);
  EXPECT_TRUE(SameRecord(info, FreshRecord()));
  unsigned char almost[4] = {0xFF, 0xFF, 0xFF, 0x7F};
  OrvCameraInfo::GetTTC(almost, &info);
  EXPECT_EQ(info.timeCodeValid, 1);
}

// Packs six values of `bits` each end to end, high bits first, behind byte 0 of
// the first record, as a camera writes them.
void PackBoundary(const uint32_t (&v)[6], int bits, unsigned char* stream) {
  size_t bit = 8;
  for (uint32_t value : v) {
    for (int b = bits - 1; b >= 0; --b, ++bit) {
      if ((value >> b) & 1u) stream[bit / 8] |= static_cast<unsigned char>(0x80u >> (bit % 8));
    }
  }
}

TEST(XvYcc, BoundaryValuesAtEachPrecision) {
  const int bits[3] = {8, 10, 12};
  const uint32_t values[3][6] = {{0x12, 0xFE, 0x80, 0x01, 0x7F, 0xC3},
                                 {0x3FF, 0x001, 0x2AA, 0x155, 0x200, 0x0F0},
                                 {0xFFF, 0x123, 0x800, 0xABC, 0x001, 0x7E5}};
  for (int p = 0; p < 3; ++p) {
    unsigned char stream[12] = {0};
    stream[0] = static_cast<unsigned char>(p << 3 | 2);  // colour space 2
    PackBoundary(values[p], bits[p], stream);
    unsigned char header[4] = {0xDC, 0x11, 0x22, 0x00};
    ORV_AUX_INFO info = FreshRecord();
    CXVYCCInfo::GetXVYCCInfo(header, stream, stream + 4, stream + 8, &info);
    EXPECT_EQ(info.xvyccValid, 1);
    EXPECT_EQ(info.xvyccPrecision, static_cast<uint32_t>(p));
    EXPECT_EQ(info.xvyccColorSpace, 2u);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(info.xvyccBoundary[i], values[p][i]) << p << " " << i;
  }
}

TEST(XvYcc, UnknownPrecisionAndColourSpace) {
  unsigned char header[4] = {0xDC, 0, 0, 0};
  unsigned char first[4] = {3 << 3 | 1, 1, 2, 3};
  unsigned char second[4] = {4, 5, 6, 7};
  unsigned char third[4] = {8, 9, 10, 11};
  ORV_AUX_INFO info = FreshRecord();
  CXVYCCInfo::GetXVYCCInfo(header, first, second, third, &info);
  EXPECT_EQ(info.xvyccValid, 0);
  EXPECT_EQ(info.xvyccPrecision, 255u);
  EXPECT_EQ(info.xvyccColorSpace, 1u);
  EXPECT_EQ(info.xvyccBoundary[0], 0xDEADu);  // not read
  for (unsigned space = 4; space < 8; ++space) {
    first[0] = static_cast<unsigned char>(space);
    CXVYCCInfo::GetXVYCCInfo(header, first, second, third, &info);
    EXPECT_EQ(info.xvyccValid, 1);
    EXPECT_EQ(info.xvyccColorSpace, 255u);
    EXPECT_EQ(info.xvyccBoundary[5], 6u);
  }
}

TEST(XvYcc, WrongHeaderOnlyClearsTheValidFlag) {
  unsigned char first[4] = {0, 1, 2, 3};
  unsigned char rest[4] = {4, 5, 6, 7};
  for (auto header : {std::vector<unsigned char>{0xDB, 0, 0, 0}, {0xDC, 0, 0, 1}}) {
    ORV_AUX_INFO info = FreshRecord();
    info.xvyccValid = 1;
    CXVYCCInfo::GetXVYCCInfo(header.data(), first, rest, rest, &info);
    ORV_AUX_INFO expected = FreshRecord();
    EXPECT_TRUE(SameRecord(info, expected));
  }
}

TEST(CameraMetadata, NullPointersChangeNothing) {
  unsigned char pack[4] = {0, 0, 0, 0};
  ORV_AUX_INFO info = FreshRecord();
  OrvCameraInfo::GetConsumerCamera1(nullptr, &info);
  OrvCameraInfo::GetConsumerCamera2(nullptr, &info);
  OrvCameraInfo::GetShutter(nullptr, &info, SHUTTER_TABLE_TYPE_0);
  OrvCameraInfo::GetTTC(nullptr, &info);
  CXVYCCInfo::GetXVYCCInfo(nullptr, pack, pack, pack, &info);
  CXVYCCInfo::GetXVYCCInfo(pack, nullptr, pack, pack, &info);
  CXVYCCInfo::GetXVYCCInfo(pack, pack, nullptr, pack, &info);
  CXVYCCInfo::GetXVYCCInfo(pack, pack, pack, nullptr, &info);
  EXPECT_TRUE(SameRecord(info, FreshRecord()));
  // And with a null record nothing is read or written.
  OrvCameraInfo::GetConsumerCamera1(pack, nullptr);
  OrvCameraInfo::GetConsumerCamera2(pack, nullptr);
  OrvCameraInfo::GetShutter(pack, nullptr, SHUTTER_TABLE_TYPE_1);
  OrvCameraInfo::GetTTC(pack, nullptr);
  CXVYCCInfo::GetXVYCCInfo(pack, pack, pack, pack, nullptr);
  EXPECT_EQ(pack[0], 0);
}

}  // namespace
