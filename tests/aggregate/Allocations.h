#pragma once
#include <cstddef>
#include <vector>

/// Starts, or ends, the recording of what operator new is asked for.
void recordAllocations(bool on);
/// Sizes of the blocks of the last recording.
const std::vector<std::size_t>& recordedAllocations();
