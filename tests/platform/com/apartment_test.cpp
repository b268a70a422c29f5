#include <gtest/gtest.h>

#include <thread>

#include "platform/com/com_apartment.h"

namespace {

using namespace orv::com;

TEST(ComApartment, FirstCallEntersLaterCallsCount) {
  std::thread([] {
    EXPECT_EQ(CurrentApartment(), ApartmentKind::kNone);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_EQ(CurrentApartment(), ApartmentKind::kSingleThreaded);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE), S_FALSE);
    EXPECT_EQ(CurrentApartmentCount(), 2u);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    EXPECT_EQ(CurrentApartmentCount(), 2u);  // a refused call does not count
    CoUninitialize();
    EXPECT_EQ(CurrentApartment(), ApartmentKind::kSingleThreaded);
    CoUninitialize();
    EXPECT_EQ(CurrentApartment(), ApartmentKind::kNone);
    CoUninitialize();  // one too many: nothing happens
    EXPECT_EQ(CurrentApartmentCount(), 0u);
    // Once left, the thread may enter the other kind.
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(CurrentApartment(), ApartmentKind::kMultiThreaded);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
  }).join();
}

TEST(ComApartment, ThreadsHaveTheirOwnApartments) {
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  std::thread([] {
    EXPECT_EQ(CurrentApartment(), ApartmentKind::kNone);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    CoUninitialize();
  }).join();
  EXPECT_EQ(CurrentApartment(), ApartmentKind::kMultiThreaded);
  CoUninitialize();
  EXPECT_EQ(CurrentApartment(), ApartmentKind::kNone);
}

TEST(ComApartment, BadArgumentsAreRefusedWithoutCounting) {
  int reserved = 0;
  EXPECT_EQ(CoInitializeEx(&reserved, COINIT_MULTITHREADED), E_INVALIDARG);
  EXPECT_EQ(CoInitializeEx(nullptr, 0x100), E_INVALIDARG);
  EXPECT_EQ(CurrentApartmentCount(), 0u);
  EXPECT_EQ(CurrentApartment(), ApartmentKind::kNone);
}

}  // namespace
