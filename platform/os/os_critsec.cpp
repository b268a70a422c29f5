#include "platform/os/os_critsec.h"

namespace orv {
namespace os {

void InitializeCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&section->mutex, &attr);
  pthread_mutexattr_destroy(&attr);
}

void DeleteCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_destroy(&section->mutex); }

void EnterCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_lock(&section->mutex); }

void LeaveCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(&section->mutex); }

}  // namespace os
}  // namespace orv
