#pragma once
#include "Program.h"

#include <memory>
#include <mutex>
#include <span>
#include <unordered_map>

namespace vnifc::rules {

/// What rules ask of a model as a whole: who uses an instance, and which instances there are. Each is found out once,
/// when it is asked for first. Safe to use from several threads.
class ModelView {
public:
    struct Use {
        const VN_SDAI::VnIfcInstanceSlot* target;
        const Entity* user;
        const Attribute* role;
    };

    ModelView(const Program& program, const VN_SDAI::VnIfcModel& model) : m_program(program), m_model(model) {}

    const VN_SDAI::VnIfcModel& model() const noexcept { return m_model; }
    /// The instances of an entity and its subtypes, in ascending order.
    std::span<const VN_SDAI::VnDbObjectId> population(TypeIndex entity);
    /// The uses of an instance in the roles that the program asks for, by user in ascending order.
    std::span<const Use> uses(const VN_SDAI::VnIfcInstanceSlot* target);

private:
    void findUses();
    std::vector<const Attribute*> rolesOf(TypeIndex entity) const;

    const Program& m_program;
    const VN_SDAI::VnIfcModel& m_model;
    std::mutex m_mutex;
    std::unordered_map<TypeIndex, std::unique_ptr<const std::vector<VN_SDAI::VnDbObjectId>>> m_populations;
    std::once_flag m_hasUses;
    std::vector<Use> m_uses;
};

} // namespace vnifc::rules
