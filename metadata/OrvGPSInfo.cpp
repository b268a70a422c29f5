#include <OrvCameraInfo.h>

#include <cstring>

namespace {

constexpr size_t kPackBytes = 5;
constexpr uint32_t kAbsentRational = 0xFFFFFFFFu;
constexpr uint8_t kAbsentByte = 0xFF;

// Packs are built here first, so that nothing reaches the caller's buffer
// unless all of them fit.
class PackWriter {
 public:
  void Pack(uint8_t tag, uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
    uint8_t* p = bytes_ + size_;
    p[0] = tag;
    p[1] = b0;
    p[2] = b1;
    p[3] = b2;
    p[4] = b3;
    size_ += kPackBytes;
  }
  void Version(uint8_t tag, const uint8_t (&id)[4]) {
    if (id[0] == kAbsentByte && id[1] == kAbsentByte && id[2] == kAbsentByte &&
        id[3] == kAbsentByte) {
      return;
    }
    Pack(tag, id[0], id[1], id[2], id[3]);
  }
  void Character(uint8_t tag, const char (&field)[2]) {
    const uint8_t c = static_cast<uint8_t>(field[0]);
    if (c != 0) Pack(tag, c, 0, 0, 0);
  }
  void Rational(uint8_t tag, const ORV_GPS_RATIONAL& r) {
    if (r.numerator == kAbsentRational) return;
    Pack(tag, static_cast<uint8_t>(r.numerator >> 8), static_cast<uint8_t>(r.numerator),
         static_cast<uint8_t>(r.denominator >> 8), static_cast<uint8_t>(r.denominator));
  }
  void AltitudeRef(uint8_t tag, uint8_t ref) {
    // 0 is a written value here (above sea level); only 0xFF means absent.
    if (ref != kAbsentByte) Pack(tag, ref, 0, 0, 0);
  }
  void MapDatum(uint8_t firstTag, uint8_t secondTag, const char (&datum)[8]) {
    if (datum[0] == 0) return;
    uint8_t text[8] = {0};
    for (size_t i = 0; i < 8 && datum[i] != 0; ++i) text[i] = static_cast<uint8_t>(datum[i]);
    Pack(firstTag, text[0], text[1], text[2], text[3]);
    Pack(secondTag, text[4], text[5], text[6], text[7]);
  }

  const uint8_t* bytes() const { return bytes_; }
  size_t size() const { return size_; }

 private:
  uint8_t bytes_[ORV_GPS_PACK_MAX_BYTES];
  size_t size_ = 0;
};

}  // namespace

unsigned long OrvGPSInfo::PackGPSInfo(unsigned char* dst, unsigned long dstSize,
                                      const ORV_GPS_INFO& info) {
  if (!dst) return 0;
  PackWriter w;
  w.Version(0xB0, info.versionId);
  w.Character(0xB1, info.latitudeRef);
  w.Rational(0xB2, info.latitudeDegrees);
  w.Rational(0xB3, info.latitudeMinutes);
  w.Rational(0xB4, info.latitudeSeconds);
  w.Character(0xB5, info.longitudeRef);
  w.Rational(0xB6, info.longitudeDegrees);
  w.Rational(0xB7, info.longitudeMinutes);
  w.Rational(0xB8, info.longitudeSeconds);
  w.AltitudeRef(0xB9, info.altitudeRef);
  w.Rational(0xBA, info.altitude);
  w.Rational(0xBB, info.timeHours);
  w.Rational(0xBC, info.timeMinutes);
  w.Rational(0xBD, info.timeSeconds);
  w.Character(0xBE, info.status);
  w.Character(0xBF, info.measureMode);
  w.Rational(0xC0, info.dop);
  w.Character(0xC1, info.speedRef);
  w.Rational(0xC2, info.speed);
  w.Character(0xC3, info.trackRef);
  w.Rational(0xC4, info.track);
  w.Character(0xC5, info.imageDirectionRef);
  w.Rational(0xC6, info.imageDirection);
  w.MapDatum(0xC7, 0xC8, info.mapDatum);
  if (dstSize < w.size()) return 0;
  if (w.size() != 0) std::memcpy(dst, w.bytes(), w.size());
  return static_cast<unsigned long>(w.size());
}
