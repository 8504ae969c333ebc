#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcAggr.h>
#include <VnIfcCore/VnIfcLogical.h>

#include <limits>
#include <span>
#include <string_view>

class VrString;

namespace VN_SDAI {

class VnIfcVariantType;
template <class T>
class VnIfcAggrOf;
enum class StringFormat : std::uint8_t;

/// Base of the select classes (ISO 10303-11, 8.4.2): holds the chosen value and its kind. Which member of the select is
/// chosen is the derived class's matter.
class VNIFC_API VnIfcSelect {
public:
    virtual ~VnIfcSelect();
    /// The code of the chosen member.
    virtual std::int32_t _d() const noexcept = 0;
    /// Chooses a member by name, in any case, and drops the value; false for an unknown name, which changes nothing.
    virtual bool underlyingTypeName(const VnAnsiString& name) = 0;
    /// Name of the chosen member; empty when there is none.
    virtual const VnAnsiString& underlyingTypeName() const = 0;
    /// The select's record in the dictionary; null until the schema is built.
    virtual const VnIfcNameType* type() const noexcept = 0;

protected:
    /// Finds the member that an instance belongs to; false when it belongs to none.
    virtual bool setHandleD(const VnDbObjectId& handle) = 0;
    /// Takes a handle from a file; it is classified when all instances are there.
    virtual void setHandleOnLoad(const VnDbObjectId& handle);
    /// Classifies a handle taken from a file.
    virtual void refreshSelectHandle();
    /// Forgets which member is chosen.
    virtual void unset() = 0;
    ///@{
    /// Reads, or writes, a value that the core leaves to the select; 18 when it is none of those.
    virtual VN::ErrorStatus readTypedField(const VnAnsiString& typeName, VnSpfFilerBase* filer);
    virtual VN::ErrorStatus writeTypedField(VnSpfFilerBase* filer) const;
    ///@}

public:
    /// The code of the member of that name, in any case; the number of members when there is none.
    virtual std::int32_t memberByName(const VnAnsiString& name) const = 0;

protected:
    /// Chooses a member by name for the reader; false for an unknown name or an entity member.
    virtual bool chooseForReading(std::string_view name) = 0;
    /// The kind of the chosen member's value; false when none is chosen.
    virtual bool chosenKind(VnTypeCodeKind& kind) const noexcept = 0;
    /// The descriptor of the chosen member's type if that is an enumeration; null otherwise.
    virtual const VnIfcVariantType* chosenEnumeration() const = 0;
    /// The number of literals of that enumeration; codes from there on stand for no value.
    virtual std::uint32_t chosenLiteralCount() const noexcept { return std::numeric_limits<std::uint32_t>::max(); }

public:
    /// Kind of the value held; kNone when nothing is held.
    VnTypeCodeKind kind() const noexcept { return m_kind; }
    /// True when a member is chosen; it may be without a value.
    bool isSet() const noexcept { return m_kind != VnTypeCodeKind::kNone; }
    /// True when the chosen member has a value: an unset text, an unset number and NaN are none. A select without a
    /// value is written "$".
    bool hasValue() const noexcept;

    /// Takes an instance if it belongs to one of the members; otherwise the select is nulled and the result is false.
    bool setHandle(const VnDbObjectId& handle);
    /// The instance held; null when none is.
    VnDbObjectId getHandle() const noexcept {
        return m_kind == VnTypeCodeKind::kEntity ? m_value.handle : VnDbObjectId();
    }
    /// Classifies an instance that was taken from a file before all instances were there. What reads and copies
    /// instances does that in the end, so that asking changes nothing.
    void settle() { refreshSelectHandle(); }
    /// Drops value and choice.
    void nullify();

    ///@{
    /// Gives the chosen member its value. eRefused, and nothing changes, when no member is chosen or its values are of
    /// another kind: choose one with underlyingTypeName or a typed setter of the class.
    VN::ErrorStatus setString(VnAnsiString value);
    VN::ErrorStatus setBINARY(VnAnsiString value);
    VN::ErrorStatus setInt32(std::int32_t value);
    VN::ErrorStatus setDouble(double value);
    VN::ErrorStatus setBoolean(VnIfcBoolean value);
    VN::ErrorStatus setLogical(VnIfcLogical value);
    VN::ErrorStatus setEnum(std::uint32_t value);
    ///@}

