#include <COrvCpuJudgment.h>

#include <cstring>

#include "foundation/cpu_info.h"
#include "platform/os/os_cpuid.h"

bool COrvCpuJudgment::IsCpuidSupported() { return orv::os::HasCpuid(); }

CpuVender COrvCpuJudgment::GetVender() {
  orv::os::CpuidRegs regs{};
  if (!orv::os::Cpuid(0, 0, &regs)) return CPU_VENDER_UNKNOWN;
  char vendor[13];
  std::memcpy(vendor + 0, &regs.ebx, 4);
  std::memcpy(vendor + 4, &regs.edx, 4);
  std::memcpy(vendor + 8, &regs.ecx, 4);
  vendor[12] = '\0';
  if (std::strcmp(vendor, "GenuineIntel") == 0) return CPU_VENDER_INTEL;
  if (std::strcmp(vendor, "AuthenticAMD") == 0) return CPU_VENDER_AMD;
  if (std::strcmp(vendor, "GenuineTMx86") == 0) return CPU_VENDER_TRANSMETA;
  if (std::strcmp(vendor, "CyrixInstead") == 0) return CPU_VENDER_CYRIX;
  return CPU_VENDER_UNKNOWN;
}

unsigned long COrvCpuJudgment::GetModel() { return 0; }

bool COrvCpuJudgment::IsCrusoe() { return GetVender() == CPU_VENDER_TRANSMETA; }

bool COrvCpuJudgment::IsSupportSSE2() {
  // The detection is made once per process; every answer stays the same.
  return (orv::ProcessCpuInfo().feature & orv::kCpuSse2) != 0;
}
