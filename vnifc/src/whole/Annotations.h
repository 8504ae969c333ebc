#pragma once
#include "../model/ClassInfo.h"

#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// Entities whose instances say something of others although nothing refers to them: styles of items, layers,
/// properties of materials. They live as long as what they are about.
class Annotations {
public:
    /// The attributes by which instances of the entity are about others; empty for entities that are none of these.
    const std::vector<const VN_SDAI::typed::AttributeRow*>& rowsOf(const ClassInfo& info) {
        if (&info != m_lastInfo) {
            m_lastRows = &lookUp(info);
            m_lastInfo = &info;
        }
        return *m_lastRows;
    }

private:
    const std::vector<const VN_SDAI::typed::AttributeRow*>& lookUp(const ClassInfo& info);

    const ClassInfo* m_lastInfo = nullptr; ///< neighbours are often of one entity
    const std::vector<const VN_SDAI::typed::AttributeRow*>* m_lastRows = nullptr;
    std::unordered_map<const ClassInfo*, std::vector<const VN_SDAI::typed::AttributeRow*>> m_rows;
};

} // namespace vnifc::detail
