// The shutter tables of the camera metadata decoders: rows of a speed and a
// threshold, in order of falling threshold. A recorded value takes the speed of
// the first row whose threshold is at or below it.
#ifndef ORV_METADATA_SHUTTER_TABLES_H_
#define ORV_METADATA_SHUTTER_TABLES_H_

#include <cstddef>
#include <cstdint>

namespace orv {

struct ShutterRow {
  uint32_t speed;
  uint32_t threshold;
};

struct ShutterTable {
  const ShutterRow* rows;
  size_t count;
};

// The table of SHUTTER_TABLE_TYPE `type`, or {null, 0} for an unknown type.
ShutterTable GetShutterTable(int type);

// The speed for `raw` in table `type`; 0 below the last threshold or for an
// unknown table.
uint32_t LookUpShutterSpeed(int type, uint32_t raw);

}  // namespace orv

#endif  // ORV_METADATA_SHUTTER_TABLES_H_
