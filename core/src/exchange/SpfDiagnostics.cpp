#include "SpfDiagnostics.h"

#include "SpfScan.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcExplicitAttributeDefinition.h>

#include <algorithm>
#include <cstring>

namespace VN_SDAI {

namespace {

// Longer texts are cut in messages; the place says where the rest is.
constexpr std::size_t kShown = 60;

enum Grade : std::uint8_t {
    kInfo,
    kWarning,
    kTolerated, // contradicts the standard or the schema, but nothing is lost by it
    kError,
};

struct Wording {
    Grade grade;
    const char* code;
    const char* expected;
};

Wording wordingOf(SpfFinding::Kind kind) noexcept {
    switch (kind) {
    case SpfFinding::kNoMagic:
        return {kTolerated, "no-magic", "ISO-10303-21; at the very beginning"};
    case SpfFinding::kNoHeader:
        return {kTolerated, "no-header", "HEADER;"};
    case SpfFinding::kHeaderEntry:
        return {kError, "header-entry", "a header entry: KEYWORD(...);"};
    case SpfFinding::kNoEnd:
        return {kError, "no-end", "END-ISO-10303-21; the file seems to be cut off"};
    case SpfFinding::kGarbage:
        return {kError, "garbage", "an instance: #1=KEYWORD(...);"};
    case SpfFinding::kNoNumber:
        return {kError, "instance-number", "an instance number of at most 64 bits, and ="};
    case SpfFinding::kNoSemicolon:
        return {kError, "no-semicolon", "a semicolon"};
    case SpfFinding::kBrokenString:
        return {kError, "open-string", "an apostrophe that closes the string"};
    case SpfFinding::kOpenComment:
        return {kError, "open-comment", "*/ that closes the comment"};
    case SpfFinding::kScope:
        return {kError, "scope", "no &SCOPE, which is kept as text and not read"};
    case SpfFinding::kDataSection:
        return {kWarning, "data-section", "one DATA section without parameters, which all instances go into"};
    case SpfFinding::kSection:
        return {kError, "section", "HEADER and DATA only; this section is left out"};
    case SpfFinding::kSecondStructure:
        return {kError, "second-structure", "one exchange structure in a file; what follows is left out"};
    }
    return {kError, "structure", ""};
}

Wording wordingOf(VnSpfProblem problem) noexcept {
    switch (problem) {
    case VnSpfProblem::kOutOfRange:
        return {kTolerated, "out-of-range", "a value that the type can hold"};
    case VnSpfProblem::kReservedValue:
        return {kInfo, "reserved-value", "a value other than the one that means unset"};
    case VnSpfProblem::kUnknownLiteral:
        return {kTolerated, "unknown-literal", "a literal of the enumeration"};
    case VnSpfProblem::kUnknownSelectType:
        return {kTolerated, "unknown-select-type", "a type of the select"};
    case VnSpfProblem::kMalformed:
        return {kError, "malformed", "a value"};
    case VnSpfProblem::kMissingComma:
        return {kError, "missing-comma", "a comma between two values"};
    case VnSpfProblem::kNotDerived:
        return {kTolerated, "not-derived", "* because a subtype derives the attribute"};
    case VnSpfProblem::kNotRead:
        return {kInfo, "binary", "nothing; binary values are kept as text"};
    default:
        return {kTolerated, "wrong-kind", "a value of the attribute's type"};
    }
}

Wording wordingOf(const SpfRemark& remark) noexcept {
    switch (remark.kind) {
    case SpfRemark::kTooFew:
        return {kTolerated, "too-few-parameters", "one value for each attribute"};
    case SpfRemark::kTooMany:
        return {kTolerated, "too-many-parameters", ") behind the last attribute"};
    case SpfRemark::kUnknownKeyword:
        return {kTolerated, "unknown-keyword", "an entity of the schema"};
    case SpfRemark::kNoKeyword:
        return {kError, "no-keyword", "KEYWORD(...)"};
    case SpfRemark::kComplex:
        return {kWarning, "complex-instance", "a simple instance: KEYWORD(...)"};
    case SpfRemark::kDuplicate:
        return {kError, "duplicate-id", "a number that no earlier instance has; it gets one"};
    case SpfRemark::kUnclosedList:
        return {kError, "unclosed-list", ") that closes the parameter list"};
    case SpfRemark::kBehindList:
        return {kError, "behind-list", "a semicolon behind the parameter list"};
    case SpfRemark::kEqualElements:
        return {kTolerated, "equal-elements", "elements that differ, as those of a set do"};
    case SpfRemark::kBareList:
        return {kTolerated, "bare-list", "a list in parentheses"};
    case SpfRemark::kDangling:
        return {kTolerated, "dangling-reference", "the number of an instance of this file"};
    case SpfRemark::kMandatory:
        return {kTolerated, "mandatory", "a value, because the attribute is mandatory"};
    case SpfRemark::kProblem:
        return wordingOf(remark.problem);
    }
    return {kError, "instance", ""};
}

std::string shown(const char* begin, const char* end) {
    if (!begin || begin >= end)
        return "nothing";
    const auto length = static_cast<std::size_t>(end - begin);
    std::string text(begin, std::min(length, kShown));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ')
            c = ' ';
    return length > kShown ? text + "..." : text;
}

VnIfcDiagnostic::Severity severityOf(Grade grade, bool strict) noexcept {
    if (grade == kInfo)
        return VnIfcDiagnostic::kInfo;
    return grade == kError || (grade == kTolerated && strict) ? VnIfcDiagnostic::kError : VnIfcDiagnostic::kWarning;
}

} // namespace

const VnIfcAttributeDefinition* spfAttributeAt(const VnIfcEntityType* type, unsigned position) {
    if (!type)
        return nullptr;
    for (const VnIfcAttributeDefinition* attribute : type->allAttributes()) {
        if (!dynamic_cast<const VnIfcExplicitAttributeDefinition*>(attribute))
            continue;
        if (position-- == 0)
            return attribute;
    }
    return nullptr;
}

SpfDiagnostics::SpfDiagnostics(std::string file, const char* begin, const char* end, const VnIfcReadOptions& options,
                               VnIfcFileResult& result)
    : m_file(std::move(file)), m_end(end), m_sink(options.diagnostics), m_strict(options.strict), m_result(result),
      m_counted(begin), m_lineBegin(begin) {}

/// Lines end with LF, CR LF or a lone CR.
void SpfDiagnostics::pass(const char* position) {
    while ((m_counted = spf::findLineEnd(m_counted, position)) < position) {
        const bool ends = *m_counted == '\n' || m_counted[1] != '\n';
        ++m_counted;
        if (!ends)
            continue;
        ++m_line;
        m_lineBegin = m_counted;
    }
}

void SpfDiagnostics::locate(const char* at, std::uint64_t& line, std::uint64_t& column) {
    at = std::min(at, m_end);
    pass(at);
    line = m_line;
    column = static_cast<std::uint64_t>(at - m_lineBegin) + 1;
}

void SpfDiagnostics::send(VnIfcDiagnostic diagnostic, const char* at) {
    if (diagnostic.severity == VnIfcDiagnostic::kError)
        ++m_result.errors;
    if (diagnostic.severity == VnIfcDiagnostic::kWarning)
        ++m_result.warnings;
    if (!m_sink)
        return;
    diagnostic.file = m_file;
    if (at)
        locate(at, diagnostic.line, diagnostic.column);
    m_sink(diagnostic);
}

void SpfDiagnostics::report(VnIfcDiagnostic::Severity severity, const char* code, const char* at, std::string found,
                            std::string expected) {
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.code = code;
    diagnostic.found = std::move(found);
    diagnostic.expected = std::move(expected);
    send(std::move(diagnostic), at);
}

void SpfDiagnostics::report(const SpfFinding& finding) {
    const Wording wording = wordingOf(finding.kind);
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = severityOf(wording.grade, m_strict);
    diagnostic.code = wording.code;
    diagnostic.expected = wording.expected;
    diagnostic.found = shown(finding.begin, finding.end);
    diagnostic.instance = finding.number;
    send(std::move(diagnostic), finding.begin);
}

void SpfDiagnostics::report(const SpfRemark& remark) {
    const Wording wording = wordingOf(remark);
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = severityOf(wording.grade, m_strict);
    diagnostic.code = wording.code;
    if (m_sink) {
        diagnostic.expected = wording.expected;
        const bool isDuplicate = remark.kind == SpfRemark::kDuplicate;
        diagnostic.found = isDuplicate ? '#' + std::to_string(remark.number) : shown(remark.begin, remark.end);
        diagnostic.instance = remark.number;
        if (remark.type)
            diagnostic.keyword = remark.type->name();
        else if (remark.kind == SpfRemark::kUnknownKeyword)
            diagnostic.keyword.assign(remark.begin, remark.end);
        const bool ofAttribute = remark.kind == SpfRemark::kProblem || remark.kind == SpfRemark::kBareList ||
                                 remark.kind == SpfRemark::kEqualElements || remark.kind == SpfRemark::kDangling ||
                                 remark.kind == SpfRemark::kTooFew || remark.kind == SpfRemark::kMandatory;
        if (const auto* attribute = ofAttribute ? spfAttributeAt(remark.type, remark.position) : nullptr)
            diagnostic.attribute = attribute->name();
    }
    send(std::move(diagnostic), remark.begin);
}

} // namespace VN_SDAI
