#pragma once
#include <VnIfcCore/VnIfcDiagnostic.h>
#include <VnIfcCore/VnIfcTypes.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace VN_SDAI {

class VnIfcEntityBase;
class VnIfcModel;

/// Looks for what is wrong with the instances of a model, one by one: each instance reports what it finds about itself
/// (VnIfcEntityBase::check), this class adds what takes several to see. Findings go to the sink in ascending order of
/// instances.
class VNIFC_API VnIfcCheck {
public:
    /// The model must outlive the check. Inverse attributes are looked at only if they were set. Without a sink
    /// findings are only counted.
    VnIfcCheck(const VnIfcModel& model, VnIfcDiagnosticSink sink, bool inverses = true);
    ~VnIfcCheck();
    VnIfcCheck(const VnIfcCheck&) = delete;
    VnIfcCheck& operator=(const VnIfcCheck&) = delete;

    /// Checks every instance, on several threads; 0: as many as the machine has. Findings do not depend on their number
    /// and go to the sink on the calling thread.
    void run(unsigned threads = 0);
    /// Whether the cardinality of inverse attributes is looked at, as asked for at construction.
    bool checksInverses() const noexcept { return m_inverses; }
    ///@{
    /// How many findings of that severity there were, with and without a sink.
    std::uint64_t errors() const noexcept { return m_errors; }
    std::uint64_t warnings() const noexcept { return m_warnings; }
    ///@}

    // For instances.

    /// `code` names the kind of finding: "mandatory", "wrong-type".
    void report(VnIfcDiagnostic::Severity severity, const char* code, const VnIfcEntityBase& instance,
                std::string_view attribute, std::string found, std::string expected);
    /// Reports an instance whose values under a UNIQUE rule (ISO 10303-11, 9.2.2.1) another one has already. `rule`
    /// must be one object for all instances that it holds for; VnIfcEntityBase::uniqueValues gives their values.
    void unique(const VnIfcEntityBase& instance, const void* rule);
    /// True when text that was kept as it came refers to the instance: it is not known by which attribute.
    bool isNamedInText(const VnIfcEntityBase& instance);
    /// Reports faults of a text in the form of an exchange file (ISO 10303-21, 6.4.3).
    void text(const VnIfcEntityBase& instance, std::string_view attribute, std::string_view value);

private:
    struct Seen;
    struct Part;
    class Run;

    VnIfcCheck(const VnIfcCheck& whole, Part& part);
    void emit(VnIfcDiagnostic& diagnostic);
    VnIfcDiagnostic finding(VnIfcDiagnostic::Severity severity, const char* code, const VnIfcEntityBase& instance,
                            std::string_view attribute, std::string found, std::string expected) const;
    VnIfcDiagnostic equalValues(const VnIfcEntityBase& instance, const void* rule, const VnIfcEntityBase& first) const;

    const VnIfcModel& m_model;
    VnIfcDiagnosticSink m_sink;
    bool m_takesFindings; // false: they are only counted
    bool m_inverses;
    std::uint64_t m_errors = 0;
    std::uint64_t m_warnings = 0;
    std::shared_ptr<Seen> m_seen;
    Part* m_part = nullptr; // what is found goes there, until its turn has come
    std::string m_values;   // of the instance at hand under a UNIQUE rule
};

} // namespace VN_SDAI
