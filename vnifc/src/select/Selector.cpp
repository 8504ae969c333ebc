#include "../model/ModelState.h"
#include "../model/SimilarEntity.h"
#include "FacetImpl.h"
#include "Scanner.h"

#include <vnifc/Selector.h>

#include <VnIfcCore/VnIfcGUID.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vnifc {

using detail::Scanner;

namespace {

enum class Operator : std::uint8_t { kEqual, kUnequal, kGreater, kGreaterEqual, kLess, kLessEqual, kContains, kLacks };

constexpr std::pair<std::string_view, Operator> kOperators[] = {
    {"!*=", Operator::kLacks},    {"!=", Operator::kUnequal},  {">=", Operator::kGreaterEqual},
    {"<=", Operator::kLessEqual}, {"*=", Operator::kContains}, {"=", Operator::kEqual},
    {">", Operator::kGreater},    {"<", Operator::kLess}};

/// What somebody compares with.
struct Operand {
    std::string text;
    bool isNull = false;
    std::optional<detail::Regex> regex;
    std::optional<double> number;
    std::optional<Unit> unit; ///< then the comparison is made in SI
};

/// Values that went through a unit are equal up to what that costs.
constexpr double kRounding = 1e-9;

bool isOrder(Operator op) noexcept { return op >= Operator::kGreater && op <= Operator::kLessEqual; }

bool compares(double left, Operator op, double right, double tolerance) noexcept {
    const bool isEqual =
        left == right || std::abs(left - right) <= tolerance * std::max(std::abs(left), std::abs(right));
    switch (op) {
    case Operator::kGreater:
        return left > right && !isEqual;
    case Operator::kGreaterEqual:
        return left > right || isEqual;
    case Operator::kLess:
        return left < right && !isEqual;
    case Operator::kLessEqual:
        return left < right || isEqual;
    default:
        return isEqual;
    }
}

/// One condition on a facet.
class Condition {
public:
    Condition(Facet facet, Operator op, Operand operand)
        : m_facet(std::move(facet)), m_operator(op), m_operand(std::move(operand)) {}

    const Facet& facet() const noexcept { return m_facet; }

    bool holds(const Instance& instance) const {
        const bool excludes = m_operator == Operator::kUnequal || m_operator == Operator::kLacks;
        const std::vector<FacetValue> values = facetValues(m_facet, instance, m_operand.unit.has_value());
        if (m_operand.isNull)
            return values.empty() != excludes;
        const bool isAny =
            std::ranges::any_of(values, [&](const FacetValue& each) { return fulfils(each.value, each.unit); });
        return isAny != excludes;
    }

private:
    bool fulfils(const Value& wrapped, const Instance& unit) const {
        const Value& value = wrapped.untyped();
        if (const auto* list = std::get_if<Value::List>(&value.variant()))
            return std::ranges::any_of(*list, [&](const Value& each) { return fulfils(each, unit); });
        if (const auto* instance = std::get_if<Instance>(&value.variant()))
            return fulfilsBy(*instance);
        const bool isNumber = value.kind() == Value::Kind::kReal || value.kind() == Value::Kind::kInteger;
        if (isNumber && m_operand.number && m_operator != Operator::kContains && m_operator != Operator::kLacks)
            return fulfilsNumber(*value.get<double>(), unit);
        if (isOrder(m_operator))
            return false;
        return fulfilsText(value.toString(), value.kind());
    }

    bool fulfilsNumber(double number, const Instance& unit) const {
        if (!m_operand.unit)
            return compares(number, m_operator, *m_operand.number, 0);
        if (!unit)
            return false;
        const Unit own(unit);
        return own.dimension() == m_operand.unit->dimension() &&
               compares(own.toSi(number), m_operator, m_operand.unit->toSi(*m_operand.number), kRounding);
    }

    /// By what people call an instance.
    bool fulfilsBy(const Instance& instance) const {
        if (!instance || isOrder(m_operator))
            return false;
        return fulfilsText(instance.name(), Value::Kind::kText) ||
               fulfilsText(instance.globalId(), Value::Kind::kText) ||
               fulfilsText('#' + std::to_string(instance.id()), Value::Kind::kText);
    }

    bool fulfilsText(const std::string& text, Value::Kind kind) const {
        if (m_operand.regex)
            return m_operand.regex->matchesWhole(text);
        if (m_operator == Operator::kContains || m_operator == Operator::kLacks)
            return text.find(m_operand.text) != std::string::npos;
        // Words of the schema are taken in any case: literals, true and false.
        const bool isWord =
            kind == Value::Kind::kLiteral || kind == Value::Kind::kBoolean || kind == Value::Kind::kLogical;
        return isWord ? detail::sameName(text, m_operand.text) : text == m_operand.text;
    }

