// A small PNG writer: 8-bit RGB, no compression (stored deflate blocks), so
// that the converter needs no library beyond OrvUtility.
#ifndef ORV_TOOLS_ORV_CONVERT_PNG_H_
#define ORV_TOOLS_ORV_CONVERT_PNG_H_

#include <cstdint>
#include <string>
#include <vector>

namespace orvconvert {

// The bytes of a PNG file of `width` x `height` pixels, `rgb` holding R G B
// per pixel, top line first, lines packed.
std::vector<uint8_t> EncodePng(const std::vector<uint8_t>& rgb, uint32_t width, uint32_t height);

// CRC-32 (as PNG and zlib use it) and Adler-32, exposed for the tests.
uint32_t Crc32(const uint8_t* data, size_t size, uint32_t crc = 0);
uint32_t Adler32(const uint8_t* data, size_t size);

}  // namespace orvconvert

#endif  // ORV_TOOLS_ORV_CONVERT_PNG_H_
