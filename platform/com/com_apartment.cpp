#include "platform/com/com_apartment.h"

namespace orv {
namespace com {
namespace {

struct Apartment {
  ApartmentKind kind = ApartmentKind::kNone;
  unsigned count = 0;
};

thread_local Apartment t_apartment;

constexpr DWORD kKnownFlags =
    COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE | COINIT_SPEED_OVER_MEMORY;

}  // namespace

HRESULT CoInitializeEx(void* reserved, DWORD coInit) {
  if (reserved != nullptr || (coInit & ~kKnownFlags) != 0) return E_INVALIDARG;
  const ApartmentKind wanted = (coInit & COINIT_APARTMENTTHREADED) != 0
                                   ? ApartmentKind::kSingleThreaded
                                   : ApartmentKind::kMultiThreaded;
  Apartment& apartment = t_apartment;
  if (apartment.count == 0) {
    apartment.kind = wanted;
    apartment.count = 1;
    return S_OK;
  }
  if (apartment.kind != wanted) return RPC_E_CHANGED_MODE;
  ++apartment.count;
  return S_FALSE;
}

void CoUninitialize() {
  Apartment& apartment = t_apartment;
  if (apartment.count == 0) return;
  if (--apartment.count == 0) apartment.kind = ApartmentKind::kNone;
}

ApartmentKind CurrentApartment() { return t_apartment.kind; }
unsigned CurrentApartmentCount() { return t_apartment.count; }

}  // namespace com
}  // namespace orv