    Facet m_facet;
    Operator m_operator;
    Operand m_operand;
};

/// What picks instances by itself: a class, a GlobalId or a number.
struct Pick {
    std::string text;
    std::size_t column = 0;
    bool isClass = false;
};

struct Term {
    bool isNegated = false;
    std::variant<Pick, Condition> what;
};

using Group = std::vector<Term>;

} // namespace

struct Selector::Impl {
    std::vector<Group> groups;
};

// ---- reading a selector

namespace {

/// group {"+" group}, group = term {"," term}, term = ["!"] (class | GlobalId | number | facet operator value).
class SelectorReader {
public:
    explicit SelectorReader(std::string_view text) : m_text(text), m_scanner(text) {}

    std::vector<Group> read() {
        std::vector<Group> groups(1);
        for (;;) {
            groups.back().push_back(term());
            m_scanner.skipBlanks();
            if (m_scanner.atEnd())
                return groups;
            if (m_scanner.take("+"))
                groups.emplace_back();
            else if (!m_scanner.take(","))
                m_scanner.refuse("a comma, + or the end");
        }
    }

private:
    Term term() {
        m_scanner.skipBlanks();
        const bool isNegated = m_scanner.take("!");
        m_scanner.skipBlanks();
        if (std::optional<Pick> picked = pick())
            return {isNegated, *std::move(picked)};
        std::size_t position = m_scanner.position();
        Facet facet = Facet::takeFrom(m_text, position);
        m_scanner = Scanner(m_text, position);
        m_scanner.skipBlanks();
        const Operator op = comparison();
        m_scanner.skipBlanks();
        return {isNegated, Condition(std::move(facet), op, operand(op))};
    }

    /// A word up to a separator that is a class, a GlobalId or a number.
    std::optional<Pick> pick() {
        const std::string_view rest = m_scanner.rest();
        const std::size_t end = std::min(rest.find_first_of(",+ \t\r\n=!<>*./\""), rest.size());
        const std::string_view word = rest.substr(0, end);
        const std::size_t next = rest.find_first_not_of(" \t\r\n", end);
        const bool isCompared =
            next != rest.npos && std::string_view("=!<>*./\"").find(rest[next]) != std::string_view::npos;
        if (word.empty() || isCompared)
            return std::nullopt;
        const bool isNumber = word.size() > 1 && word[0] == '#' && word.find_first_not_of("0123456789", 1) == word.npos;
        const bool isClass = word.size() > 3 && detail::sameName(word.substr(0, 3), "Ifc");
        const bool isGlobalId =
            !isClass && VN_SDAI::VnIfcGUID(word).isValid() && word.size() == VN_SDAI::VnIfcGUID::kLength;
        if (!isNumber && !isClass && !isGlobalId)
            m_scanner.refuse("a class, a GlobalId, a number (#12), or a condition such as Name=Foo");
        Pick result{std::string(word), m_scanner.column(), isClass};
        m_scanner.skip(end);
        return result;
    }

    Operator comparison() {
        for (const auto& [text, op] : kOperators)
            if (m_scanner.take(text))
                return op;
        m_scanner.refuse("one of = != > >= < <= *= !*=");
    }

    Operand operand(Operator op) {
        const std::size_t start = m_scanner.position();
        Operand result = value(op);
        if (isOrder(op) && !result.number)
            m_scanner.refuseAt(start, "a number, perhaps with a unit");
        return result;
    }

    Operand value(Operator op) {
        Operand result;
        const std::size_t start = m_scanner.position();
        if (m_scanner.peek() == '/') {
            if (op != Operator::kEqual && op != Operator::kUnequal)
                m_scanner.refuse("text, since only = and != take a regular expression");
            result.text = m_scanner.enclosed('/', false);
            result.regex.emplace(result.text, start + 1);
            return result;
        }
        if (m_scanner.peek() == '"') {
            result.text = m_scanner.enclosed('"', true);
            return result;
        }
        result.text = word();
        if (result.text.empty())
            m_scanner.refuseAt(start, "a value");
        result.isNull = result.text == "NULL";
        if (result.isNull && op != Operator::kEqual && op != Operator::kUnequal)
            m_scanner.refuseAt(start, "text or a number, since only = and != take NULL");
        takeNumber(result);
        return result;
    }

