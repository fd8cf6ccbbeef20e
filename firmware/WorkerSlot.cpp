#include "firmware/WorkerSlot.h"

#include "firmware/ImageWriters.h"

WorkerSlot gIspImageSlot(IspImageThread);
WorkerSlot gAudioImageSlot(AudioImageThread);
WorkerSlot gUsbAppImageSlot(UsbAppImageThread);
WorkerSlot gUsbAppBlImageSlot(UsbAppBlImageThread);

int WorkerSlot::start() {
    doneFlag.store(0, std::memory_order_release);
    int id = 0;
    if (CmtScheduleThreadPoolFunctionAdv(DEFAULT_THREAD_POOL_HANDLE, function, nullptr, THREAD_PRIORITY_HIGHEST,
                                         nullptr, 0, nullptr, 0, &id) < 0) {
        // Nothing will ever set the flag: let the waiting loop go on at once.
        functionId = 0;
        finish();
        return 0;
    }
    functionId = id;
    return 1;
}

void WorkerSlot::stop() {
    int status = 0;
    if (functionId &&
        CmtGetThreadPoolFunctionAttribute(DEFAULT_THREAD_POOL_HANDLE, functionId, ATTR_TP_FUNCTION_EXECUTION_STATUS,
                                          &status) >= 0) {
        if (status != kCmtThreadFunctionComplete) {
            finish();
            CmtWaitForThreadPoolFunctionCompletion(DEFAULT_THREAD_POOL_HANDLE, functionId,
                                                   OPT_TP_PROCESS_EVENTS_WHILE_WAITING);
        }
    }
    // The pool keeps a finished function until its identifier is released.
    if (functionId) CmtReleaseThreadPoolFunctionID(DEFAULT_THREAD_POOL_HANDLE, functionId);
    functionId = 0;
}
