// One worker thread of the platform's thread pool at a time: the firmware writers and the
// flash tools' image updates run in one while the user-interface thread polls its done flag
// every 100 ms and keeps the interface alive.
//
// Thread rules: start and stop belong to the user-interface thread; the worker sets its own
// done flag with finish(); done() may be read from any thread. The flag is one byte written by
// one side and read by the other, so it needs no lock.
#pragma once

#include <atomic>

#include "ui/UserInterface.h"

struct WorkerSlot {
    ThreadFunctionPtr function;
    std::atomic<unsigned char> doneFlag{0};
    int functionId = 0;  // of the scheduled function, 0 = none

    explicit WorkerSlot(ThreadFunctionPtr f) : function(f) {}
    WorkerSlot(const WorkerSlot &) = delete;
    WorkerSlot &operator=(const WorkerSlot &) = delete;

    // Clears the done flag and schedules the function at the highest priority; 1 when it was
    // scheduled.
    int start();
    // Waits, processing events, for the function to return, then lets its identifier go.
    void stop();
    int done() const { return doneFlag.load(std::memory_order_acquire); }
    // The worker's last word: its writing is over and its file closed.
    void finish() { doneFlag.store(1, std::memory_order_release); }
};

// The four firmware update workers.
extern WorkerSlot gIspImageSlot;
extern WorkerSlot gAudioImageSlot;
extern WorkerSlot gUsbAppImageSlot;
extern WorkerSlot gUsbAppBlImageSlot;
