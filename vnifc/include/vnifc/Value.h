#pragma once
#include <vnifc/Instance.h>

#include <concepts>
#include <initializer_list>
#include <limits>
#include <memory>
#include <ranges>
#include <utility>
#include <variant>
#include <vector>

namespace vnifc {

/// LOGICAL of EXPRESS.
enum class Logical : std::uint8_t { kFalse, kTrue, kUnknown };

/// A literal of an enumeration, without dots.
struct Literal {
    std::string text;

    friend bool operator==(const Literal&, const Literal&) = default;
};

/// A value of a defined type, as selects hold it: IFCLABEL('text').
class VNIFC_LAYER_API Typed {
public:
    /// `type` in any case: "IfcLabel".
    Typed(std::string type, Value value);

    /// As given; as the file writes it, "IFCLABEL", in values that were read.
    const std::string& type() const noexcept { return m_type; }
    const Value& value() const noexcept { return *m_value; }

    /// The types are compared without regard to case.
    VNIFC_LAYER_API friend bool operator==(const Typed& left, const Typed& right);

private:
    std::string m_type;
    std::shared_ptr<const Value> m_value;
};

/// How values are put into words.
enum class TextForm : std::uint8_t {
    kPlain,     ///< for people: text as it is, lists with commas, nothing for null, #12 for instances
    kDescribed, ///< close to a file: 'text', .LITERAL., $, lists cut, instances with entity and name
    kExchange,  ///< as an exchange file has it
};

/// A value of an attribute: null, or of one of the kinds below. Owns what it holds; nothing in it points into the
/// model but instances.
class VNIFC_LAYER_API Value {
public:
    using List = std::vector<Value>;
    using Variant =
        std::variant<std::monostate, bool, Logical, std::int64_t, double, std::string, Literal, Instance, List, Typed>;
    /// In the order of the variant.
    enum class Kind : std::uint8_t {
        kNull,
        kBoolean,
        kLogical, ///< unknown in an attribute of type LOGICAL; true and false are booleans
        kInteger,
        kReal,
        kText,
        kLiteral,
        kInstance,
        kList,
        kTyped
    };

    Value() noexcept = default;
    // Out of line: GCC 12 takes members of the variant that are not there for uninitialized when it sees through these.
    Value(const Value&);
    Value(Value&&) noexcept;
    Value& operator=(const Value&);
    Value& operator=(Value&&) noexcept;
    ~Value();

    Value(std::nullptr_t) noexcept {}
    template <std::same_as<bool> T>
    Value(T value) noexcept : m_value(value) {}
    /// True and false become booleans.
    Value(Logical value) noexcept;
    /// Throws BadValue for what 64 bits with a sign cannot hold.
    template <std::integral T>
    requires(!std::same_as<T, bool> && !std::same_as<T, char>) Value(T value)
        : m_value(static_cast<std::int64_t>(value)) {
        if (!std::in_range<std::int64_t>(value))
            tooLarge();
    }
    template <std::floating_point T>
    Value(T value) noexcept : m_value(static_cast<double>(value)) {}
    Value(std::string text) noexcept : m_value(std::move(text)) {}
    Value(std::string_view text) : m_value(std::string(text)) {}
    Value(const char* text) : m_value(std::string(text)) {}
    Value(Literal literal) noexcept : m_value(std::move(literal)) {}
    /// No instance becomes null.
    Value(const Instance& instance) noexcept {
        if (instance.id() != 0)
            m_value = instance;
    }
    Value(Typed typed) noexcept : m_value(std::move(typed)) {}
    Value(List list) noexcept : m_value(std::move(list)) {}
    /// A list; also with one element.
    Value(std::initializer_list<Value> elements) : m_value(List(elements)) {}
    /// A list of the elements of a span, vector or any other range.
    template <std::ranges::input_range R>
    requires(!std::same_as<std::remove_cvref_t<R>, Value> && !std::same_as<std::remove_cvref_t<R>, List> &&
             !std::convertible_to<R, std::string_view> &&
             std::constructible_from<Value, std::ranges::range_reference_t<R>>) Value(R&& elements) {
        List list;
        for (auto&& element : elements)
            list.emplace_back(element);
        m_value = std::move(list);
    }

    Kind kind() const noexcept { return static_cast<Kind>(m_value.index()); }
    bool isNull() const noexcept { return m_value.index() == 0; }
    /// True when it is not null.
    explicit operator bool() const noexcept { return !isNull(); }
    const Variant& variant() const noexcept { return m_value; }
    template <class Visitor>
    decltype(auto) visit(Visitor&& visitor) const {
        return std::visit(std::forward<Visitor>(visitor), m_value);
    }

