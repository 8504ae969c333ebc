#pragma once
#include <array>
#include <functional>
#include <string_view>

namespace vnifc::tool {

/// Text on its way out. Goes through a buffer of fixed size, so that memory does not grow with it.
class Output {
public:
    /// Takes a part of the text.
    using Sink = std::function<void(std::string_view)>;

    explicit Output(Sink sink) : m_sink(std::move(sink)) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void put(char character) {
        if (m_used == m_buffer.size())
            flush();
        m_buffer[m_used++] = character;
    }
    void put(std::string_view text);
    /// Hands on what is in the buffer; what is not handed on in the end is lost.
    void flush();

private:
    Sink m_sink;
    std::size_t m_used = 0;
    std::array<char, 65536> m_buffer;
};

/// Takes text to standard output; throws Failure when that cannot be written.
void writeToStandardOutput(std::string_view text);

} // namespace vnifc::tool
