#include "foundation/cpu_info.h"

#include <cstring>

#include "platform/os/os_cpuid.h"

namespace orv {
namespace {

struct ModelEntry {
  const char* vendor;
  int family;  // -1: any
  uint32_t modelLow, modelHigh;
  const char* name;
};

constexpr uint32_t kAny = 0xFFFFFFFF;

const ModelEntry kModelTable[] = {
    {"AuthenticAMD", 4, 0, kAny, "AMD Am486"},
    {"AuthenticAMD", 5, 0, 3, "AMD K5"},
    {"AuthenticAMD", 5, 6, 7, "AMD K6"},
    {"AuthenticAMD", 5, 8, 8, "AMD K6-2"},
    {"AuthenticAMD", 5, 9, 15, "AMD K6-3"},
    {"AuthenticAMD", 6, 0, kAny, "AMD ATHLON"},
    {"GenuineIntel", 4, 0, 1, "INTEL 486DX"},
    {"GenuineIntel", 4, 2, 2, "INTEL 486SX"},
    {"GenuineIntel", 4, 3, 3, "INTEL 486DX2"},
    {"GenuineIntel", 4, 4, 4, "INTEL 486SL"},
    {"GenuineIntel", 4, 5, 5, "INTEL 486SX2"},
    {"GenuineIntel", 4, 7, 7, "INTEL 486DX2E"},
    {"GenuineIntel", 4, 8, 8, "INTEL 486DX4"},
    {"GenuineIntel", 5, 1, 3, "INTEL Pentium"},
    {"GenuineIntel", 5, 4, 4, "INTEL Pentium-MMX"},
    {"GenuineIntel", 6, 1, 1, "INTEL Pentium-Pro"},
    {"GenuineIntel", 6, 3, 3, "INTEL Pentium-II"},
    {"GenuineIntel", 6, 5, 5, "INTEL Pentium-II"},
    {"GenuineIntel", 6, 6, 6, "INTEL Celeron"},
    {"GenuineIntel", 6, 7, 8, "INTEL Pentium-III"},
    {"GenuineIntel", 6, 10, 10, "INTEL Pentium-III"},
    {"GenuineIntel", 15, 0, 0, "INTEL Pentium-4"},
    {"CyrixInstead", -1, 0, kAny, "Cyrix"},
    {"CentaurHauls", -1, 0, kAny, "Centaur"},
};

// Register states the operating system must save for an extension to be usable.
constexpr uint64_t kXcr0X87 = 0x1;
constexpr uint64_t kXcr0Sse = 0x2;
constexpr uint64_t kXcr0Avx = 0x4;
constexpr uint64_t kXcr0Avx512 = 0xE0;

// Whether the operating system has enabled the state an extension needs. This
// stands in for trial execution under a fault guard: on x86-64 the SSE state is
// always enabled, and without XSAVE (XCR0 reads 0) the classic states are.
bool OsEnables(uint32_t bit, uint64_t xcr0) {
  if (xcr0 == 0) return true;
  if (bit == kCpuMmx || bit == kCpu3dNow) return (xcr0 & kXcr0X87) != 0;
  return (xcr0 & kXcr0Sse) != 0;
}

}  // namespace

const char* CpuModelName(const char* vendor, uint32_t family, uint32_t model) {
  for (const ModelEntry& e : kModelTable) {
    if (std::strncmp(vendor, e.vendor, 12) != 0) continue;
    if (e.family >= 0 && static_cast<uint32_t>(e.family) != family) continue;
    if (e.modelHigh != kAny && (model < e.modelLow || model > e.modelHigh)) continue;
    return e.name;
  }
  return "Unknown";
}

uint32_t DetectCpuInfo(CpuInfo* info) {
  os::CpuidRegs leaf0{};
  if (!os::Cpuid(0, 0, &leaf0)) return 0;
  CpuInfo result{};
  os::CpuidRegs leaf1{};
  if (leaf0.eax >= 1) os::Cpuid(1, 0, &leaf1);
  os::CpuidRegs ext0{}, ext1{};
  os::Cpuid(0x80000000u, 0, &ext0);
  if (ext0.eax >= 0x80000001u) os::Cpuid(0x80000001u, 0, &ext1);
  const uint64_t xcr0 = os::ReadXcr0();

  struct FeatureSource {
    uint32_t bit;
    uint32_t reg;
    uint32_t mask;
  };
  const FeatureSource sources[] = {
      {kCpuMmx, leaf1.edx, 1u << 23},   {kCpuSse, leaf1.edx, 1u << 25},
      {kCpuSse2, leaf1.edx, 1u << 26},  {kCpu3dNow, ext1.edx, 1u << 31},
      {kCpuSse3, leaf1.ecx, 1u << 0},   {kCpuSsse3, leaf1.ecx, 1u << 9},
      {kCpuSse41, leaf1.ecx, 1u << 19}, {kCpuSse42, leaf1.ecx, 1u << 20},
  };
  for (const FeatureSource& s : sources) {
    if (!(s.reg & s.mask)) continue;
    result.feature |= s.bit;
    if (OsEnables(s.bit, xcr0)) result.osSupport |= s.bit;
  }

  const uint32_t signature = leaf1.eax;
  result.family = (signature >> 8) & 0xF;
  if (result.family == 15) result.family = (((signature >> 20) & 0xFF) << 4) | 15;
  result.model = (signature >> 4) & 0xF;
  result.stepping = signature & 0xF;

  std::memcpy(result.vendorName + 0, &leaf0.ebx, 4);
  std::memcpy(result.vendorName + 4, &leaf0.edx, 4);
  std::memcpy(result.vendorName + 8, &leaf0.ecx, 4);
  result.vendorName[12] = '\0';
  const char* name = CpuModelName(result.vendorName, result.family, result.model);
  std::strncpy(result.modelName, name, sizeof(result.modelName) - 1);
  result.checks = 255;
  *info = result;
  return result.feature;
}

const CpuInfo& ProcessCpuInfo() {
  static const CpuInfo info = [] {
    CpuInfo i{};
    DetectCpuInfo(&i);
    return i;
  }();
  return info;
}

SimdLevel DetectSimdLevel() {
#if ORV_X86_SIMD
  static const SimdLevel level = [] {
    const CpuInfo& info = ProcessCpuInfo();
    if (!(info.osSupport & kCpuSse2)) return SimdLevel::kPlain;
    SimdLevel best = SimdLevel::kSse2;
    if (info.osSupport & kCpuSsse3) best = SimdLevel::kSsse3;
    if ((info.osSupport & kCpuSse41) && best == SimdLevel::kSsse3) best = SimdLevel::kSse41;
    if (best != SimdLevel::kSse41) return best;
    os::CpuidRegs leaf1{}, leaf7{}, leaf0{};
    os::Cpuid(0, 0, &leaf0);
    os::Cpuid(1, 0, &leaf1);
    if (leaf0.eax >= 7) os::Cpuid(7, 0, &leaf7);
    const uint64_t xcr0 = os::ReadXcr0();
    const bool avx = (leaf1.ecx & (1u << 28)) && (leaf1.ecx & (1u << 27)) &&
                     (xcr0 & (kXcr0Sse | kXcr0Avx)) == (kXcr0Sse | kXcr0Avx);
    const bool avx2 = avx && (leaf7.ebx & (1u << 5)) && (leaf1.ecx & (1u << 12));  // AVX2, FMA
    if (!avx2) return best;
    best = SimdLevel::kAvx2;
    const uint32_t avx512Bits = (1u << 16) | (1u << 17) | (1u << 30) | (1u << 31);  // F DQ BW VL
    if ((leaf7.ebx & avx512Bits) == avx512Bits && (xcr0 & kXcr0Avx512) == kXcr0Avx512) {
      best = SimdLevel::kAvx512;
    }
    return best;
  }();
  return level;
#else
  return SimdLevel::kPlain;
#endif
}

}  // namespace orv
