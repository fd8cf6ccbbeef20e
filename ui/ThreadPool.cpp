// The platform thread pool as the tool uses it: one thread per scheduled function, tracked by
// an id until released. Workers are few and long (firmware writers), so a thread each is the
// simplest thing that keeps their status exact.
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "ui/UiModel.h"
#include "ui/UserInterface.h"

namespace {
struct Job {
    std::thread thread;
    std::atomic<int> status{kCmtThreadFunctionNotStarted};
};

struct Pool {
    std::mutex mutex;
    std::map<int, std::shared_ptr<Job>> jobs;
    int nextId = 1;
};

Pool &pool() {
    static Pool p;
    return p;
}

std::shared_ptr<Job> findJob(int id) {
    std::lock_guard lock(pool().mutex);
    auto it = pool().jobs.find(id);
    return it == pool().jobs.end() ? nullptr : it->second;
}
}  // namespace

int CmtScheduleThreadPoolFunctionAdv(int, ThreadFunctionPtr function, void *data, int, void *, int, void *, int,
                                     int *functionId) {
    if (!function) return -1;
    auto job = std::make_shared<Job>();
    int id;
    {
        std::lock_guard lock(pool().mutex);
        id = pool().nextId++;
        pool().jobs[id] = job;
    }
    job->thread = std::thread([job, function, data] {
        job->status = kCmtThreadFunctionExecuting;
        function(data);
        job->status = kCmtThreadFunctionComplete;
    });
    if (functionId) *functionId = id;
    return 0;
}

int CmtGetThreadPoolFunctionAttribute(int, int functionId, int attribute, int *value) {
    auto job = findJob(functionId);
    if (!job || attribute != ATTR_TP_FUNCTION_EXECUTION_STATUS || !value) return -1;
    *value = job->status;
    return 0;
}

int CmtWaitForThreadPoolFunctionCompletion(int, int functionId, int options) {
    auto job = findJob(functionId);
    if (!job) return -1;
    while (job->status != kCmtThreadFunctionComplete) {
        if (options & OPT_TP_PROCESS_EVENTS_WHILE_WAITING) ProcessSystemEvents();
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return 0;
}

int CmtReleaseThreadPoolFunctionID(int, int functionId) {
    std::shared_ptr<Job> job;
    {
        std::lock_guard lock(pool().mutex);
        auto it = pool().jobs.find(functionId);
        if (it == pool().jobs.end()) return -1;
        job = it->second;
        pool().jobs.erase(it);
    }
    // Releasing a running function must not block the caller: let it finish on its own.
    if (job->thread.joinable()) {
        if (job->status == kCmtThreadFunctionComplete)
            job->thread.join();
        else
            job->thread.detach();
    }
    return 0;
}