    ///@{
    /// The value, if it is of that kind; false otherwise, also when the chosen member has no value, which leaves the
    /// argument as it was.
    bool getString(VnAnsiString& value) const;
    bool getBINARY(VnAnsiString& value) const;
    bool getInt32(std::int32_t& value) const noexcept;
    bool getDouble(double& value) const noexcept;
    bool getBoolean(VnIfcBoolean& value) const noexcept;
    bool getLogical(VnIfcLogical& value) const noexcept;
    bool getEnum(std::uint32_t& value) const noexcept;
    ///@}
    /// The text of a string or binary value without copying; empty for other kinds.
    std::string_view text() const noexcept;
    ///@{
    /// The aggregate of an aggregate-valued member; null for other kinds. Owned by the select.
    VnIfcAggr* getAggr() noexcept { return m_kind == VnTypeCodeKind::kAggregation ? &m_value.aggregate : nullptr; }
    const VnIfcAggr* getAggr() const noexcept {
        return m_kind == VnTypeCodeKind::kAggregation ? &m_value.aggregate : nullptr;
    }
    ///@}
    /// The elements of an aggregate-valued member; empty when none with elements of type T is held. Valid until the
    /// select changes.
    template <class T>
    std::span<const T> elements() const noexcept {
        const VnIfcAggr* aggregate = getAggr();
        if (!aggregate || aggregate->elementKind() != vnElementKind<T>())
            return {};
        return static_cast<const VnIfcAggrOf<T>&>(*aggregate).items();
    }

    // For the descriptors of select types. A null select returns false; a refused conversion leaves `result` as it was.

    /// Prints the value: alone, or in the exchange form of a select (ISO 10303-21).
    static bool _subToString(VrString& text, const VnIfcSelect* select, StringFormat format);
    /// Converts the value, or makes a copy of the select, or a pointer to it, where `target` is for its class.
    static bool _subToValueType(const VnIfcVariantType& target, const VnIfcSelect* select, VnIfcVariant& result);
    /// Chooses what is chosen in the select that `source` holds, and takes its value; false when there is no such
    /// member.
    static bool _subFromValueType(const VnIfcVariant& source, VnIfcSelect& select);
    /// The value as one of a core type or an enumeration, an aggregate as a pointer to it; false when nothing is held.
    bool toVariant(VnIfcVariant& value) const;

    /// Same member and same value; handles are compared by instance.
    bool operator==(const VnIfcSelect& other) const noexcept;
    /// Order by kind, then member, then value.
    bool operator<(const VnIfcSelect& other) const noexcept;

protected:
    /// Without a choice and a value.
    VnIfcSelect() noexcept {}
    ///@{
    /// Copies or takes the value; the choice is the derived class's matter. What is moved from holds nothing.
    VnIfcSelect(const VnIfcSelect& other) : VnIfcSelect() { copyValue(other); }
    VnIfcSelect(VnIfcSelect&& other) noexcept : VnIfcSelect() { moveValue(other); }
    VnIfcSelect& operator=(const VnIfcSelect& other);
    VnIfcSelect& operator=(VnIfcSelect&& other) noexcept;
    ///@}

    /// Makes the value an unset one of that kind; an aggregate becomes a copy of `prototype`.
    void resetTo(VnTypeCodeKind kind, const VnIfcAggr* prototype = nullptr);
    /// Makes the value this instance, whatever member it belongs to.
    void holdHandle(const VnDbObjectId& handle) noexcept;

    friend class VnSpfFilerBase;

private:
    union Value {
        constexpr Value() noexcept : number(0) {}
        ~Value() {}
        std::int64_t number;
        double real;
        VnDbObjectId handle;
        VnAnsiString string;
        VnIfcAggr aggregate;
    };

    // No 32-bit value, so that each of those can be held.
    static constexpr std::int64_t kNoInteger = std::numeric_limits<std::int64_t>::min();

    bool isText() const noexcept { return m_kind == VnTypeCodeKind::kString || m_kind == VnTypeCodeKind::kBinary; }
    void dropValue() noexcept;
    void copyValue(const VnIfcSelect& other);
    void moveValue(VnIfcSelect& other) noexcept;
    VN::ErrorStatus setNumber(VnTypeCodeKind kind, std::int64_t value) noexcept;

    Value m_value;
    VnTypeCodeKind m_kind = VnTypeCodeKind::kNone;
    // Fills the object up to where every compiler puts the derived class's first member.
    std::uint32_t m_reserved = 0;
};

static_assert(sizeof(VnIfcSelect) == 24);

} // namespace VN_SDAI
