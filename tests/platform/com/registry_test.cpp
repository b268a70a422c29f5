#include <gtest/gtest.h>

#include <thread>

#include "platform/com/com_apartment.h"
#include "platform/com/com_registry.h"

namespace {

using namespace orv::com;

const CLSID kClass = {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}};
const CLSID kOtherClass = {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 9}};
const IID kWanted = {0xAABBCCDD, 1, 2, {0, 0, 0, 0, 0, 0, 0, 1}};

struct Made {
  int objects = 0;
  int value = 0;
};

HRESULT MakeInt(const IID& iid, void** object, void* context) {
  if (!IsEqualGuid(iid, kWanted)) return E_NOINTERFACE;
  Made* made = static_cast<Made*>(context);
  ++made->objects;
  *object = &made->value;
  return S_OK;
}

HRESULT FailAfterWriting(const IID&, void** object, void*) {
  *object = reinterpret_cast<void*>(0x1);  // a careless factory
  return E_OUTOFMEMORY;
}

// Runs `body` on a fresh thread inside a single-threaded apartment.
template <typename Body>
void InApartment(Body body) {
  std::thread([&] {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    body();
    CoUninitialize();
  }).join();
}

TEST(ComRegistry, RegisteredFactoryMakesObjectsUntilRevoked) {
  Made made;
  DWORD cookie = 0;
  ASSERT_EQ(RegisterClassFactory(kClass, &MakeInt, &made, &cookie), S_OK);
  EXPECT_NE(cookie, 0u);
  DWORD second = 0;
  EXPECT_EQ(RegisterClassFactory(kClass, &MakeInt, &made, &second), CO_E_OBJISREG);
  InApartment([&] {
    void* object = nullptr;
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kWanted, &object), S_OK);
    EXPECT_EQ(object, &made.value);
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kClass, &object),
              E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CoCreateInstance(kOtherClass, nullptr, CLSCTX_INPROC_SERVER, kWanted, &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_LOCAL_SERVER, kWanted, &object),
              REGDB_E_CLASSNOTREG);
    int outer = 0;
    EXPECT_EQ(CoCreateInstance(kClass, &outer, CLSCTX_INPROC_SERVER, kWanted, &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kWanted, nullptr), E_POINTER);
  });
  EXPECT_EQ(made.objects, 1);
  EXPECT_EQ(RevokeClassFactory(cookie), S_OK);
  EXPECT_EQ(RevokeClassFactory(cookie), CO_E_OBJNOTREG);
  InApartment([&] {
    void* object = &made;
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kWanted, &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
  });
}

TEST(ComRegistry, CreationNeedsAnApartment) {
  Made made;
  ScopedClassRegistration registration(kClass, &MakeInt, &made);
  ASSERT_EQ(registration.result(), S_OK);
  std::thread([&] {
    void* object = &made;
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kWanted, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(object, nullptr);
  }).join();
  EXPECT_EQ(made.objects, 0);
}

TEST(ComRegistry, FailedFactoryLeavesNoObject) {
  ScopedClassRegistration registration(kOtherClass, &FailAfterWriting, nullptr);
  ASSERT_EQ(registration.result(), S_OK);
  InApartment([&] {
    void* object = nullptr;
    EXPECT_EQ(CoCreateInstance(kOtherClass, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                               kWanted, &object),
              E_OUTOFMEMORY);
    EXPECT_EQ(object, nullptr);
  });
  DWORD cookie = 5;
  EXPECT_EQ(RegisterClassFactory(kClass, nullptr, nullptr, &cookie), E_POINTER);
  EXPECT_EQ(RegisterClassFactory(kClass, &FailAfterWriting, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(cookie, 5u);
}

}  // namespace
