#include "platform/os/os_cpuid.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#define ORV_HOST_X86 1
#else
#define ORV_HOST_X86 0
#endif

namespace orv {
namespace os {

bool HasCpuid() {
#if ORV_HOST_X86
  // x86-64 always has it. (On 32-bit x86 the library would test EFLAGS bit 21;
  // the compiler's __get_cpuid_max does exactly that there.)
  return __get_cpuid_max(0, nullptr) != 0;
#else
  return false;
#endif
}

bool Cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegs* regs) {
#if ORV_HOST_X86
  if (!HasCpuid()) return false;
  __cpuid_count(leaf, subleaf, regs->eax, regs->ebx, regs->ecx, regs->edx);
  return true;
#else
  (void)leaf;
  (void)subleaf;
  (void)regs;
  return false;
#endif
}

uint64_t ReadXcr0() {
#if ORV_HOST_X86
  CpuidRegs regs{};
  if (!Cpuid(1, 0, &regs) || !(regs.ecx & (1u << 27))) return 0;  // OSXSAVE
  uint32_t lo, hi;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<uint64_t>(hi) << 32) | lo;
#else
  return 0;
#endif
}

}  // namespace os
}  // namespace orv
