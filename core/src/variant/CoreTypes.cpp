#include "Conversions.h"
#include "ExchangeText.h"

#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>

#include <array>

// The descriptors of the core's own types.
namespace VN_SDAI {

namespace {

template <class T>
constexpr const wchar_t* kName = nullptr;
template <>
constexpr const wchar_t* kName<int> = L"int";
template <>
constexpr const wchar_t* kName<double> = L"double";
template <>
constexpr const wchar_t* kName<unsigned long> = L"unsigned long";
template <>
constexpr const wchar_t* kName<const char*> = L"char const*";
template <>
constexpr const wchar_t* kName<VnAnsiString> = L"VN_SDAI::VnAnsiString";
template <>
constexpr const wchar_t* kName<VrString> = L"VrString";
template <>
constexpr const wchar_t* kName<VnDbObjectId> = L"VN_SDAI::VnDbObjectId";
template <>
constexpr const wchar_t* kName<VnIfcBoolean> = L"VN_SDAI::VnIfcBoolean";
template <>
constexpr const wchar_t* kName<VnIfcLogical> = L"VN_SDAI::VnIfcLogical";
template <>
constexpr const wchar_t* kName<VnIfcGUID> = L"VN_SDAI::VnIfcGUID";
template <>
constexpr const wchar_t* kName<VnIfcEnumDescription> = L"VN_SDAI::VnIfcEnumDescription";
template <>
constexpr const wchar_t* kName<VnIfcSelect*> = L"VN_SDAI::VnIfcSelect*";
template <>
constexpr const wchar_t* kName<VnIfcAggr*> = L"VN_SDAI::VnIfcAggr*";
template <>
constexpr const wchar_t* kName<VnIfcVariant> = L"VN_SDAI::VnIfcVariant";

// ---- single values

template <class T>
T unsetValue() {
    if constexpr (std::is_same_v<T, int>)
        return Consts::VnIntUnset;
    else if constexpr (std::is_same_v<T, double>)
        return Consts::VnRealUnset;
    else if constexpr (std::is_same_v<T, const char*>)
        return Consts::VnStringUnset;
    else if constexpr (std::is_same_v<T, VnAnsiString>)
        return VnUnsetText;
    else
        return T{};
}

template <class T>
bool areEqual(const T& left, const T& right) noexcept {
    if constexpr (std::is_same_v<T, double>)
        return left == right || (left != left && right != right);
    else if constexpr (std::is_same_v<T, const char*>)
        return left == right || (left && right && std::strcmp(left, right) == 0);
    else
        return left == right;
}

constexpr VnIfcVariantStorage kTextPointerStorage{
    [](const VnIfcVariantType&, void* payload, const void* value) {
        ::new (payload) TextPointer(value ? *static_cast<const char* const*>(value) : nullptr);
    },
    vnIfcInsideStorage<TextPointer>.copy, vnIfcInsideStorage<TextPointer>.destroy};

template <class T>
constexpr const VnIfcVariantStorage* storageOf() noexcept {
    if constexpr (std::is_same_v<T, const char*>)
        return &kTextPointerStorage;
    else if constexpr (std::is_same_v<T, VrString>)
        return &vnIfcHeapStorage;
    else if constexpr (std::is_trivially_copyable_v<T>)
        return nullptr;
    else
        return &vnIfcInsideStorage<T>;
}

/// What can be converted to `To`, put into its place in a variant.
template <class To, class From>
bool convert(const From& from, To& to) {
    if constexpr (isText<From> && !isSimple<To>) {
        std::string buffer;
        const auto text = exchangeText(from, buffer);
        return text && fromExchangeText(*text, to);
    } else if constexpr (isText<From>) {
        std::string buffer;
        const auto text = exchangeText(from, buffer);
        return text && fromExchangeForm(*text, to);
    } else if constexpr (requires { widen(From{}, static_cast<To&>(to)); }) {
        return widen(from, to);
    } else if constexpr (isSimple<From> && !isSimple<To>) {
        const std::string form = exchangeForm(from);
        return !form.empty() && fromExchangeText(form, to);
    } else {
        return false;
    }
}

template <class To, class From>
bool convertIf(const VnIfcVariantType& target, const From& from, VnIfcVariant& result) {
    if (&target != &VnIfcVariantType::Desc<To>::value())
        return false;
    using Place = std::conditional_t<std::is_same_v<To, const char*>, TextPointer, To>;
    VnIfcVariant converted(target, nullptr);
    if (!convert(from, *static_cast<Place*>(converted.payload())))
        return false;
    result = std::move(converted);
    return true;
}

/// Numbers, booleans, logicals and texts.
template <class T>
class SingleType : public VnIfcVariantType {
public:
    SingleType() : VnIfcVariantType(kName<T>, sizeof(T), nullptr, nullptr, storageOf<T>()) {}

