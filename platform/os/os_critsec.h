// Critical sections over recursive pthread mutexes: the owning thread may enter
// again, and must leave as often as it entered.
#ifndef ORV_PLATFORM_OS_CRITSEC_H_
#define ORV_PLATFORM_OS_CRITSEC_H_

#include <OrvPlatformTypes.h>

namespace orv {
namespace os {

void InitializeCriticalSection(CRITICAL_SECTION* section);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_CRITSEC_H_
