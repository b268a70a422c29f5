#include <OrvCameraInfo.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

ORV_GPS_RATIONAL R(uint32_t n, uint32_t d) { return ORV_GPS_RATIONAL{n, d}; }
const ORV_GPS_RATIONAL kAbsent = {0xFFFFFFFFu, 0};

ORV_GPS_INFO AllAbsent() {
  ORV_GPS_INFO info;
  std::memset(&info, 0, sizeof(info));
  std::memset(info.versionId, 0xFF, 4);
  for (ORV_GPS_RATIONAL* r :
       {&info.latitudeDegrees, &info.latitudeMinutes, &info.latitudeSeconds, &info.longitudeDegrees,
        &info.longitudeMinutes, &info.longitudeSeconds, &info.altitude, &info.timeHours,
        &info.timeMinutes, &info.timeSeconds, &info.dop, &info.speed, &info.track,
        &info.imageDirection}) {
    *r = kAbsent;
  }
  info.altitudeRef = 0xFF;
  return info;
}

ORV_GPS_INFO AllPresent() {
  ORV_GPS_INFO info;
  std::memset(&info, 0, sizeof(info));
  const uint8_t version[4] = {2, 2, 0, 0};
  std::memcpy(info.versionId, version, 4);
  info.latitudeRef[0] = 'N';
  info.latitudeRef[1] = 'x';  // only the first byte is used
  info.latitudeDegrees = R(35, 1);
  info.latitudeMinutes = R(0x1234, 0x5678);
  info.latitudeSeconds = R(0xABCDEF01u, 0x00010002u);  // high bits are dropped
  info.longitudeRef[0] = 'E';
  info.longitudeDegrees = R(139, 1);
  info.longitudeMinutes = R(45, 1);
  info.longitudeSeconds = R(3012, 100);
  info.altitudeRef = 0;  // above sea level: written
  info.altitude = R(0, 10);
  info.timeHours = R(23, 1);
  info.timeMinutes = R(59, 1);
  info.timeSeconds = R(5999, 100);
  info.status[0] = 'A';
  info.measureMode[0] = '3';
  info.dop = R(15, 10);
  info.speedRef[0] = 'K';
  info.speed = R(65536, 1);
  info.trackRef[0] = 'T';
  info.track = R(180, 1);
  info.imageDirectionRef[0] = 'M';
  info.imageDirection = R(90, 1);
  std::memcpy(info.mapDatum, "TOKYO-97", 8);  // eight characters, no terminator
  return info;
}

TEST(PackGPSInfo, EveryFieldPresentGivesAll25Packs) {
  const std::vector<unsigned char> expected = {
      0xB0, 2,    2,    0,    0,    0xB1, 'N',  0,    0,    0,    0xB2, 0,    35,   0,
      1,    0xB3, 0x12, 0x34, 0x56, 0x78, 0xB4, 0xEF, 0x01, 0x00, 0x02, 0xB5, 'E',  0,
      0,    0,    0xB6, 0,    139,  0,    1,    0xB7, 0,    45,   0,    1,    0xB8, 0x0B,
      0xC4, 0,    100,  0xB9, 0,    0,    0,    0,    0xBA, 0,    0,    0,    10,   0xBB,
      0,    23,   0,    1,    0xBC, 0,    59,   0,    1,    0xBD, 0x17, 0x6F, 0,    100,
      0xBE, 'A',  0,    0,    0,    0xBF, '3',  0,    0,    0,    0xC0, 0,    15,   0,
      10,   0xC1, 'K',  0,    0,    0,    0xC2, 0,    0,    0,    1,    0xC3, 'T',  0,
      0,    0,    0xC4, 0,    180,  0,    1,    0xC5, 'M',  0,    0,    0,    0xC6, 0,
      90,   0,    1,    0xC7, 'T',  'O',  'K',  'Y',  0xC8, 'O',  '-',  '9',  '7'};
  ASSERT_EQ(expected.size(), 125u);
  std::vector<unsigned char> dst(130, 0xEE);
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst.data(), 125, AllPresent()), 125u);
  EXPECT_EQ(std::vector<unsigned char>(dst.begin(), dst.begin() + 125), expected);
  for (size_t i = 125; i < dst.size(); ++i) EXPECT_EQ(dst[i], 0xEE);
}

TEST(PackGPSInfo, ShortBufferWritesNothing) {
  std::vector<unsigned char> dst(125, 0xEE);
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst.data(), 124, AllPresent()), 0u);
  EXPECT_EQ(dst, std::vector<unsigned char>(125, 0xEE));
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst.data(), 0, AllPresent()), 0u);
  EXPECT_EQ(dst, std::vector<unsigned char>(125, 0xEE));
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(nullptr, 1000, AllPresent()), 0u);
}

TEST(PackGPSInfo, EveryFieldAbsentGivesNoPack) {
  std::vector<unsigned char> dst(8, 0xEE);
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst.data(), 8, AllAbsent()), 0u);
  EXPECT_EQ(dst, std::vector<unsigned char>(8, 0xEE));
}

