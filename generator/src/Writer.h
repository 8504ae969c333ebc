#pragma once

#include "Emit.h"

#include <string>
#include <string_view>
#include <utility>

namespace expgen {

/// Text of one generated file, put together line by line.
class Writer {
public:
    explicit Writer(const Target& target) : m_namespace(target.release.name) {
        line("// Made by expgen from ", target.source, "; do not edit.");
    }

    /// Adds a line made of texts and whole numbers.
    template <class... Parts>
    void line(const Parts&... parts) {
        (add(parts), ...);
        m_text += '\n';
    }

    /// Begins a source of the module. It says itself that it is one, and not the command line: all modules share one
    /// precompiled header.
    void beginSource() { line("#define VN", m_namespace, "_BUILD"); }
    void include(std::string_view header) { line("#include <", header, ">"); }
    void includeClass(std::string_view name) { line("#include <", m_namespace, "/", name, ".h>"); }
    void openNamespace() { line("\nnamespace ", m_namespace, " {\n"); }
    /// As openNamespace, for a source, whose tables name the shared types all the time.
    void openSource() {
        openNamespace();
        line("using namespace VN_SDAI::typed;\n");
    }
    void closeNamespace() { line("\n} // namespace ", m_namespace); }

    /// What qualifies a name of the release: "IFC4X3::".
    std::string scope() const { return m_namespace + "::"; }

    std::string take() { return std::move(m_text); }

private:
    void add(std::string_view text) { m_text += text; }
    void add(std::size_t number) { m_text += std::to_string(number); }

    std::string m_namespace;
    std::string m_text;
};

} // namespace expgen