    /// The value as a T, seen through defined types: bool; Logical; integers, if they are large enough; double, also
    /// from integers; std::string from text and literals; Literal; Instance; Typed; std::vector of these from lists.
    /// Nothing when it is null or of another kind.
    template <class T>
    std::optional<T> get() const;
    /// As get; throws BadValue in place of nothing.
    template <class T>
    T as() const {
        if (auto value = get<T>())
            return *std::move(value);
        throwOtherKind();
    }
    /// As get, with a value to take in place of nothing.
    template <class T>
    T valueOr(T other) const {
        return get<T>().value_or(std::move(other));
    }
    /// Without the defined types around it.
    const Value& untyped() const noexcept;

    std::string toString(TextForm form = TextForm::kPlain) const;
    /// In plain words.
    VNIFC_LAYER_API friend std::ostream& operator<<(std::ostream& stream, const Value& value);

    /// Of the same kind and equal; 1 is not equal to 1.0.
    friend bool operator==(const Value&, const Value&) = default;

private:
    [[noreturn]] static void tooLarge();
    [[noreturn]] void throwOtherKind() const;

    Variant m_value;
};

/// Typed("IfcLabel", "text") in fewer words.
inline Typed typed(std::string type, Value value) { return Typed(std::move(type), std::move(value)); }

// ---- Implementation

namespace detail {
template <class T>
inline constexpr bool isVector = false;
template <class T>
inline constexpr bool isVector<std::vector<T>> = true;
} // namespace detail

template <class T>
std::optional<T> Value::get() const {
    if constexpr (std::same_as<T, Typed>) {
        const T* held = std::get_if<T>(&m_value);
        return held ? std::optional<T>(*held) : std::nullopt;
    } else {
        const Variant& value = untyped().m_value;
        if constexpr (std::same_as<T, Value>) {
            return isNull() ? std::nullopt : std::optional<Value>(*this);
        } else if constexpr (std::same_as<T, List>) {
            const List* list = std::get_if<List>(&value);
            return list ? std::optional<List>(*list) : std::nullopt;
        } else if constexpr (detail::isVector<T>) {
            const List* list = std::get_if<List>(&value);
            if (!list)
                return std::nullopt;
            T elements;
            for (const Value& each : *list) {
                auto element = each.get<typename T::value_type>();
                if (!element)
                    return std::nullopt;
                elements.push_back(*std::move(element));
            }
            return elements;
        } else if constexpr (std::same_as<T, Logical>) {
            if (const bool* truth = std::get_if<bool>(&value))
                return *truth ? Logical::kTrue : Logical::kFalse;
            const Logical* logical = std::get_if<Logical>(&value);
            return logical ? std::optional<T>(*logical) : std::nullopt;
        } else if constexpr (std::integral<T> && !std::same_as<T, bool>) {
            const auto* number = std::get_if<std::int64_t>(&value);
            return number && std::in_range<T>(*number) ? std::optional<T>(static_cast<T>(*number)) : std::nullopt;
        } else if constexpr (std::floating_point<T>) {
            if (const auto* number = std::get_if<std::int64_t>(&value))
                return static_cast<T>(*number);
            const double* number = std::get_if<double>(&value);
            return number ? std::optional<T>(static_cast<T>(*number)) : std::nullopt;
        } else if constexpr (std::same_as<T, std::string>) {
            if (const auto* literal = std::get_if<Literal>(&value))
                return literal->text;
            const auto* text = std::get_if<std::string>(&value);
            return text ? std::optional<T>(*text) : std::nullopt;
        } else {
            const T* held = std::get_if<T>(&value);
            return held ? std::optional<T>(*held) : std::nullopt;
        }
    }
}

template <class T>
std::optional<T> Instance::get(std::string_view attribute) const {
    return (*this)[attribute].template get<T>();
}

template <class T>
std::optional<T> Instance::get(const AttributeKey& key) const {
    using enum VN_SDAI::typed::AttributeKind;
    const VN_SDAI::VnIfcEntityBase& instance = checked(key);
    const char* const member = reinterpret_cast<const char*>(&instance) + key.m_offset;
    if constexpr (std::same_as<T, double>) {
        if (key.m_kind == kReal) {
            const double value = *reinterpret_cast<const double*>(member);
            return std::isnan(value) ? std::nullopt : std::optional<T>(value);
        }
    } else if constexpr (std::same_as<T, int>) {
        if (key.m_kind == kInteger) {
            const int value = *reinterpret_cast<const int*>(member);
            return value == VN_SDAI::Consts::VnIntUnset ? std::nullopt : std::optional<T>(value);
        }
    } else if constexpr (std::same_as<T, Instance>) {
        if (key.m_kind == kReference) {
            const auto handle = *reinterpret_cast<const VN_SDAI::VnDbObjectId*>(member);
            return handle.isNull() ? std::nullopt : std::optional<T>(Instance(handle, m_state));
        }
    }
    return (*this)[key].template get<T>();
}

inline const VN_SDAI::VnIfcEntityBase& Instance::checked(const AttributeKey& key) const {
    const VN_SDAI::VnIfcEntityBase* instance = m_handle.openObject();
    if (instance && key.fits(*instance)) [[likely]]
        return *instance;
    throwUnfit(key);
}

} // namespace vnifc
