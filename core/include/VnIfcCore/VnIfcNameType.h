#pragma once
#include <VnIfcCore/VnIfcParameterType.h>

namespace VN_SDAI {

/// A type with a name (ISO 10303-22, named_type): a defined type or an entity.
class VNIFC_API VnIfcNameType : public VnIfcParameterType {
public:
    ~VnIfcNameType() override;

    /// In the form of its kind: "IfcLabel", "ifcwalltypeenum", "IFCWALL", "list [1:?] of IfcActorRole".
    const VnAnsiString& name() const noexcept { return m_name; }

protected:
    /// Copies the name.
    explicit VnIfcNameType(const char* name) : m_name(name) {}

private:
    VnAnsiString m_name;
};

/// Keeps a pointer of static storage in step with a record: it shows the record while that lives and is null
/// afterwards.
template <class T>
class VnIfcShownIn {
public:
    VnIfcShownIn() = default;
    ~VnIfcShownIn() {
        if (m_place && *m_place == m_record)
            *m_place = nullptr;
    }
    VnIfcShownIn(const VnIfcShownIn&) = delete;
    VnIfcShownIn& operator=(const VnIfcShownIn&) = delete;

    /// Makes `place`, which must be of static storage, point to the record.
    void show(T*& place, T* record) noexcept {
        m_place = &place;
        m_record = place = record;
    }

private:
    T** m_place = nullptr;
    T* m_record = nullptr;
};

} // namespace VN_SDAI
