#include <VnIfcCore/VnIfcIterator.h>

namespace VN_SDAI {

VnIfcAggr& VnIfcAggr::operator=(const VnIfcAggr& other) {
    if (this != &other)
        replace(other.isNil() ? m_imp->prototype() : m_imp->copyOf(*other.m_imp));
    return *this;
}

VnIfcAggr& VnIfcAggr::operator=(VnIfcAggr&& other) noexcept {
    if (this == &other)
        return *this;
    VnIfcAggrImp* taken = other.takeOut();
    replace(taken->isNil() ? m_imp->prototype() : m_imp->adopt(taken));
    return *this;
}

std::unique_ptr<VnIfcIterator> VnIfcAggr::createIterator() {
    return isNil() ? nullptr : std::make_unique<VnIfcIterator>(*this);
}

std::unique_ptr<VnIfcConstIterator> VnIfcAggr::createConstIterator() const {
    return isNil() ? nullptr : std::make_unique<VnIfcConstIterator>(*this);
}

int VnIfcAggr::compare(const VnIfcAggr& other) const noexcept {
    const int left = static_cast<int>(elementKind()), right = static_cast<int>(other.elementKind());
    return left != right ? left - right : m_imp->compare(*other.m_imp);
}

VnIfcAggrImp* VnIfcAggr::copyOut() noexcept {
    try {
        VnIfcAggrImp* copy = m_imp->clone();
        clear();
        return copy;
    } catch (const std::bad_alloc&) {
        return std::exchange(m_imp, m_imp->prototype()); // good as long as the model
    }
}

} // namespace VN_SDAI
