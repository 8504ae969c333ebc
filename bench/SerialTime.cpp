// Tells serial work by the calls that make and join threads: between the first one made and the last one joined, work
// is shared. That holds for any number of threads and does not depend on how many processors there are.
#include "SerialTime.h"

#include <dlfcn.h>
#include <pthread.h>

#include <ctime>

namespace bench {

namespace {

thread_local bool isMeasuring = false;
unsigned helpers = 0; // made and not yet joined, by the measuring thread
double begunAll = 0;
double begunSerial = 0; // of the stretch without helpers that lasts
double serial = 0;      // of those before

double secondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void made() {
    if (isMeasuring && helpers++ == 0)
        serial += secondsOf(CLOCK_THREAD_CPUTIME_ID) - begunSerial;
}

void joined() {
    if (isMeasuring && helpers > 0 && --helpers == 0)
        begunSerial = secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

void startProcessorTime() {
    isMeasuring = true;
    helpers = 0;
    serial = 0;
    begunAll = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
    begunSerial = secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

ProcessorTime processorTime() {
    isMeasuring = false;
    const double lasting = secondsOf(CLOCK_THREAD_CPUTIME_ID) - begunSerial;
    return {secondsOf(CLOCK_PROCESS_CPUTIME_ID) - begunAll, serial + lasting};
}

} // namespace bench

// These stand before the system's own, for all libraries.
extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument) {
    static auto* const real = bench::next<decltype(pthread_create)>("pthread_create");
    bench::made();
    return real(thread, attributes, start, argument);
}

extern "C" __attribute__((visibility("default"))) int pthread_join(pthread_t thread, void** result) {
    static auto* const real = bench::next<decltype(pthread_join)>("pthread_join");
    const int status = real(thread, result);
    bench::joined();
    return status;
}
