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

// Threads
#include <OrvMsgThread.h>

// Camera metadata
#include <OrvCameraInfo.h>

// Files
#include <COrvFile.h>
#include <IOrvFile.h>

// Audio
#include <OrvAudioConverter.h>

#endif  // ORV_UTILITY_H_