    /// Up to the next comma or plus sign, but for that of an exponent; without blanks around it.
    std::string word() {
        const std::string_view rest = m_scanner.rest();
        std::size_t end = 0;
        while (end < rest.size() && rest[end] != ',' && (rest[end] != '+' || isExponentSign(rest, end)))
            ++end;
        m_scanner.skip(end);
        std::string_view text = rest.substr(0, end);
        text.remove_suffix(text.size() - std::min(text.size(), text.find_last_not_of(" \t\r\n") + 1));
        return std::string(text);
    }

    static bool isExponentSign(std::string_view text, std::size_t at) {
        const auto isDigit = [&](std::size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
        return at > 1 && (text[at - 1] == 'e' || text[at - 1] == 'E') && (isDigit(at - 2) || text[at - 2] == '.') &&
               isDigit(at + 1);
    }

    static void takeNumber(Operand& operand) {
        const char* const end = operand.text.data() + operand.text.size();
        double number = 0;
        const auto [stop, error] = std::from_chars(operand.text.data(), end, number);
        if (error != std::errc() || !std::isfinite(number))
            return;
        std::string_view sign(stop, static_cast<std::size_t>(end - stop));
        sign.remove_prefix(std::min(sign.find_first_not_of(' '), sign.size()));
        if (!sign.empty()) {
            try {
                operand.unit.emplace(sign);
            } catch (const BadValue&) {
                return; // a text that begins with digits
            }
        }
        operand.number = number;
    }

    std::string_view m_text;
    Scanner m_scanner;
};

// ---- picking

/// Handles of a model, ascending, each once.
using Handles = std::vector<VN_SDAI::VnDbObjectId>;

class Evaluation {
public:
    explicit Evaluation(const Model& model) : m_model(model) {}

    Handles run(const std::vector<Group>& groups) const {
        Handles all;
        for (const Group& group : groups) {
            Handles picked = run(group);
            all = all.empty() ? std::move(picked) : merged(all, picked);
        }
        return all;
    }

private:
    Handles run(const Group& group) const {
        Handles found = candidates(group);
        std::vector<const Term*> conditions;
        for (const Term& term : group) {
            if (const auto* pick = std::get_if<Pick>(&term.what)) {
                if (term.isNegated)
                    found = without(found, handlesOf(*pick));
            } else {
                std::get<Condition>(term.what).facet().check(m_model);
                conditions.push_back(&term);
            }
        }
        std::erase_if(found, [&](const VN_SDAI::VnDbObjectId& handle) {
            const Instance instance = m_model.wrap(handle);
            return !instance || !std::ranges::all_of(conditions, [&](const Term* term) {
                return std::get<Condition>(term->what).holds(instance) != term->isNegated;
            });
        });
        return found;
    }

    /// What is picked before conditions count.
    Handles candidates(const Group& group) const {
        std::optional<Handles> found;
        for (const Term& term : group) {
            const auto* pick = std::get_if<Pick>(&term.what);
            if (!pick || term.isNegated)
                continue;
            Handles picked = handlesOf(*pick);
            found = found ? merged(*found, picked) : std::move(picked);
        }
        return found ? *std::move(found) : handlesOf(m_model.instances("IfcObjectDefinition"));
    }

    Handles handlesOf(const Pick& pick) const {
        if (!pick.isClass)
            return {m_model.at(pick.text).core()};
        try {
            return handlesOf(m_model.instances(pick.text));
        } catch (const NotFound&) {
            throw SelectorError(pick.column, pick.text,
                                "a class of " + std::string(m_model.release()) + " or of the file" +
                                    detail::similarEntity(*m_model.core().schema(), pick.text),
                                true);
        }
    }
    static Handles handlesOf(const InstanceRange& range) {
        Handles handles;
        for (const Instance& instance : range)
            handles.push_back(instance.core());
        return handles;
    }
    static Handles merged(const Handles& left, const Handles& right) {
        Handles result;
        std::set_union(left.begin(), left.end(), right.begin(), right.end(), std::back_inserter(result));
        return result;
    }
    static Handles without(const Handles& left, const Handles& right) {
        Handles result;
        std::set_difference(left.begin(), left.end(), right.begin(), right.end(), std::back_inserter(result));
        return result;
    }

    const Model& m_model;
};

} // namespace

Selector::Selector(std::string_view text) : m_impl(new Impl{SelectorReader(text).read()}) {}
Selector::~Selector() = default;
Selector::Selector(Selector&&) noexcept = default;
Selector& Selector::operator=(Selector&&) noexcept = default;

InstanceRange Selector::select(const Model& model) const {
    return {std::make_shared<const Handles>(Evaluation(model).run(m_impl->groups)), model.wrap({}).state()};
}

InstanceRange select(const Model& model, std::string_view selector) { return Selector(selector).select(model); }

} // namespace vnifc
