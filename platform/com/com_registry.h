// Object creation by class identifier, in place of a system-wide class store:
// an application (or a test) registers a factory for a class identifier, and
// CoCreateInstance finds it here. Nothing is looked up anywhere else, so a
// class that nobody registered is simply not there.
//
// The registry is the one table of this layer that the whole process shares,
// as a system's class table would be; it has its own lock, held only while the
// table is read or changed, never while a factory runs.
#ifndef ORV_PLATFORM_COM_REGISTRY_H_
#define ORV_PLATFORM_COM_REGISTRY_H_

#include <OrvPlatformTypes.h>

namespace orv {
namespace com {

bool IsEqualGuid(const GUID& a, const GUID& b);

// Makes an object of the registered class and answers the interface `iid` of
// it in `*object`, with one reference, or a failure HRESULT with `*object` null.
// `context` is what was given at registration.
typedef HRESULT (*ClassFactoryFunction)(const IID& iid, void** object, void* context);

// Registers `factory` for `clsid`. S_OK and a non-zero `*cookie` for
// RevokeClassFactory; E_POINTER for a null factory or cookie; CO_E_OBJISREG
// when the class is registered already.
HRESULT RegisterClassFactory(const CLSID& clsid, ClassFactoryFunction factory, void* context,
                             DWORD* cookie);
// S_OK, or CO_E_OBJNOTREG for a cookie that names no registration.
HRESULT RevokeClassFactory(DWORD cookie);

// In-process creation only. E_POINTER for a null `object`; otherwise `*object`
// is cleared first and the answer is CO_E_NOTINITIALIZED when the calling thread
// has not entered an apartment, CLASS_E_NOAGGREGATION for a non-null `outer`,
// REGDB_E_CLASSNOTREG when `clsContext` lacks CLSCTX_INPROC_SERVER or the class
// is not registered, or else the factory's own answer.
HRESULT CoCreateInstance(const CLSID& clsid, void* outer, DWORD clsContext, const IID& iid,
                         void** object);

// Registers for its own lifetime; for tests and for applications that host a
// class only while some object of theirs lives.
class ScopedClassRegistration {
 public:
  ScopedClassRegistration(const CLSID& clsid, ClassFactoryFunction factory, void* context);
  ~ScopedClassRegistration();
  ScopedClassRegistration(const ScopedClassRegistration&) = delete;
  ScopedClassRegistration& operator=(const ScopedClassRegistration&) = delete;
  HRESULT result() const { return result_; }

 private:
  DWORD cookie_ = 0;
  HRESULT result_;
};

}  // namespace com
}  // namespace orv

#endif  // ORV_PLATFORM_COM_REGISTRY_H_
