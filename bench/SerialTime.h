#pragma once

namespace bench {

/// Processor time of this process in seconds.
struct ProcessorTime {
    double all = 0;
    /// Of the calling thread while it was the only one: what can run beside nothing else. The time that one thread of
    /// several waits for the others, or works on when they are done, is not in it.
    double serial = 0;
};

/// From now on, when nobody else runs threads that were made before.
void startProcessorTime();
/// Since the start, which the same thread called.
ProcessorTime processorTime();

} // namespace bench
