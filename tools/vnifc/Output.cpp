#include "Output.h"

#include "Commands.h"

#include <algorithm>
#include <cstdio>

namespace vnifc::tool {

void Output::put(std::string_view text) {
    while (!text.empty()) {
        if (m_used == m_buffer.size())
            flush();
        const std::size_t length = std::min(text.size(), m_buffer.size() - m_used);
        std::copy_n(text.data(), length, m_buffer.data() + m_used);
        m_used += length;
        text.remove_prefix(length);
    }
}

void Output::flush() {
    if (m_used > 0)
        m_sink({m_buffer.data(), m_used});
    m_used = 0;
}

void writeToStandardOutput(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        throw Failure(kFileFailure, "cannot write standard output");
}

} // namespace vnifc::tool