TEST(PackGPSInfo, OneFieldAtATimeGivesItsOwnPack) {
  const ORV_GPS_INFO full = AllPresent();
  unsigned char all[125];
  ASSERT_EQ(OrvGPSInfo::PackGPSInfo(all, sizeof(all), full), 125u);
  // Copy one field of the full record into an empty one: exactly the pack of
  // that field comes out, the same bytes as in the full sequence.
  struct Field {
    size_t offset;
    size_t size;
    size_t pack;  // index of its first pack in the full sequence
    size_t packs;
  };
  const Field fields[] = {
      {offsetof(ORV_GPS_INFO, versionId), 4, 0, 1},
      {offsetof(ORV_GPS_INFO, latitudeRef), 2, 1, 1},
      {offsetof(ORV_GPS_INFO, latitudeDegrees), 8, 2, 1},
      {offsetof(ORV_GPS_INFO, latitudeMinutes), 8, 3, 1},
      {offsetof(ORV_GPS_INFO, latitudeSeconds), 8, 4, 1},
      {offsetof(ORV_GPS_INFO, longitudeRef), 2, 5, 1},
      {offsetof(ORV_GPS_INFO, longitudeDegrees), 8, 6, 1},
      {offsetof(ORV_GPS_INFO, longitudeMinutes), 8, 7, 1},
      {offsetof(ORV_GPS_INFO, longitudeSeconds), 8, 8, 1},
      {offsetof(ORV_GPS_INFO, altitudeRef), 1, 9, 1},
      {offsetof(ORV_GPS_INFO, altitude), 8, 10, 1},
      {offsetof(ORV_GPS_INFO, timeHours), 8, 11, 1},
      {offsetof(ORV_GPS_INFO, timeMinutes), 8, 12, 1},
      {offsetof(ORV_GPS_INFO, timeSeconds), 8, 13, 1},
      {offsetof(ORV_GPS_INFO, status), 2, 14, 1},
      {offsetof(ORV_GPS_INFO, measureMode), 2, 15, 1},
      {offsetof(ORV_GPS_INFO, dop), 8, 16, 1},
      {offsetof(ORV_GPS_INFO, speedRef), 2, 17, 1},
      {offsetof(ORV_GPS_INFO, speed), 8, 18, 1},
      {offsetof(ORV_GPS_INFO, trackRef), 2, 19, 1},
      {offsetof(ORV_GPS_INFO, track), 8, 20, 1},
      {offsetof(ORV_GPS_INFO, imageDirectionRef), 2, 21, 1},
      {offsetof(ORV_GPS_INFO, imageDirection), 8, 22, 1},
      {offsetof(ORV_GPS_INFO, mapDatum), 8, 23, 2},
  };
  for (const Field& f : fields) {
    ORV_GPS_INFO one = AllAbsent();
    std::memcpy(reinterpret_cast<char*>(&one) + f.offset,
                reinterpret_cast<const char*>(&full) + f.offset, f.size);
    unsigned char dst[125];
    std::memset(dst, 0xEE, sizeof(dst));
    const unsigned long n = OrvGPSInfo::PackGPSInfo(dst, 5 * f.packs, one);
    ASSERT_EQ(n, 5 * f.packs) << "field at " << f.offset;
    EXPECT_EQ(std::memcmp(dst, all + 5 * f.pack, n), 0) << "field at " << f.offset;
    EXPECT_EQ(dst[n], 0xEE);
    EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst, 5 * f.packs - 1, one), 0u);
  }
}

TEST(PackGPSInfo, SkipRulesAndTruncation) {
  ORV_GPS_INFO info = AllAbsent();
  unsigned char dst[16];
  // A version with one byte other than 0xFF is present.
  info.versionId[3] = 0xFE;
  ASSERT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 5u);
  EXPECT_EQ(std::memcmp(dst, "\xB0\xFF\xFF\xFF\xFE", 5), 0);
  info = AllAbsent();
  // Only the first byte of a character field decides.
  info.status[1] = 'V';
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 0u);
  // A numerator of 65536 is stored as 0; a denominator's high bits are dropped.
  info.speed = R(65536, 0x12345678);
  ASSERT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 5u);
  EXPECT_EQ(std::memcmp(dst, "\xC2\x00\x00\x56\x78", 5), 0);
  // A zero numerator is a value, not an absence.
  info = AllAbsent();
  info.dop = R(0, 0);
  ASSERT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 5u);
  EXPECT_EQ(std::memcmp(dst, "\xC0\x00\x00\x00\x00", 5), 0);
  // altitudeRef 1 (below sea level).
  info = AllAbsent();
  info.altitudeRef = 1;
  ASSERT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 5u);
  EXPECT_EQ(std::memcmp(dst, "\xB9\x01\x00\x00\x00", 5), 0);
}

TEST(PackGPSInfo, MapDatumFillsTwoPacksInOrder) {
  ORV_GPS_INFO info = AllAbsent();
  std::memcpy(info.mapDatum, "WGS84\0ZZ", 8);  // bytes after the 0 are not used
  unsigned char dst[10];
  std::memset(dst, 0xEE, sizeof(dst));
  ASSERT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 10u);
  const unsigned char expected[10] = {0xC7, 'W', 'G', 'S', '8', 0xC8, '4', 0, 0, 0};
  EXPECT_EQ(std::memcmp(dst, expected, 10), 0);
  info.mapDatum[0] = 0;
  EXPECT_EQ(OrvGPSInfo::PackGPSInfo(dst, sizeof(dst), info), 0u);
}

}  // namespace
