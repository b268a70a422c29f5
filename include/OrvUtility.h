// OrvUtility: the whole public interface. An application needs only this header.
#ifndef ORV_UTILITY_H_
#define ORV_UTILITY_H_

#include <OrvExport.h>
#include <OrvPlatformTypes.h>

// Foundation
#include <COrvCpuJudgment.h>
#include <COrvLoadModule.h>
#include <OrvLock.h>
#include <OrvMemory.h>
#include <OrvStrUtil.h>
#include <STrace.h>

// Pictures
#include <OrvImage.h>

// Audio
#include <OrvAudioConverter.h>

#endif  // ORV_UTILITY_H_
