// Camera metadata: decoders for the auxiliary packs that digital video cameras
// record (consumer camera, shutter, time code), for the xvYCC colour boundary
// record, and a packer for GPS information.
//
// A pack here is the four payload bytes behind a pack's header byte: byte 0 is
// the first byte after the header. The decoders write only their own fields of
// ORV_AUX_INFO, so a caller prepares the record (with the no-information values
// below) and reads what the valid flags report. A null pointer makes any of
// these calls do nothing.
#ifndef ORV_CAMERA_INFO_H_
#define ORV_CAMERA_INFO_H_

#include <OrvExport.h>

#include <cstdint>

// The no-information values of ORV_AUX_INFO, which a new record starts with.
#define ORV_AUX_AEMODE_NONE 15u
#define ORV_AUX_IRIS_NONE 15u
#define ORV_AUX_WBMODE_NONE 7u
#define ORV_AUX_WB_NONE 31u
#define ORV_AUX_XVYCC_UNKNOWN 255u

// Decoded camera information. The valid flags are 0 or 1.
struct ORV_AUX_INFO {
  // Eleven words that belong to the caller (the frame information that travels
  // with this record); no decoder here touches them.
  uint32_t callerWords[11];

  uint8_t cameraInfoValid;  // set once a consumer-camera or shutter pack was seen
  uint32_t aeMode;          // exposure mode 0 to 5; 15 without information
  uint32_t irisState;       // 0: irisValue holds a value; 1, 2 as recorded; 15 none
  uint32_t irisValue;       // F-number times 10, when irisState is 0
  uint8_t gainValid;
  int32_t gain;  // dB, -3 to 39
  uint8_t shutterValid;
  uint32_t shutterSpeed;      // n of an exposure of 1/n second; 0 for none
  uint32_t whiteBalanceMode;  // 0 to 4; 7 without information
  uint32_t whiteBalance;      // 0 to 6; 31 without information
  uint8_t cameraFlag;
  uint8_t timeCodeValid;
  uint32_t timeCodeHours;
  uint32_t timeCodeMinutes;
  uint32_t timeCodeSeconds;
  uint32_t timeCodeFrames;
  uint8_t xvyccValid;
  uint32_t xvyccPrecision;   // 0, 1, 2 for 8, 10, 12 bits; 255 unknown
  uint32_t xvyccColorSpace;  // 0 to 3; 255 unknown
  uint32_t xvyccBoundary[6];
};

// The four shutter tables; each maps a recorded 15-bit shutter value to a speed.
// Tables 0 and 2 hold the speeds of the 60 Hz family (1/60, 1/100, 1/125 ...),
// tables 1 and 3 those of the 50 Hz family (1/50, 1/120, 1/150 ...); tables 2
// and 3 are for cameras that record the value on a finer scale.
enum SHUTTER_TABLE_TYPE {
  SHUTTER_TABLE_TYPE_0 = 0,
  SHUTTER_TABLE_TYPE_1 = 1,
  SHUTTER_TABLE_TYPE_2 = 2,
  SHUTTER_TABLE_TYPE_3 = 3
};

// A rational number. A pack holds the low 16 bits of each word.
struct ORV_GPS_RATIONAL {
  uint32_t numerator;  // 0xFFFFFFFF: the field is absent
  uint32_t denominator;
};

// GPS information to pack. Absent fields: versionId all 0xFF, a character
// field whose first byte is 0, a rational whose numerator is 0xFFFFFFFF,
// altitudeRef 0xFF, a mapDatum whose first byte is 0. Character fields use
// their first byte only.
struct ORV_GPS_INFO {
  uint8_t versionId[4];
  char latitudeRef[2];
  ORV_GPS_RATIONAL latitudeDegrees;
  ORV_GPS_RATIONAL latitudeMinutes;
  ORV_GPS_RATIONAL latitudeSeconds;
  char longitudeRef[2];
  ORV_GPS_RATIONAL longitudeDegrees;
  ORV_GPS_RATIONAL longitudeMinutes;
  ORV_GPS_RATIONAL longitudeSeconds;
  uint8_t altitudeRef;
  ORV_GPS_RATIONAL altitude;
  ORV_GPS_RATIONAL timeHours;
  ORV_GPS_RATIONAL timeMinutes;
  ORV_GPS_RATIONAL timeSeconds;
  char status[2];
  char measureMode[2];
  ORV_GPS_RATIONAL dop;
  char speedRef[2];
  ORV_GPS_RATIONAL speed;
  char trackRef[2];
  ORV_GPS_RATIONAL track;
  char imageDirectionRef[2];
  ORV_GPS_RATIONAL imageDirection;
  char mapDatum[8];
};

class ORV_API OrvCameraInfo {
 public:
  // Consumer camera pack 1: iris, exposure mode, gain, white balance.
  static void GetConsumerCamera1(unsigned char* pack, ORV_AUX_INFO* info);
  // Consumer camera pack 2: the camera flag.
  static void GetConsumerCamera2(unsigned char* pack, ORV_AUX_INFO* info);
  // Shutter pack: the speed, looked up in `table`; an unknown table gives 0.
  static void GetShutter(unsigned char* pack, ORV_AUX_INFO* info, SHUTTER_TABLE_TYPE table);
  // Time code pack: hours, minutes, seconds and frames in binary-coded decimal.
  // Four 0xFF bytes mean no time code and change nothing.
  static void GetTTC(unsigned char* pack, ORV_AUX_INFO* info);

 private:
  OrvCameraInfo();
};

class ORV_API CXVYCCInfo {
 public:
  // `header` is the record's header (byte 0 0xDC, byte 3 0); `first`,
  // `second` and `third` are its three payload records of four bytes.
  static void GetXVYCCInfo(unsigned char* header, unsigned char* first, unsigned char* second,
                           unsigned char* third, ORV_AUX_INFO* info);

 private:
  CXVYCCInfo();
};

// The largest result of PackGPSInfo: 25 packs of 5 bytes.
#define ORV_GPS_PACK_MAX_BYTES 125u

class ORV_API OrvGPSInfo {
 public:
  // Writes the packs of the present fields of `info` (tag byte and four bytes
  // each, tags 0xB0 to 0xC8 in order) and answers their byte count, at most
  // 125. Answers 0, writing nothing, when `dst` is null, when `dstSize` is too
  // small, or when no field is present.
  static unsigned long PackGPSInfo(unsigned char* dst, unsigned long dstSize,
                                   const ORV_GPS_INFO& info);

 private:
  OrvGPSInfo();
};

#endif  // ORV_CAMERA_INFO_H_
