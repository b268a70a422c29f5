#include "platform/com/com_registry.h"

#include <cstring>
#include <mutex>
#include <vector>

#include "platform/com/com_apartment.h"

namespace orv {
namespace com {
namespace {

struct Registration {
  CLSID clsid;
  ClassFactoryFunction factory;
  void* context;
  DWORD cookie;
};

class Registry {
 public:
  HRESULT Add(const CLSID& clsid, ClassFactoryFunction factory, void* context, DWORD* cookie) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const Registration& r : entries_) {
      if (IsEqualGuid(r.clsid, clsid)) return CO_E_OBJISREG;
    }
    if (++lastCookie_ == 0) ++lastCookie_;
    entries_.push_back(Registration{clsid, factory, context, lastCookie_});
    *cookie = lastCookie_;
    return S_OK;
  }

  HRESULT Remove(DWORD cookie) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = entries_.begin(); it != entries_.end(); ++it) {
      if (it->cookie == cookie) {
        entries_.erase(it);
        return S_OK;
      }
    }
    return CO_E_OBJNOTREG;
  }

  bool Find(const CLSID& clsid, Registration* found) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const Registration& r : entries_) {
      if (IsEqualGuid(r.clsid, clsid)) {
        *found = r;
        return true;
      }
    }
    return false;
  }

 private:
  std::mutex mutex_;
  std::vector<Registration> entries_;
  DWORD lastCookie_ = 0;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

bool IsEqualGuid(const GUID& a, const GUID& b) {
  return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 &&
         std::memcmp(a.Data4, b.Data4, sizeof(a.Data4)) == 0;
}

HRESULT RegisterClassFactory(const CLSID& clsid, ClassFactoryFunction factory, void* context,
                             DWORD* cookie) {
  if (!factory || !cookie) return E_POINTER;
  return TheRegistry().Add(clsid, factory, context, cookie);
}

HRESULT RevokeClassFactory(DWORD cookie) { return TheRegistry().Remove(cookie); }

HRESULT CoCreateInstance(const CLSID& clsid, void* outer, DWORD clsContext, const IID& iid,
                         void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (CurrentApartment() == ApartmentKind::kNone) return CO_E_NOTINITIALIZED;
  if (outer) return CLASS_E_NOAGGREGATION;
  if ((clsContext & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
  Registration found;
  if (!TheRegistry().Find(clsid, &found)) return REGDB_E_CLASSNOTREG;
  const HRESULT hr = found.factory(iid, object, found.context);
  if (FAILED(hr)) *object = nullptr;
  return hr;
}

ScopedClassRegistration::ScopedClassRegistration(const CLSID& clsid, ClassFactoryFunction factory,
                                                 void* context)
    : result_(RegisterClassFactory(clsid, factory, context, &cookie_)) {}

ScopedClassRegistration::~ScopedClassRegistration() {
  if (SUCCEEDED(result_)) RevokeClassFactory(cookie_);
}

}  // namespace com
}  // namespace orv
