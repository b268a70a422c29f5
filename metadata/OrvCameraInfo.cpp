#include <OrvCameraInfo.h>

#include <cstddef>

#include "metadata/shutter_tables.h"

namespace {

// F-number times 10 for the recorded iris values 0 to 60: 2 to the power of
// raw / 8, on the usual photographic scale.
constexpr uint32_t kIrisTable[61] = {
    10,  11,  12,  13,  14,  16,  17,   18,   20,   22,   24,   26,   28,  31,  34,  37,
    40,  44,  48,  52,  56,  62,  68,   73,   80,   87,   96,   100,  110, 120, 140, 150,
    160, 170, 190, 200, 220, 240, 260,  280,  320,  340,  380,  410,  450, 490, 540, 590,
    640, 700, 760, 830, 900, 990, 1080, 1170, 1280, 1400, 1520, 1660, 1810};

constexpr unsigned kIrisClosedLoop = 61;  // recorded states without a value
constexpr unsigned kIrisOtherState = 62;
constexpr unsigned kIrisNone = 63;
constexpr unsigned kGainNone = 15;

uint32_t DecodeBcd(unsigned char byte, unsigned tensMask) {
  return (byte & 0x0Fu) + 10u * ((byte >> 4) & tensMask);
}

}  // namespace

void OrvCameraInfo::GetConsumerCamera1(unsigned char* pack, ORV_AUX_INFO* info) {
  if (!pack || !info) return;
  info->cameraInfoValid = 1;

  const unsigned exposure = pack[1] >> 4;
  info->aeMode = (exposure <= 4 || exposure == 15) ? exposure : 5;

  const unsigned iris = pack[0] & 0x3Fu;
  if (iris == kIrisClosedLoop) {
    info->irisState = 1;
  } else if (iris == kIrisOtherState) {
    info->irisState = 2;
  } else if (iris == kIrisNone) {
    info->irisState = ORV_AUX_IRIS_NONE;
  } else {
    info->irisState = 0;
    info->irisValue = kIrisTable[iris];
  }

  const unsigned gain = pack[1] & 0x0Fu;
  if (gain == kGainNone) {
    info->gainValid = 0;
  } else {
    info->gainValid = 1;
    info->gain = static_cast<int32_t>(gain) * 3 - 3;
  }

  const unsigned wbMode = pack[2] >> 5;
  info->whiteBalanceMode = (wbMode >= 4 && wbMode <= 6) ? 4 : wbMode;
  const unsigned wb = pack[2] & 0x1Fu;
  info->whiteBalance = (wb <= 5 || wb == ORV_AUX_WB_NONE) ? wb : 6;
}

void OrvCameraInfo::GetConsumerCamera2(unsigned char* pack, ORV_AUX_INFO* info) {
  if (!pack || !info) return;
  info->cameraInfoValid = 1;
  info->cameraFlag = (pack[1] & 0x80u) ? 0 : 1;
}

void OrvCameraInfo::GetShutter(unsigned char* pack, ORV_AUX_INFO* info, SHUTTER_TABLE_TYPE table) {
  if (!pack || !info) return;
  info->cameraInfoValid = 1;
  info->shutterValid = 0;
  const unsigned raw = pack[2] | ((pack[3] & 0x7Fu) << 8);
  if (raw == 0 || raw == 0x7FFF) {
    info->shutterSpeed = 0;
    return;
  }
  const uint32_t speed = orv::LookUpShutterSpeed(static_cast<int>(table), raw);
  info->shutterSpeed = speed;
  if (speed != 0) info->shutterValid = 1;
}

void OrvCameraInfo::GetTTC(unsigned char* pack, ORV_AUX_INFO* info) {
  if (!pack || !info) return;
  if (pack[0] == 0xFF && pack[1] == 0xFF && pack[2] == 0xFF && pack[3] == 0xFF) return;
  info->timeCodeValid = 1;
  info->timeCodeHours = DecodeBcd(pack[3], 0x3u);
  info->timeCodeMinutes = DecodeBcd(pack[2], 0x7u);
  info->timeCodeSeconds = DecodeBcd(pack[1], 0x7u);
  info->timeCodeFrames = DecodeBcd(pack[0], 0x3u);
}
