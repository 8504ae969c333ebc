#pragma once
#include <VnIfcCore/VnIfcModel.h>
#include <vnifc/Export.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace vnifc {

/// What became of something that the target's release does not have as it was.
enum class ConvertKind : std::uint8_t {
    kRenamedEntity,  ///< the instance is of an entity of another name
    kGeneralised,    ///< ... of a supertype or of what stands for it; its old class is kept as a word where possible
    kMovedAttribute, ///< the value stands in an attribute of another name
    kChangedValue,   ///< the value has another form: a literal, a date, a list, a new instance
    kFilledValue,    ///< a mandatory attribute that had no value got one
    kKeptAsProperty, ///< the value became a property of a property set
    kAbsorbed,       ///< the instance stands in what referred to it
    kKeptText,       ///< text that the file's own release could not take either; it is carried as it is
    kLostValue,      ///< the value is gone
    kLostInstance,   ///< the instance is gone
};

/// "renamed-entity", "lost-value": a name that stays.
VNIFC_LAYER_API std::string_view nameOf(ConvertKind kind) noexcept;
/// True when something is gone: kGeneralised, kLostValue, kLostInstance.
VNIFC_LAYER_API bool isLoss(ConvertKind kind) noexcept;

/// One thing that conversion did beyond carrying over. Texts from the file are in the form of the file.
struct ConvertFinding {
    ConvertKind kind = ConvertKind::kChangedValue;
    std::uint64_t instance = 0; ///< #id, the same in both models
    std::string entity;         ///< in the source: "IfcWallStandardCase"
    std::string attribute;      ///< in the source; for kFilledValue in the target; empty when it is about the instance
    std::string before;         ///< the value, shortened
    std::string after;          ///< what it became; empty when it is gone
    std::string reason;

    /// One line for people: "#12 IfcRoof.ShapeType: .GABLE_ROOF. moved to PredefinedType (the kind of ...)".
    VNIFC_LAYER_API std::string text() const;
};

struct ConvertOptions {
    std::function<void(const ConvertFinding&)> findings; ///< called in ascending order of instances; may be empty
    VN_SDAI::VnIfcProgress progress;
    unsigned threads = 0; ///< for writing and reading within; 0: as many as the machine has
};

/// What a conversion came to. Each instance of the source counts once: carried + changed + reduced + lost.
struct ConvertResult {
    VN::ErrorStatus status = VN::eOk;
    std::string message; ///< why the status is no success

    std::uint64_t carried = 0; ///< as they were
    std::uint64_t changed = 0; ///< with all they held, in another form or place
    std::uint64_t reduced = 0; ///< there, but something of them is gone
    std::uint64_t lost = 0;    ///< gone
    std::uint64_t added = 0;   ///< new in the target: relationships, property sets and the like

    std::map<ConvertKind, std::uint64_t> findings; ///< how many of each kind

    explicit operator bool() const noexcept { return status == VN::eOk; }
};

/// Brings the instances of a model into a model of another release, which must be empty; any two releases will do, the
/// same one included. Instances go by entity and attribute name; what differs goes by tables. Instance numbers and
/// GlobalIds stay, texts keep their form. What has no counterpart is kept as far as the target can, told with the
/// reason and counted; nothing goes silently. Fails, and leaves the target empty, when the target is not empty, on
/// cancellation, and when the result cannot be read. Header entries are copied; FILE_SCHEMA names the target's release.
VNIFC_LAYER_API ConvertResult convert(const VN_SDAI::VnIfcModel& source, VN_SDAI::VnIfcModel& target,
                                      const ConvertOptions& options = {});

} // namespace vnifc