    bool subEqualTo(const void* left, const void* right) const override {
        return areEqual(valueAt(left), valueAt(right));
    }
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override {
        return convertToAny<int, double, unsigned long, VnIfcBoolean, VnIfcLogical, const char*, VnAnsiString, VrString,
                            VnIfcGUID>(target, valueAt(source.payload()), result);
    }
    bool subToString(VrString& text, const void* value, StringFormat format) const override {
        if (!value)
            return false;
        print(text, valueAt(value), format);
        return true;
    }
    bool createVariant(VnIfcVariant& value) const override {
        value = VnIfcVariant(unsetValue<T>());
        return true;
    }

private:
    static const T& valueAt(const void* value) noexcept { return *static_cast<const T*>(value); }

    template <class... To>
    static bool convertToAny(const VnIfcVariantType& target, const T& from, VnIfcVariant& result) {
        return (convertIf<To>(target, from, result) || ...);
    }

    static void print(VrString& text, const T& value, StringFormat format) {
        const char* const unset = format == StringFormat::kExchange ? "$" : "";
        if constexpr (isSimple<T>) {
            const std::string form = exchangeForm(value);
            text.assign(form.empty() ? unset : form);
        } else {
            std::string encoded;
            const auto exchange = exchangeText(value, encoded);
            if (!exchange || *exchange == VnUnsetText.text) {
                text.assign(unset);
            } else if (format == StringFormat::kExchange) {
                ExchangeText quoted;
                quoted.wrPrimitive(VnAnsiString(*exchange));
                text.assign(quoted.output());
            } else {
                std::string decoded;
                text.assign(vnDecodeText(*exchange, decoded));
            }
        }
    }
};

/// Unicode strings are too large to stand in a variant.
class UnicodeType final : public SingleType<VrString>, public IVnIfcVariantTypeObjectAllocator {
public:
    using SingleType<VrString>::SingleType;
    const IVnIfcVariantTypeObjectAllocator* objectMemAllocator() const noexcept override { return this; }
    void* create() const override { return new VrString; }
    void* copy(const void* object) const override { return new VrString(*static_cast<const VrString*>(object)); }
    void destroy(void* object) const noexcept override { delete static_cast<VrString*>(object); }
};

/// Handles, which nothing but selects converts to or from.
class HandleType final : public VnIfcVariantType {
public:
    HandleType() : VnIfcVariantType(kName<VnDbObjectId>, sizeof(VnDbObjectId)) {}
    bool subToString(VrString& text, const void* value, StringFormat format) const override {
        if (!value)
            return false;
        const auto& handle = *static_cast<const VnDbObjectId*>(value);
        ExchangeText exchange;
        exchange.wrPrimitive(handle);
        text.assign(handle.isNull() && format == StringFormat::kPlain ? std::string_view() : exchange.output());
        return true;
    }
    bool createVariant(VnIfcVariant& value) const override {
        value = VnIfcVariant(VnDbObjectId());
        return true;
    }
};

/// Enumerators, which convert to their names and codes.
class EnumDescriptionType final : public VnIfcVariantType {
public:
    EnumDescriptionType() : VnIfcVariantType(kName<VnIfcEnumDescription>, sizeof(VnIfcEnumDescription)) {}
    bool subEqualTo(const void* left, const void* right) const override { return valueAt(left) == valueAt(right); }
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override {
        const VnIfcEnumDescription& value = valueAt(source.payload());
        if (!value.name())
            return false;
        const VnIfcVariant name(*value.name()), code(value.index);
        return name.type()->toValueType(target, name, result) || code.type()->toValueType(target, code, result);
    }
    bool subToString(VrString& text, const void* value, StringFormat) const override {
        if (!value)
            return false;
        const VnAnsiString* name = valueAt(value).name();
        text.assign(name ? name->constStr() : nullptr);
        return true;
    }
    bool createVariant(VnIfcVariant& value) const override {
        value = VnIfcVariant(VnIfcEnumDescription());
        return true;
    }

private:
    static const VnIfcEnumDescription& valueAt(const void* value) noexcept {
        return *static_cast<const VnIfcEnumDescription*>(value);
    }
};

// ---- pointers to any select or aggregate

class AnySelectType final : public VnIfcSelectPtrValueTypeBase {
public:
    AnySelectType() : VnIfcSelectPtrValueTypeBase("VN_SDAI", "VnIfcSelect") {}
    bool accepts(const VnIfcSelect&) const noexcept override { return true; }

protected:
    std::shared_ptr<VnIfcSelect> createSelect() const override { return nullptr; }
};

class AnyAggregateType final : public VnIfcAggrPtrVariantType {
public:
    AnyAggregateType() : VnIfcAggrPtrVariantType(kName<VnIfcAggr*>) {}

    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override {
        return VnIfcAggrPtrVariantType::subToValueType(target, source, result) ||
               (aggregateAt(source.payload()) && toArray(target, source.payload(), result));
    }
    VnIfcVariant elementOf(const void* value, std::uint32_t index) const override {
        VnIfcAggr& aggregate = *aggregateAt(value);
        const char* const first = static_cast<const char*>(aggregate.imp().data());
        void* const element = const_cast<char*>(first + std::size_t{index} * aggregate.imp().elementSize());
        switch (aggregate.elementKind()) {
        case VnTypeCodeKind::kEntity:
            return *static_cast<VnDbObjectId*>(element);
        case VnTypeCodeKind::kReal:
            return *static_cast<double*>(element);
        case VnTypeCodeKind::kInteger:
            return *static_cast<int*>(element);
        case VnTypeCodeKind::kString:
            return *static_cast<VnAnsiString*>(element);
        case VnTypeCodeKind::kAggregation:
            return static_cast<VnIfcAggr*>(element);
        case VnTypeCodeKind::kSelect:
            return static_cast<VnIfcSelect*>(element);
        default:
            return {};
        }
    }

protected:
    const VnIfcVariantType* arrayType() const override { return nullptr; }
    void exportTo(void*, const VnIfcAggr&) const override {}
};

// ---- the slots

constinit std::atomic<std::size_t> living{0};

/// Which class describes T, and under which name where it does not know itself.
template <class T>
struct Maker {
    static VnIfcVariantType* make() { return new SingleType<T>(); }
};
template <>
struct Maker<VrString> {
    static VnIfcVariantType* make() { return new UnicodeType(); }
};
template <>
struct Maker<VnDbObjectId> {
    static VnIfcVariantType* make() { return new HandleType(); }
};
template <>
struct Maker<VnIfcEnumDescription> {
    static VnIfcVariantType* make() { return new EnumDescriptionType(); }
};
template <>
struct Maker<VnIfcSelect*> {
    static VnIfcVariantType* make() { return new AnySelectType(); }
};
template <>
struct Maker<VnIfcAggr*> {
    static VnIfcVariantType* make() { return new AnyAggregateType(); }
};
template <class T>
struct Maker<VnIfcArray<T>> {
    static std::wstring name() { return std::wstring(L"SDAI_NAMESPACE_PFX VnIfcArray<") + elementName<T>() + L">"; }
    static VnIfcVariantType* make() { return new VnIfcVariantTypeForObject<VnIfcArray<T>>(name().c_str()); }
    template <class E>
    static std::wstring elementName() {
        if constexpr (requires { Maker<E>::name(); })
            return Maker<E>::name();
        else
            return kName<E>;
    }
};
template <class T>
struct Maker<VnIfcSetAggr<T>*> {
    static VnIfcVariantType* make() {
        const std::wstring name = std::wstring(L"::VN_SDAI:: VnIfcSetAggr<") + kName<T> + L">*";
        return new VnIfcSetAggrPtrVariantTypePOD<VnIfcSetAggr<T>*>(name.c_str());
    }
};
template <class T>
struct Maker<VnIfcListAggr<T>*> {
    static VnIfcVariantType* make() {
        const std::wstring name = std::wstring(L"::VN_SDAI:: VnIfcListAggr<") + kName<T> + L">*";
        return new VnIfcListAggrPtrVariantTypePOD<VnIfcListAggr<T>*>(name.c_str());
    }
};
template <class T>
struct Maker<VnIfcListAggrCompound<VnIfcListAggr<T>>*> {
    using List = VnIfcListAggrCompound<VnIfcListAggr<T>>;
    static VnIfcVariantType* make() {
        const std::wstring name =
            std::wstring(L"::VN_SDAI:: VnIfcListAggrCompound<VN_SDAI::VnIfcListAggr<") + kName<T> + L">>*";
        return new VnIfcListAggrPtrVariantTypePOD<List*>(name.c_str());
    }
};

template <class List>
struct Slots;
template <class... T>
struct Slots<VnIfcTypeList<T...>> {
    static constinit inline std::array<VnIfcVariantTypeSlot, sizeof...(T)> value{
        VnIfcVariantTypeSlot(&Maker<T>::make, true, living)...};
};

} // namespace

VnIfcVariantTypeSlot& vnIfcCoreTypeSlot(std::size_t index) noexcept { return Slots<VnIfcCoreTypes>::value[index]; }

} // namespace VN_SDAI
