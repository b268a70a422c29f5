// Apartment calls of the component model, kept as per-thread counters: the
// library has no object broker behind them, but code that hosts a component
// object keeps the usual discipline of entering an apartment on the thread
// that uses it and leaving it as often as it entered.
//
// Per thread: the first successful CoInitializeEx chooses the apartment kind
// (single-threaded when COINIT_APARTMENTTHREADED is set, multi-threaded
// otherwise) and answers S_OK; each further call of the same kind answers
// S_FALSE and counts; a call of the other kind answers RPC_E_CHANGED_MODE and
// does not count. CoUninitialize undoes one counted call; the thread leaves the
// apartment when the count comes back to 0, and extra calls do nothing.
#ifndef ORV_PLATFORM_COM_APARTMENT_H_
#define ORV_PLATFORM_COM_APARTMENT_H_

#include <OrvPlatformTypes.h>

namespace orv {
namespace com {

enum class ApartmentKind { kNone, kSingleThreaded, kMultiThreaded };

// `reserved` must be null (E_INVALIDARG otherwise). Flags other than
// COINIT_APARTMENTTHREADED (COINIT_DISABLE_OLE1DDE, COINIT_SPEED_OVER_MEMORY)
// are accepted and have no effect; unknown bits answer E_INVALIDARG.
HRESULT CoInitializeEx(void* reserved, DWORD coInit);
void CoUninitialize();

// The calling thread's apartment and how many counted calls keep it.
ApartmentKind CurrentApartment();
unsigned CurrentApartmentCount();

}  // namespace com
}  // namespace orv

#endif  // ORV_PLATFORM_COM_APARTMENT_H_
