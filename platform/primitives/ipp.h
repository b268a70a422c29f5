// The image primitives of the picture engine: one include for all of them.
// Each family header states the exact behaviour of its functions.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_H_

#include "platform/primitives/ipp_alpha.h"
#include "platform/primitives/ipp_arith.h"
#include "platform/primitives/ipp_color.h"
#include "platform/primitives/ipp_copy.h"
#include "platform/primitives/ipp_memory.h"
#include "platform/primitives/ipp_mirror.h"
#include "platform/primitives/ipp_resize.h"
#include "platform/primitives/ipp_rotate.h"
#include "platform/primitives/ipp_types.h"

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_H_
