// Processor tests, module paths, number text and the trace.
#include <COrvCpuJudgment.h>
#include <COrvLoadModule.h>
#include <OrvStrUtil.h>
#include <STrace.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "foundation/cpu_info.h"
#include "platform/os/os_cpuid.h"

namespace {

TEST(CpuJudgment, AnswersAgreeWithDetection) {
  orv::CpuInfo info;
  std::memset(&info, 0xAB, sizeof(info));
  const uint32_t feature = orv::DetectCpuInfo(&info);
  EXPECT_EQ(COrvCpuJudgment::GetModel(), 0u);
  if (!COrvCpuJudgment::IsCpuidSupported()) {
    EXPECT_EQ(feature, 0u);
    EXPECT_EQ(COrvCpuJudgment::GetVender(), CPU_VENDER_UNKNOWN);
    EXPECT_FALSE(COrvCpuJudgment::IsSupportSSE2());
    return;
  }
  EXPECT_EQ(info.checks, 255u);
  EXPECT_EQ(info.feature, feature);
  EXPECT_EQ((info.osSupport & ~info.feature), 0u) << "only reported features can pass";
  EXPECT_EQ(info.vendorName[12], '\0');
  EXPECT_EQ(COrvCpuJudgment::IsSupportSSE2(), (feature & orv::kCpuSse2) != 0);
  const CpuVender vendor = COrvCpuJudgment::GetVender();
  if (std::strcmp(info.vendorName, "GenuineIntel") == 0) {
    EXPECT_EQ(vendor, CPU_VENDER_INTEL);
  }
  if (std::strcmp(info.vendorName, "AuthenticAMD") == 0) {
    EXPECT_EQ(vendor, CPU_VENDER_AMD);
  }
  EXPECT_FALSE(COrvCpuJudgment::IsCrusoe() && vendor != CPU_VENDER_TRANSMETA);
#if defined(__x86_64__)
  EXPECT_TRUE(feature & orv::kCpuSse2);  // every x86-64 processor has it
#endif
}

TEST(CpuJudgment, ModelNameTable) {
  EXPECT_STREQ(orv::CpuModelName("AuthenticAMD", 5, 8), "AMD K6-2");
  EXPECT_STREQ(orv::CpuModelName("AuthenticAMD", 6, 99), "AMD ATHLON");
  EXPECT_STREQ(orv::CpuModelName("GenuineIntel", 6, 5), "INTEL Pentium-II");
  EXPECT_STREQ(orv::CpuModelName("GenuineIntel", 6, 9), "Unknown");
  EXPECT_STREQ(orv::CpuModelName("GenuineIntel", 15, 0), "INTEL Pentium-4");
  EXPECT_STREQ(orv::CpuModelName("GenuineIntel", 4, 6), "Unknown");
  EXPECT_STREQ(orv::CpuModelName("CyrixInstead", 9, 9), "Cyrix");
  EXPECT_STREQ(orv::CpuModelName("CentaurHauls", 6, 0), "Centaur");
  EXPECT_STREQ(orv::CpuModelName("HygonGenuine", 24, 1), "Unknown");
}

TEST(CpuJudgment, SimdLevelIsStableAndWithinBuild) {
  const orv::SimdLevel level = orv::DetectSimdLevel();
  EXPECT_EQ(orv::DetectSimdLevel(), level);
#if !ORV_X86_SIMD
  EXPECT_EQ(level, orv::SimdLevel::kPlain);
#endif
}

TEST(LoadModule, PathBesideModule) {
  wchar_t buffer[4096];
  // An address inside this test program: its directory plus the name.
  ASSERT_TRUE(COrvLoadModule::GetLoadModuleName(
      buffer, 4096, reinterpret_cast<HINSTANCE>(&COrvLoadModule::GetLoadModuleName), L"x.dat"));
  const std::wstring path(buffer);
  EXPECT_EQ(path.front(), L'/');
  ASSERT_GE(path.size(), 6u);
  EXPECT_EQ(path.substr(path.size() - 6), L"/x.dat");

  ASSERT_TRUE(COrvLoadModule::GetLoadModuleName(buffer, 4096, nullptr, L"y"));
  EXPECT_EQ(std::wstring(buffer).back(), L'y');
}

TEST(LoadModule, RefusalsLeaveOrEmptyBuffer) {
  wchar_t buffer[8] = L"keep";
  int local = 0;  // a stack address is in no module
  EXPECT_FALSE(COrvLoadModule::GetLoadModuleName(buffer, 8, &local, L"x"));
  EXPECT_STREQ(buffer, L"keep");
  EXPECT_FALSE(COrvLoadModule::GetLoadModuleName(nullptr, 8, nullptr, L"x"));
  // Too small: emptied, false.
  EXPECT_FALSE(COrvLoadModule::GetLoadModuleName(buffer, 2, nullptr, L"name.txt"));
  EXPECT_STREQ(buffer, L"");
}

std::wstring Ftow(float v, int size = 64) {
  wchar_t buffer[64];
  OrvStrUtil::ftow(v, buffer, size);
  return buffer;
}

TEST(StrUtil, FtowFormat) {
  EXPECT_EQ(Ftow(1.5f), L"1.500000");
  EXPECT_EQ(Ftow(-0.25f), L"-0.250000");
  EXPECT_EQ(Ftow(0.0f), L"-0.000000");
  EXPECT_EQ(Ftow(std::nanf("")), L"-0.000000");
  EXPECT_EQ(Ftow(12.345678f), L"12.345678");
  EXPECT_EQ(Ftow(5000.0f), L"2147.483647");  // saturates beyond the 32-bit range
  EXPECT_EQ(Ftow(1.5f, 4), L"");             // does not fit: emptied
}

TEST(StrUtil, WtofReadsFixedText) {
  wchar_t a[] = L"12.5", b[] = L"-0.25", c[] = L"1a2.5", d[] = L".", e[] = L"3.1x5";
  EXPECT_FLOAT_EQ(OrvStrUtil::wtof(a), 12.5f);
  EXPECT_FLOAT_EQ(OrvStrUtil::wtof(b), -0.25f);
  EXPECT_FLOAT_EQ(OrvStrUtil::wtof(c), 12.5f);
  EXPECT_FLOAT_EQ(OrvStrUtil::wtof(d), 0.0f);
  // A non-digit in the fraction still moves the scale: 3.1 + 5 x 0.001.
  EXPECT_FLOAT_EQ(OrvStrUtil::wtof(e), 3.105f);
  EXPECT_FLOAT_EQ(OrvStrUtil::wtof(nullptr), 0.0f);
}

TEST(StrUtil, RoundTripToSixDecimals) {
  for (float v : {0.5f, 1.234567f, -7.654321f, 100.000001f, -2000.5f, 0.000001f}) {
    wchar_t buffer[32];
    OrvStrUtil::ftow(v, buffer, 32);
    EXPECT_NEAR(OrvStrUtil::wtof(buffer), v, 2e-6 * (1.0 + std::fabs(v))) << v;
  }
}

TEST(Trace, LongAndOrdinaryLinesDoNotFail) {
  STrace(L"trace %d %ls", 42, L"text");
  std::wstring longText(5000, L'x');
  STrace(L"%ls", longText.c_str());
  STrace(nullptr);
}

}  // namespace
