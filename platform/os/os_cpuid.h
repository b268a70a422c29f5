// The processor's identification instruction. On hosts without it every query
// answers "not available", and the library's detection reports no extensions.
#ifndef ORV_PLATFORM_OS_CPUID_H_
#define ORV_PLATFORM_OS_CPUID_H_

#include <cstdint>

namespace orv {
namespace os {

struct CpuidRegs {
  uint32_t eax, ebx, ecx, edx;
};

// True when the host has the instruction (always on x86-64).
bool HasCpuid();
// Runs leaf `leaf` (sub-leaf `subleaf`); false without the instruction.
bool Cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegs* regs);
// The extended control register 0 (XGETBV), telling which register states the
// operating system saves; 0 where the processor or the host lacks it.
uint64_t ReadXcr0();

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_CPUID_H_
