#pragma once
#include "../whole/References.h"
#include "../whole/Roster.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// A number of 64 bits for what an instance says. It depends on the names of entity and attributes and not on instance
/// numbers, on the order of sets and on the encoding of texts, so that models of different releases can be compared.
/// References to what has a GlobalId count by that; all else counts by what it says itself. Where instances without a
/// GlobalId refer to each other in a circle, the reference that closes it counts by the entity alone.
class Digests {
public:
    /// What of an instance does not count.
    struct Rules {
        std::vector<std::string> ignored = {}; ///< attributes by name, in any case
        bool ignoreSets = false;               ///< of IfcTypeObject the sets of properties
    };

    /// Of all instances, or of those that `wanted` is true of and what they refer to; the others have 0.
    Digests(ModelState& state, const Roster& roster, Rules rules, const std::vector<bool>* wanted = nullptr);

    /// All that the instance says, with its GlobalId.
    std::uint64_t of(std::uint32_t ordinal) const noexcept { return m_digests[ordinal]; }
    /// What a reference to the instance counts.
    std::uint64_t asTarget(std::uint32_t ordinal) const noexcept {
        return m_identities[ordinal] != 0 ? m_identities[ordinal] : m_digests[ordinal];
    }
    /// A digest of the GlobalId; 0 for an instance that has none.
    std::uint64_t identity(std::uint32_t ordinal) const noexcept { return m_identities[ordinal]; }
    /// What a set of properties says, whatever its GlobalId, OwnerHistory and Description.
    std::uint64_t content(std::uint32_t ordinal) { return digest(m_roster.instance(ordinal), false); }

    static std::uint64_t mix(std::uint64_t left, std::uint64_t right) noexcept;
    static std::uint64_t ofText(std::string_view text) noexcept;

private:
    struct Field {
        const VN_SDAI::typed::AttributeRow* row;
        unsigned position;
        std::uint64_t name;
        bool isOfRoot; ///< GlobalId, OwnerHistory and Description of what is rooted
    };
    struct Plan {
        std::uint64_t keyword = 0;
        std::vector<Field> fields;
    };

    const Plan& planOf(const VN_SDAI::VnIfcEntityType& type);
    std::unique_ptr<Plan> makePlan(const ClassInfo& info) const;
    std::uint64_t digest(const VN_SDAI::VnIfcEntityBase& instance, bool withRoot);
    std::uint64_t digestOfText(const VN_SDAI::VnIfcEntityBase& instance) const;
    std::uint64_t referringText(std::string_view text) const;
    std::uint64_t field(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::AttributeRow& row) const;
    std::uint64_t aggregate(const VN_SDAI::VnIfcAggr& elements) const;
    std::uint64_t select(const VN_SDAI::typed::Select& value) const;
    std::uint64_t reference(const VN_SDAI::VnDbObjectId& handle) const;
    std::uint64_t target(std::uint32_t ordinal) const;

    ModelState& m_state;
    const Roster& m_roster;
    Rules m_rules;
    std::unordered_map<const VN_SDAI::VnIfcEntityType*, std::unique_ptr<Plan>> m_plans;
    const VN_SDAI::VnIfcEntityType* m_lastType = nullptr; ///< neighbours are often of one entity
    const Plan* m_lastPlan = nullptr;
    std::vector<std::uint64_t> m_identities;
    std::vector<std::uint64_t> m_digests;
};

} // namespace vnifc::detail
