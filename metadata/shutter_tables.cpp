#include "metadata/shutter_tables.h"

namespace orv {
namespace {

constexpr ShutterRow kTable0[] = {
    {2, 8400},  {3, 5244}, {4, 4200}, {6, 2622}, {8, 2100}, {12, 1311}, {15, 1050},
    {24, 655},  {30, 525}, {40, 393}, {48, 327}, {60, 262}, {90, 172},  {100, 157},
    {125, 122}, {180, 86}, {250, 61}, {350, 43}, {500, 30}, {725, 21},  {1000, 15},
    {1500, 10}, {2000, 7}, {3000, 5}, {4000, 3}, {6000, 2}, {10000, 1}};

constexpr ShutterRow kTable2[] = {
    {2, 16858}, {3, 11238}, {4, 8429},  {6, 5619}, {8, 4214}, {12, 2809}, {15, 2247},
    {24, 1404}, {30, 1123}, {40, 842},  {48, 702}, {60, 561}, {90, 374},  {100, 337},
    {125, 269}, {180, 187}, {250, 134}, {350, 96}, {500, 67}, {725, 46},  {1000, 33},
    {1500, 22}, {2000, 16}, {3000, 11}, {4000, 8}, {6000, 5}, {10000, 3}};

constexpr ShutterRow kTable1[] = {
    {2, 10000}, {3, 5000},  {6, 2500},  {12, 1250}, {25, 625}, {50, 312}, {60, 262},
    {100, 156}, {120, 130}, {150, 102}, {215, 72},  {300, 51}, {425, 36}, {600, 25},
    {1000, 15}, {1250, 12}, {1750, 8},  {2500, 6},  {3500, 4}, {6000, 2}, {10000, 1}};

constexpr ShutterRow kTable3[] = {
    {2, 14062}, {3, 9375},  {6, 4687},  {12, 2343}, {25, 1125}, {50, 562}, {60, 468},
    {100, 281}, {120, 234}, {150, 187}, {215, 130}, {300, 93},  {425, 66}, {600, 46},
    {1000, 28}, {1250, 22}, {1750, 16}, {2500, 11}, {3500, 8},  {6000, 4}, {10000, 2}};

template <size_t N>
constexpr ShutterTable Table(const ShutterRow (&rows)[N]) {
  return ShutterTable{rows, N};
}

}  // namespace

ShutterTable GetShutterTable(int type) {
  switch (type) {
    case 0:
      return Table(kTable0);
    case 1:
      return Table(kTable1);
    case 2:
      return Table(kTable2);
    case 3:
      return Table(kTable3);
    default:
      return ShutterTable{nullptr, 0};
  }
}

uint32_t LookUpShutterSpeed(int type, uint32_t raw) {
  const ShutterTable table = GetShutterTable(type);
  for (size_t i = 0; i < table.count; ++i) {
    if (table.rows[i].threshold <= raw) return table.rows[i].speed;
  }
  return 0;
}

}  // namespace orv
