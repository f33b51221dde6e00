// Threads with a stack of a chosen size: the one place lumxml makes threads.
#include "frame/platform.h"

#if defined(_WIN32)
#include <process.h>
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace lumxml {
namespace platform {

namespace {

struct Job {
    void (*work)(void*);
    void* context;
};

#if defined(_WIN32)
unsigned __stdcall runJob(void* argument) {
    Job* job = static_cast<Job*>(argument);
    job->work(job->context);
    return 0;
}
#else
void* runJob(void* argument) {
    Job* job = static_cast<Job*>(argument);
    job->work(job->context);
    return nullptr;
}
#endif

}  // namespace

bool runOnLargeStack(size_t stackBytes, void (*work)(void*), void* context) {
    Job job{work, context};
#if defined(_WIN32)
    // The size is a reservation: pages are committed only as they are used.
    HANDLE thread = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, static_cast<unsigned>(stackBytes > 0xFFFFFFFFu ? 0xFFFFFFFFu : stackBytes),
        runJob, &job, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (thread == nullptr) return false;
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return true;
#else
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    // The mapping is reserved, not committed: only the pages a deep walk
    // really touches cost memory.
    bool ready = pthread_attr_setstacksize(&attributes, stackBytes) == 0;
    pthread_t thread;
    bool started = ready && pthread_create(&thread, &attributes, runJob, &job) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) return false;
    pthread_join(thread, nullptr);
    return true;
#endif
}

}  // namespace platform
}  // namespace lumxml
