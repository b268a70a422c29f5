#include <OrvMsgThread.h>

// Both notification threads forward a message by its param1: 1 calls Notify1,
// 2 calls Notify2, anything else calls nothing. The stop message is never
// forwarded. The result is always 0.

COrvRenderNotifyMsgThread::COrvRenderNotifyMsgThread(IOrvRenderNotify* notify) : notify_(notify) {}

COrvRenderNotifyMsgThread::~COrvRenderNotifyMsgThread() { StopThread(); }

void COrvRenderNotifyMsgThread::SetNotifyInterface(IOrvRenderNotify* notify) {
  notify_.store(notify);
}

long COrvRenderNotifyMsgThread::ThreadMessageProc(unsigned int message, unsigned long param1,
                                                  void* param2) {
  if (message == kStopMessage) return 0;
  IOrvRenderNotify* notify = notify_.load();
  if (!notify) return 0;
  if (param1 == 1) {
    notify->Notify1(message, param2);
  } else if (param1 == 2) {
    notify->Notify2(message, param2);
  }
  return 0;
}

COrvSceneChgNotifyMsgThread::COrvSceneChgNotifyMsgThread(IOrvSceneChangeNotify* notify)
    : notify_(notify) {}

COrvSceneChgNotifyMsgThread::~COrvSceneChgNotifyMsgThread() { StopThread(); }

void COrvSceneChgNotifyMsgThread::SetNotifyInterface(IOrvSceneChangeNotify* notify) {
  notify_.store(notify);
}

long COrvSceneChgNotifyMsgThread::ThreadMessageProc(unsigned int message, unsigned long param1,
                                                    void* param2) {
  if (message == kStopMessage) return 0;
  IOrvSceneChangeNotify* notify = notify_.load();
  if (!notify) return 0;
  if (param1 == 1) {
    notify->Notify1(message, param2);
  } else if (param1 == 2) {
    notify->Notify2(message);
  }
  return 0;
}
