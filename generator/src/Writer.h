#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace expgen {

/// Text of one generated file, put together line by line.
class Writer {
public:
    /// `source` names the inputs in the first line.
    explicit Writer(std::string_view source) { line("// Made by expgen from ", source, "; do not edit."); }

    /// Adds a line made of texts and whole numbers.
    template <class... Parts>
    void line(const Parts&... parts) {
        (add(parts), ...);
        m_text += '\n';
    }

    void include(std::string_view header) { line("#include <", header, ">"); }
    void includeClass(std::string_view name) { line("#include <IFC4X3/", name, ".h>"); }
    void openNamespace() { line("\nnamespace IFC4X3 {\n"); }
    void closeNamespace() { line("\n} // namespace IFC4X3"); }

    std::string take() { return std::move(m_text); }

private:
    void add(std::string_view text) { m_text += text; }
    void add(std::size_t number) { m_text += std::to_string(number); }

    std::string m_text;
};

} // namespace expgen
