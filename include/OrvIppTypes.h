// The size and rectangle records that the resizers pass by value, with the
// layout of the image primitives they stand on. They live in orv::ipp so they
// never clash with another definition of the same names in a program; OrvImage
// names them without the namespace.
#ifndef ORV_IPP_TYPES_H_
#define ORV_IPP_TYPES_H_

namespace orv {
namespace ipp {

struct IppiSize {
  int width;
  int height;
};

struct IppiRect {
  int x;
  int y;
  int width;
  int height;
};

struct IppiPoint {
  int x;
  int y;
};

}  // namespace ipp
}  // namespace orv

#endif  // ORV_IPP_TYPES_H_
