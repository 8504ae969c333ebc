#pragma once
#include "SpfInstanceReader.h"
#include "SpfStructure.h"

#include <string>

namespace VN_SDAI {

/// The explicit attribute at a position of the parameter list; null past its end.
const VnIfcAttributeDefinition* spfAttributeAt(const VnIfcEntityType* type, unsigned position);

/// Turns what scanner and readers noticed into diagnostics with places. Findings must come in the order of the text.
class SpfDiagnostics {
public:
    SpfDiagnostics(std::string file, const char* begin, const char* end, const VnIfcReadOptions& options,
                   VnIfcFileResult& result);

    void report(const SpfFinding& finding);
    void report(const SpfRemark& remark);
    void report(VnIfcDiagnostic::Severity severity, const char* code, const char* at, std::string found,
                std::string expected);

    /// Counts lines up to a position, because the text before it will be gone.
    void pass(const char* position);
    /// Line and column of a position that is not before one that was passed.
    void locate(const char* at, std::uint64_t& line, std::uint64_t& column);

private:
    void send(VnIfcDiagnostic diagnostic, const char* at);

    std::string m_file;
    const char* m_end;
    const VnIfcDiagnosticSink& m_sink;
    bool m_strict;
    VnIfcFileResult& m_result;
    const char* m_counted;
    const char* m_lineBegin;
    std::uint64_t m_line = 1;
};

} // namespace VN_SDAI
