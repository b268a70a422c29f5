// Processor detection shared by the whole library.
//
// DetectCpuInfo fills the record that the processor tests of COrvCpuJudgment
// answer from. SimdLevel is how kernels choose their processor forms: detected
// once, then passed explicitly, so that a test can ask for any lower level.
#ifndef ORV_FOUNDATION_CPU_INFO_H_
#define ORV_FOUNDATION_CPU_INFO_H_

#include <cstdint>

namespace orv {

enum CpuFeatureBit : uint32_t {
  kCpuMmx = 0x01,
  kCpuSse = 0x02,
  kCpuSse2 = 0x04,
  kCpu3dNow = 0x08,
  kCpuSse3 = 0x10,
  kCpuSsse3 = 0x20,
  kCpuSse41 = 0x40,
  kCpuSse42 = 0x80,
};

struct CpuInfo {
  char vendorName[13];
  char modelName[30];
  uint32_t family;
  uint32_t model;
  uint32_t stepping;
  uint32_t feature;    // what the processor reports
  uint32_t osSupport;  // reported and enabled by the operating system
  uint32_t checks;     // always 255 once filled
};

// Fills `info` (zeroed first) and returns its `feature` word; 0 and `info`
// untouched on a host without the identification instruction.
uint32_t DetectCpuInfo(CpuInfo* info);

// The detection of this process, computed once.
const CpuInfo& ProcessCpuInfo();

// The model name for a vendor string, family and model ("Unknown" if none fits).
const char* CpuModelName(const char* vendor, uint32_t family, uint32_t model);

// Instruction-set levels of the kernels' processor forms, in rising order.
enum class SimdLevel : int {
  kPlain = 0,
  kSse2 = 1,
  kSsse3 = 2,
  kSse41 = 3,
  kAvx2 = 4,
  kAvx512 = 5
};

// The highest level that this build has forms for and that this processor and
// its operating system support. kPlain in a build without x86 SIMD.
SimdLevel DetectSimdLevel();

}  // namespace orv

#endif  // ORV_FOUNDATION_CPU_INFO_H_
