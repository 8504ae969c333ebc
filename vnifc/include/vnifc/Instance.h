#pragma once
#include <vnifc/AttributeKey.h>
#include <vnifc/Error.h>

#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcEntityBase.h>

#include <cmath>
#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace vnifc {

class AttributeRange;
class InstanceRange;
class Value;

namespace detail {
struct ModelState;
}

/// A handle of one instance of a model: a small value that owns nothing and is good as long as the model. All text is
/// UTF-8; names of attributes and entities are taken in any case.
class VNIFC_LAYER_API Instance {
public:
    /// No instance.
    constexpr Instance() noexcept = default;

    /// True when there is an instance: false for a default one, one that has been erased, and one that a file refers to
    /// and does not hold. Of those only id, comparison and this may be used; all else throws NotFound.
    explicit operator bool() const noexcept { return m_handle.openObject() != nullptr; }
    /// The number: 12 for #12; 0 for no instance.
    std::uint64_t id() const noexcept { return m_handle.number(); }
    /// The entity as declared, "IfcWall"; of an instance that the release has no class for, its keyword as it stands in
    /// the file, and "(complex)" or "(malformed)" where it has none.
    std::string_view type() const;
    /// The same in the form of an exchange file: "IFCWALL".
    std::string_view keyword() const;
    /// True for instances of the entity and its subtypes. False for a name that the release does not have, since a
    /// program may well ask for what only other releases have.
    bool is(std::string_view entity) const;
    /// True for instances of exactly that entity.
    bool isExactly(std::string_view entity) const;
    /// True when the release has no class for it; it is kept as text.
    bool isForeign() const;
    /// The parameters of such an instance as they stand in the file; empty for all others.
    std::string_view foreignText() const;

    /// The value of an explicit or inverse attribute. Throws NotFound for a name that the entity does not have.
    Value operator[](std::string_view attribute) const;
    /// Throws BadValue when the instance is none of the key's entity.
    Value operator[](const AttributeKey& key) const;
    /// The value as a T (see Value::get); nothing where it is unset or not of that kind.
    template <class T>
    std::optional<T> get(std::string_view attribute) const;
    template <class T>
    std::optional<T> get(const AttributeKey& key) const;

    /// Stores a value; a null one takes the value away. Inverse attributes of others follow. Throws NotFound for a name
    /// that the entity does not have and BadValue for what does not fit; the attribute is unchanged then. A select
    /// takes a typed value, or the value alone: it is then of the type that the select holds, of the plain one
    /// (IfcLabel, IfcBoolean, IfcInteger, IfcReal), or of the only one that it can be of.
    void set(std::string_view attribute, const Value& value);
    void set(const AttributeKey& key, const Value& value);
    void set(const AttributeKey& key, double value) {
        VN_SDAI::VnIfcEntityBase* instance = m_handle.openObject();
        if (!instance || key.m_kind != VN_SDAI::typed::AttributeKind::kReal || std::isnan(value) ||
            !key.fits(*instance))
            return setChecked(key, value);
        *reinterpret_cast<double*>(reinterpret_cast<char*>(instance) + key.m_offset) = value;
        static_cast<VN_SDAI::typed::Entity*>(instance)->fieldChanged(key.m_position);
    }
    void unset(std::string_view attribute);
    /// What somebody typed for an attribute as a value of it. Takes the form of an exchange file ('text', 1.5, .T., #5,
    /// (1.,2.), IFCLABEL('text'), $ for no value) and, where that is no ambiguity, plainer ones: text without
    /// apostrophes, literals without dots, true, false and unknown, and for a select the value alone. Throws as set.
    Value parse(std::string_view attribute, std::string_view text) const;
    /// True when the entity has such an attribute, explicit or inverse.
    bool has(std::string_view attribute) const;
    /// What the file held for an explicit attribute that it could not take, as it stands there; nothing when all is
    /// well.
    std::optional<std::string> keptText(std::string_view attribute) const;

    /// The explicit attributes in the order of the parameter list, inherited ones first.
    AttributeRange attributes() const;
    /// The instances that this one refers to, each once, in the order of the attributes.
    InstanceRange references() const;
    /// The instances that refer to this one, whatever the attribute, each once, ascending. The first call looks at the
    /// whole model; the result of that is kept until references change.
    InstanceRange referrers() const;

    /// GlobalId, and Name or what the entity has in its place; empty where unset or absent.
    std::string globalId() const;
    std::string name() const;

    /// The instance as an exchange file has it: "#12=IFCWALL('0aBc...',$,...);".
    std::string toString() const;
    VNIFC_LAYER_API friend std::ostream& operator<<(std::ostream& stream, const Instance& instance);

    friend bool operator==(const Instance& left, const Instance& right) noexcept {
        return left.m_handle == right.m_handle;
    }
    /// By number; those of different models with the same number in an order that stays for the run.
    friend std::strong_ordering operator<=>(const Instance& left, const Instance& right) noexcept {
        if (left.m_handle == right.m_handle)
            return std::strong_ordering::equal;
        return left.m_handle < right.m_handle ? std::strong_ordering::less : std::strong_ordering::greater;
    }

    /// The core's handle, for programs that work with typed classes too.
    VN_SDAI::VnDbObjectId core() const noexcept { return m_handle; }

    /// For the library's own parts.
    Instance(VN_SDAI::VnDbObjectId handle, detail::ModelState* state) noexcept : m_handle(handle), m_state(state) {}
    detail::ModelState* state() const noexcept { return m_state; }

private:
    VN_SDAI::VnIfcEntityBase& opened() const;
    const VN_SDAI::VnIfcEntityBase& checked(const AttributeKey& key) const;
    [[noreturn]] void throwUnfit(const AttributeKey& key) const;
    void setChecked(const AttributeKey& key, double value);

    VN_SDAI::VnDbObjectId m_handle;
    detail::ModelState* m_state = nullptr;
};

} // namespace vnifc

template <>
struct std::hash<vnifc::Instance> {
    std::size_t operator()(const vnifc::Instance& instance) const noexcept {
        return std::hash<const void*>()(instance.core().slot());
    }
};

#include <vnifc/Value.h>
