#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc::conversion {

/// A value as it stands in a parameter list (ISO 10303-21, 12.2), in the form of the file: conversion is done on this
/// form, because it is the one that all releases share.
struct Value {
    enum class Kind : std::uint8_t {
        kUnset,     ///< "$"
        kDerived,   ///< "*"
        kReference, ///< `number`
        kString,    ///< `text` with its apostrophes
        kNumber,    ///< `text` as it was written
        kLiteral,   ///< `text` without its dots
        kBinary,    ///< `text` with its quotes
        kTyped,     ///< `text` is the keyword, `items` what stands between the parentheses
        kList,      ///< `items`
        kOpaque,    ///< `text`, which is none of these
    };

    Kind kind = Kind::kUnset;
    std::string text;
    std::uint64_t number = 0;
    std::vector<Value> items;

    bool is(Kind other) const noexcept { return kind == other; }
    bool isSet() const noexcept { return kind != Kind::kUnset && kind != Kind::kDerived; }

    static Value unset() { return {}; }
    static Value derived() { return {Kind::kDerived, {}, 0, {}}; }
    static Value reference(std::uint64_t number) { return {Kind::kReference, {}, number, {}}; }
    /// `text` in the form of the file, without the outer apostrophes.
    static Value string(std::string_view text) { return {Kind::kString, '\'' + std::string(text) + '\'', 0, {}}; }
    static Value literal(std::string_view word) { return {Kind::kLiteral, std::string(word), 0, {}}; }
    static Value integer(std::int64_t value) { return {Kind::kNumber, std::to_string(value), 0, {}}; }
    /// In the shortest form that reads back the same.
    static Value real(double value);
    static Value typed(std::string_view keyword, Value value);
    static Value list(std::vector<Value> items) { return {Kind::kList, {}, 0, std::move(items)}; }

    /// The text of a string without its apostrophes; of other kinds, their own text.
    std::string_view content() const noexcept;
    /// Reads a number; false, and `value` untouched, for what is none.
    bool toReal(double& value) const noexcept;
};

using Values = std::vector<Value>;

/// Appends the value in the form of the file.
void write(std::string& out, const Value& value);
void write(std::string& out, const Values& list);
std::string textOf(const Value& value);
/// The value in the form of the file, cut to a length that people read.
std::string shown(const Value& value);

/// Takes apart the parameters of an instance, without the outer parentheses. False when they cannot be told apart,
/// which only texts that a reader could not take either can bring about.
bool parseList(std::string_view text, Values& values);

/// Calls `visit` with every number that the text may refer to; what looks like a reference in a string is one, too.
template <class Visit>
void forEachReference(std::string_view text, Visit visit) {
    for (std::size_t i = text.find('#'); i < text.size(); i = text.find('#', i)) {
        std::uint64_t number = 0;
        while (++i < text.size() && text[i] >= '0' && text[i] <= '9')
            number = number * 10 + static_cast<std::uint64_t>(text[i] - '0');
        visit(number);
    }
}

/// Calls `visit` with every reference in a value.
template <class Visit>
void forEachReference(const Value& value, Visit visit) {
    if (value.is(Value::Kind::kReference))
        visit(value.number);
    for (const Value& each : value.items)
        forEachReference(each, visit);
}

} // namespace vnifc::conversion
