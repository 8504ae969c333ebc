#pragma once
#include "Output.h"

#include <cstdint>
#include <string_view>

namespace vnifc::tool {

/// Writes JSON (RFC 8259) as it comes, without a document in memory. The caller takes care that what is begun is ended.
class JsonWriter {
public:
    explicit JsonWriter(Output& output) noexcept : m_output(output) {}

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    /// Begins a member of an object.
    void key(std::string_view name) {
        string(name);
        m_output.put(": ");
        m_follows = false;
    }
    void null() { word("null"); }
    void boolean(bool value) { word(value ? "true" : "false"); }
    void number(std::uint64_t value);
    void number(std::int32_t value);
    /// In the shortest form that reads back the same. What is no finite number becomes null.
    void number(double value);
    /// Of a text in UTF-8; each broken character becomes U+FFFD.
    void string(std::string_view utf8);
    /// Ends a line, between documents.
    void newLine() {
        m_output.put('\n');
        m_follows = false;
    }

private:
    void separate() {
        if (m_follows)
            m_output.put(", ");
        m_follows = true;
    }
    void open(char bracket) {
        separate();
        m_output.put(bracket);
        m_follows = false;
    }
    void close(char bracket) {
        m_output.put(bracket);
        m_follows = true;
    }
    void word(std::string_view text) {
        separate();
        m_output.put(text);
    }
    void escaped(unsigned char character);

    Output& m_output;
    bool m_follows = false; ///< a value precedes, so that a comma is due
};

} // namespace vnifc::tool
