// Processor tests: vendor and instruction-set extensions.
#ifndef ORV_CPU_JUDGMENT_H_
#define ORV_CPU_JUDGMENT_H_

#include <OrvExport.h>

enum CpuVender {
  CPU_VENDER_UNKNOWN = 0,
  CPU_VENDER_INTEL = 1,
  CPU_VENDER_AMD = 2,
  CPU_VENDER_TRANSMETA = 3,
  CPU_VENDER_CYRIX = 4,
};

class ORV_API COrvCpuJudgment {
 public:
  static bool IsCpuidSupported();
  static CpuVender GetVender();
  // Always 0: the model is not reported through this interface.
  static unsigned long GetModel();
  static bool IsCrusoe();
  // What the processor reports for SSE2 (not the result of the trial).
  static bool IsSupportSSE2();
};

#endif  // ORV_CPU_JUDGMENT_H_
