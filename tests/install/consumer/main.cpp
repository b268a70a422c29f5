// A program built against the installed library: it must find the header and
// the library and run.
#include <OrvUtility.h>

#include <cstdio>

int main() {
  int step = 0;
  const unsigned long size =
      OrvImage::GetGenericSize(OrvImage::CF_YUV420, 720, 480, &step, nullptr);
  OrvMemory memory;
  void* block = nullptr;
  if (!memory.Initialize(&block, static_cast<unsigned int>(size), 16) || block == nullptr) return 1;
  OrvImage::ClearPicture(static_cast<unsigned char*>(block), OrvImage::CF_YUV420, 720, 480, step,
                         false);
  const unsigned char* y = static_cast<unsigned char*>(block);
  if (size != 518400 || step != 720 || y[0] != 16 || y[size - 1] != 127) return 2;
  std::printf("ok\n");
  return 0;
}
