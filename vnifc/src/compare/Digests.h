#pragma once
#include "../whole/References.h"
#include "../whole/Roster.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// A number of 64 bits for what an instance says. It depends on the names of entity and attributes and not on the order
/// of sets and the encoding of texts. What a reference counts is a matter of the derived class.
class ValueDigest {
public:
    /// What of an instance does not count.
    struct Rules {
        std::vector<std::string> ignored = {}; ///< attributes by name, in any case
        bool ignoreSets = false;               ///< of IfcTypeObject the sets of properties
    };

    static std::uint64_t mix(std::uint64_t left, std::uint64_t right) noexcept;
    static std::uint64_t ofText(std::string_view text) noexcept;

protected:
    /// What it counts to refer to nothing, and to something that is not there.
    static constexpr std::uint64_t kNothing = 0;
    static constexpr std::uint64_t kDangling = 0x9E3779B97F4A7C15;

    ValueDigest(ModelState& state, const Roster& roster, Rules rules)
        : m_state(state), m_roster(roster), m_rules(std::move(rules)) {}
    ~ValueDigest() = default;

    /// What a reference to an instance that is there counts.
    virtual std::uint64_t target(std::uint32_t ordinal) const = 0;

    /// With or without what every rooted instance has beyond its name: GlobalId, OwnerHistory and Description.
    std::uint64_t digest(const VN_SDAI::VnIfcEntityBase& instance, bool withRoot = true);

    ModelState& m_state;
    const Roster& m_roster;

private:
    struct Field {
        const VN_SDAI::typed::AttributeRow* row;
        unsigned position;
        std::uint64_t name;
        bool isOfRoot;
    };
    struct Plan {
        std::uint64_t keyword = 0;
        std::vector<Field> fields;
    };

    const Plan& planOf(const VN_SDAI::VnIfcEntityBase& instance);
    const Plan& planOf(const ClassInfo& info);
    std::uint64_t digestOfText(const VN_SDAI::VnIfcEntityBase& instance) const;
    std::uint64_t referringText(std::string_view text) const;
    std::uint64_t field(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::AttributeRow& row) const;
    std::uint64_t aggregate(const VN_SDAI::VnIfcAggr& elements) const;
    std::uint64_t select(const VN_SDAI::typed::Select& value) const;
    std::uint64_t reference(const VN_SDAI::VnDbObjectId& handle) const;

    Rules m_rules;
    std::unordered_map<const VN_SDAI::VnIfcEntityType*, std::unique_ptr<Plan>> m_plans;
};

/// The digests of all instances of a model. They do not depend on instance numbers, so that models can be compared,
/// also those of different releases. References to what has a GlobalId count by that; all else counts by what it says
/// itself. Where instances without a GlobalId refer to each other in a circle, the reference that closes it counts by
/// the entity alone.
class Digests final : public ValueDigest {
public:
    Digests(ModelState& state, const Roster& roster, Rules rules);

    /// All that the instance says, with its GlobalId.
    std::uint64_t of(std::uint32_t ordinal) const noexcept { return m_digests[ordinal]; }
    /// What a reference to the instance counts.
    std::uint64_t asTarget(std::uint32_t ordinal) const noexcept {
        return m_identities[ordinal] != 0 ? m_identities[ordinal] : m_digests[ordinal];
    }
    /// A digest of the GlobalId; 0 for an instance that has none.
    std::uint64_t identity(std::uint32_t ordinal) const noexcept { return m_identities[ordinal]; }
    /// What a set of properties says, whatever its GlobalId.
    std::uint64_t content(std::uint32_t ordinal) { return digest(m_roster.instance(ordinal), false); }

private:
    std::uint64_t target(std::uint32_t ordinal) const override;

    std::vector<std::uint64_t> m_identities;
    std::vector<std::uint64_t> m_digests;
};

} // namespace vnifc::detail
