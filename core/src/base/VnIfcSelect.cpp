#include <VnIfcCore/VnIfcSelect.h>

#include <cmath>
#include <limits>
#include <new>

namespace VN_SDAI {

VnIfcSelect::~VnIfcSelect() { dropValue(); }

void VnIfcSelect::dropValue() noexcept {
    if (isText())
        m_value.string.~VnAnsiString();
    if (m_kind == VnTypeCodeKind::kAggregation)
        m_value.aggregate.~VnIfcAggr();
    m_value.number = 0;
    m_kind = VnTypeCodeKind::kNone;
}

void VnIfcSelect::copyValue(const VnIfcSelect& other) {
    if (other.isText())
        new (&m_value.string) VnAnsiString(other.m_value.string);
    else if (other.m_kind == VnTypeCodeKind::kAggregation)
        new (&m_value.aggregate) VnIfcAggr(other.m_value.aggregate);
    else
        m_value.number = other.m_value.number;
    m_kind = other.m_kind;
}

void VnIfcSelect::moveValue(VnIfcSelect& other) noexcept {
    m_kind = other.m_kind;
    if (other.isText() && other.m_value.string.storage() == VnStorage::kArena && !VnIfcArenaScope::current()) {
        // What lies in the arena of a model is copied, as VnIfcAggr does: it may outlive the model.
        try {
            new (&m_value.string) VnAnsiString(other.m_value.string);
        } catch (const std::bad_alloc&) {
            m_value.number = other.m_value.number; // good as long as the model
        }
    } else if (m_kind == VnTypeCodeKind::kAggregation) {
        new (&m_value.aggregate) VnIfcAggr(std::move(other.m_value.aggregate));
        other.m_value.aggregate.~VnIfcAggr();
    } else {
        // Every value is one relocatable word, so taking it over is copying it and forgetting it there.
        m_value.number = other.m_value.number;
    }
    other.m_value.number = 0;
    other.m_kind = VnTypeCodeKind::kNone;
}

VnIfcSelect& VnIfcSelect::operator=(const VnIfcSelect& other) {
    if (this == &other)
        return *this;
    dropValue();
    copyValue(other);
    return *this;
}

VnIfcSelect& VnIfcSelect::operator=(VnIfcSelect&& other) noexcept {
    if (this == &other)
        return *this;
    dropValue();
    moveValue(other);
    return *this;
}

void VnIfcSelect::resetTo(VnTypeCodeKind kind, const VnIfcAggr* prototype) {
    dropValue();
    switch (kind) {
    case VnTypeCodeKind::kString:
    case VnTypeCodeKind::kBinary:
        new (&m_value.string) VnAnsiString(VnUnsetText);
        break;
    case VnTypeCodeKind::kAggregation:
        if (!prototype)
            return;
        new (&m_value.aggregate) VnIfcAggr(*prototype);
        break;
    case VnTypeCodeKind::kReal:
        m_value.real = std::numeric_limits<double>::quiet_NaN();
        break;
    case VnTypeCodeKind::kInteger:
        m_value.number = kNoInteger;
        break;
    case VnTypeCodeKind::kBoolean:
        m_value.number = VnIfcBoolean::Unset;
        break;
    case VnTypeCodeKind::kLogical:
        m_value.number = VnIfcLogical::Unset;
        break;
    case VnTypeCodeKind::kEnumeration:
        m_value.number = 0xffffffff;
        break;
    default:
        m_value.number = 0;
        break;
    }
    m_kind = kind;
}

void VnIfcSelect::holdHandle(const VnDbObjectId& handle) noexcept {
    dropValue();
    if (handle.isNull())
        return;
    new (&m_value.handle) VnDbObjectId(handle);
    m_kind = VnTypeCodeKind::kEntity;
}

VN::ErrorStatus VnIfcSelect::setNumber(VnTypeCodeKind kind, std::int64_t value) noexcept {
    if (m_kind != kind)
        return VN::eRefused;
    m_value.number = value;
    return VN::eOk;
}

bool VnIfcSelect::setHandle(const VnDbObjectId& handle) {
    if (handle.isNull() || !setHandleD(handle)) {
        nullify();
        return false;
    }
    holdHandle(handle);
    return true;
}

void VnIfcSelect::setHandleOnLoad(const VnDbObjectId& handle) { holdHandle(handle); }

void VnIfcSelect::refreshSelectHandle() {
    if (m_kind == VnTypeCodeKind::kEntity)
        setHandleD(m_value.handle);
}

void VnIfcSelect::nullify() {
    dropValue();
    unset();
}

VN::ErrorStatus VnIfcSelect::readTypedField(const VnAnsiString&, VnSpfFilerBase*) { return VN::eNotHandled; }

VN::ErrorStatus VnIfcSelect::writeTypedField(VnSpfFilerBase*) const { return VN::eNotHandled; }

bool VnIfcSelect::hasValue() const noexcept {
    switch (m_kind) {
    case VnTypeCodeKind::kNone:
        return false;
    case VnTypeCodeKind::kString:
    case VnTypeCodeKind::kBinary:
        return !m_value.string.isUnset();
    case VnTypeCodeKind::kReal:
        return !std::isnan(m_value.real);
    case VnTypeCodeKind::kInteger:
        return m_value.number != kNoInteger;
    case VnTypeCodeKind::kBoolean:
        return m_value.number < VnIfcBoolean::Unset;
    case VnTypeCodeKind::kLogical:
        return m_value.number < VnIfcLogical::Unset;
    case VnTypeCodeKind::kEnumeration:
        return m_value.number < chosenLiteralCount();
    case VnTypeCodeKind::kAggregation:
        return !m_value.aggregate.isNil();
    default:
        return true;
    }
}

VN::ErrorStatus VnIfcSelect::setString(VnAnsiString value) {
    if (m_kind != VnTypeCodeKind::kString)
        return VN::eRefused;
    m_value.string = std::move(value);
    return VN::eOk;
}

VN::ErrorStatus VnIfcSelect::setBINARY(VnAnsiString value) {
    if (m_kind != VnTypeCodeKind::kBinary)
        return VN::eRefused;
    m_value.string = std::move(value);
    return VN::eOk;
}

VN::ErrorStatus VnIfcSelect::setInt32(std::int32_t value) { return setNumber(VnTypeCodeKind::kInteger, value); }

VN::ErrorStatus VnIfcSelect::setDouble(double value) {
    if (m_kind != VnTypeCodeKind::kReal)
        return VN::eRefused;
    m_value.real = value;
    return VN::eOk;
}

VN::ErrorStatus VnIfcSelect::setBoolean(VnIfcBoolean value) {
    return setNumber(VnTypeCodeKind::kBoolean, value.code());
}

VN::ErrorStatus VnIfcSelect::setLogical(VnIfcLogical value) {
    return setNumber(VnTypeCodeKind::kLogical, value.code());
}

VN::ErrorStatus VnIfcSelect::setEnum(std::uint32_t value) { return setNumber(VnTypeCodeKind::kEnumeration, value); }

bool VnIfcSelect::getString(VnAnsiString& value) const {
    if (m_kind != VnTypeCodeKind::kString || !hasValue())
        return false;
    value = m_value.string;
    return true;
}

bool VnIfcSelect::getBINARY(VnAnsiString& value) const {
    if (m_kind != VnTypeCodeKind::kBinary || !hasValue())
        return false;
    value = m_value.string;
    return true;
}

bool VnIfcSelect::getInt32(std::int32_t& value) const noexcept {
    if (m_kind != VnTypeCodeKind::kInteger || !hasValue())
        return false;
    value = static_cast<std::int32_t>(m_value.number);
    return true;
}

bool VnIfcSelect::getDouble(double& value) const noexcept {
    if (m_kind != VnTypeCodeKind::kReal || !hasValue())
        return false;
    value = m_value.real;
    return true;
}

bool VnIfcSelect::getBoolean(VnIfcBoolean& value) const noexcept {
    if (m_kind != VnTypeCodeKind::kBoolean || !hasValue())
        return false;
    value = static_cast<VnIfcBoolean::Code>(m_value.number);
    return true;
}

bool VnIfcSelect::getLogical(VnIfcLogical& value) const noexcept {
    if (m_kind != VnTypeCodeKind::kLogical || !hasValue())
        return false;
    value = static_cast<VnIfcLogical::Code>(m_value.number);
    return true;
}

bool VnIfcSelect::getEnum(std::uint32_t& value) const noexcept {
    if (m_kind != VnTypeCodeKind::kEnumeration || !hasValue())
        return false;
    value = static_cast<std::uint32_t>(m_value.number);
    return true;
}

std::string_view VnIfcSelect::text() const noexcept { return isText() ? m_value.string.view() : std::string_view(); }

bool VnIfcSelect::operator==(const VnIfcSelect& other) const noexcept { return !(*this < other) && !(other < *this); }

bool VnIfcSelect::operator<(const VnIfcSelect& other) const noexcept {
    if (m_kind != other.m_kind)
        return m_kind < other.m_kind;
    if (m_kind == VnTypeCodeKind::kEntity)
        return m_value.handle < other.m_value.handle;
    if (m_kind == VnTypeCodeKind::kNone)
        return false;
    if (_d() != other._d())
        return _d() < other._d();
    if (isText())
        return m_value.string < other.m_value.string;
    if (m_kind == VnTypeCodeKind::kAggregation)
        return m_value.aggregate.compare(other.m_value.aggregate) < 0;
    if (m_kind == VnTypeCodeKind::kReal) {
        // A total order, so that sets stay sorted whatever the numbers are: NaN comes last.
        const double left = m_value.real, right = other.m_value.real;
        return left < right || (left == left && right != right);
    }
    return m_value.number < other.m_value.number;
}

} // namespace VN_SDAI
