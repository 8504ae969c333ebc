#include "Declarations.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace declared {

namespace fs = std::filesystem;

namespace {

/// Words, numbers and single signs, without remarks.
std::vector<std::string> tokens(const std::string& text) {
    std::vector<std::string> result;
    for (std::size_t i = 0; i < text.size();) {
        const auto isWord = [&](std::size_t at) {
            return at < text.size() && (std::isalnum(static_cast<unsigned char>(text[at])) || text[at] == '_');
        };
        const std::size_t first = i;
        if (text.compare(i, 2, "(*") == 0) {
            i = text.find("*)", i) + 2;
        } else if (std::isspace(static_cast<unsigned char>(text[i]))) {
            ++i;
        } else {
            while (isWord(i))
                ++i;
            i = std::max(i, first + 1);
            result.push_back(text.substr(first, i - first));
        }
    }
    return result;
}

class Reader {
public:
    explicit Reader(const fs::path& file) : m_file(file) {
        std::ifstream stream(file);
        if (!stream)
            throw std::runtime_error("no declarations: " + file.string());
        std::ostringstream text;
        text << stream.rdbuf();
        m_tokens = tokens(text.str());
    }

    std::string read(std::vector<Named>& types, std::vector<Entity>& entities) {
        take("SCHEMA");
        const std::string name = next();
        take(";");
        while (!skip("END_SCHEMA"))
            if (skip("TYPE"))
                types.push_back(named());
            else
                entities.push_back(entity());
        return name;
    }

private:
    const std::string& peek() const {
        static const std::string end;
        return m_at < m_tokens.size() ? m_tokens[m_at] : end;
    }
    std::string next() {
        if (m_at == m_tokens.size())
            throw std::runtime_error(m_file.string() + " ends too early");
        return m_tokens[m_at++];
    }
    bool skip(std::string_view token) {
        const bool isThere = peek() == token;
        m_at += isThere ? 1 : 0;
        return isThere;
    }
    void take(std::string_view token) {
        if (!skip(token))
            throw std::runtime_error(m_file.string() + ": expected " + std::string(token) + ", found " + peek());
    }

    std::vector<std::string> names() {
        std::vector<std::string> result;
        take("(");
        do
            result.push_back(next());
        while (skip(","));
        take(")");
        return result;
    }

    bool layer(std::vector<Layer>& layers) {
        static const std::vector<std::string> kKinds{"ARRAY", "BAG", "LIST", "SET"};
        if (std::ranges::find(kKinds, peek()) == kKinds.end())
            return false;
        Layer& layer = layers.emplace_back();
        layer.kind = lower(next());
        if (skip("[")) {
            layer.lower = next();
            take(":");
            layer.upper = next();
            take("]");
        }
        take("OF");
        layer.isUnique = skip("UNIQUE");
        return true;
    }

    Type type() {
        Type result;
        while (layer(result.layers))
            ;
        result.name = next();
        if (skip("(")) {
            result.width = next();
            take(")");
        }
        result.isFixed = skip("FIXED");
        return result;
    }

    Named named() {
        Named result;
        result.name = next();
        take("=");
        if (skip("ENUMERATION")) {
            result.kind = Named::kEnumeration;
            take("OF");
            result.items = names();
        } else if (skip("SELECT")) {
            result.kind = Named::kSelect;
            result.items = names();
        } else {
            result.underlying = type();
        }
        take(";");
        take("END_TYPE");
        take(";");
        return result;
    }

    Entity entity() {
        take("ENTITY");
        Entity result;
        result.name = next();
        result.isAbstract = skip("ABSTRACT");
        if (skip("SUPERTYPE") && skip("OF"))
            skipParentheses();
        if (skip("SUBTYPE")) {
            take("OF");
            result.supertype = names().at(0);
        }
        take(";");
        while (peek() != "DERIVE" && peek() != "INVERSE" && peek() != "UNIQUE" && peek() != "END_ENTITY")
            result.explicits.push_back(explicitAttribute());
        if (skip("DERIVE"))
            while (peek() != "INVERSE" && peek() != "UNIQUE" && peek() != "END_ENTITY")
                result.derived.push_back(derived());
        if (skip("INVERSE"))
            while (peek() != "UNIQUE" && peek() != "END_ENTITY")
                result.inverses.push_back(inverse());
        while (!skip("END_ENTITY"))
            next();
        take(";");
        return result;
    }

    void skipParentheses() {
        int depth = 0;
        do {
            depth += peek() == "(" ? 1 : peek() == ")" ? -1 : 0;
            next();
        } while (depth > 0);
    }

    Explicit explicitAttribute() {
        Explicit result;
        result.name = next();
        take(":");
        result.isOptional = skip("OPTIONAL");
        result.type = type();
        take(";");
        return result;
    }

    Derived derived() {
        Derived result;
        if (skip("SELF")) {
            take("\\");
            result.redeclaredIn = next();
            take(".");
        }
        result.name = next();
        take(":");
        result.type = type();
        take(":");
        take("=");
        take("?");
        take(";");
        return result;
    }

    Inverse inverse() {
        Inverse result;
        result.name = next();
        take(":");
        layer(result.layers);
        result.entity = next();
        take("FOR");
        result.attribute = next();
        take(";");
        return result;
    }

    fs::path m_file;
    std::vector<std::string> m_tokens;
    std::size_t m_at = 0;
};

template <class Records>
std::map<std::string, std::size_t> indexOf(const Records& records) {
    std::map<std::string, std::size_t> index;
    for (std::size_t i = 0; i < records.size(); ++i)
        if (!index.emplace(upper(records[i].name), i).second)
            throw std::runtime_error(records[i].name + " is declared twice");
    return index;
}

template <class Record>
const Record* find(const std::vector<Record>& records, const std::map<std::string, std::size_t>& index,
                   std::string_view name) {
    const auto found = index.find(upper(name));
    return found == index.end() ? nullptr : &records[found->second];
}

} // namespace

std::string upper(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char c) { return std::toupper(c); });
    return result;
}

std::string lower(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char c) { return std::tolower(c); });
    return result;
}

Schema::Schema(const fs::path& file) {
    m_name = Reader(file).read(m_types, m_entities);
    m_typeIndex = indexOf(m_types);
    m_entityIndex = indexOf(m_entities);
}

const Entity* Schema::entity(std::string_view name) const { return find(m_entities, m_entityIndex, name); }

const Named* Schema::type(std::string_view name) const { return find(m_types, m_typeIndex, name); }

std::vector<const Entity*> Schema::upwards(const Entity& entity) const {
    std::vector<const Entity*> result{&entity};
    while (!result.back()->supertype.empty()) {
        const Entity* above = this->entity(result.back()->supertype);
        if (!above || result.size() > m_entities.size())
            throw std::runtime_error(entity.name + " has no root");
        result.push_back(above);
    }
    return result;
}

bool Schema::isKindOf(const Entity& entity, std::string_view name) const {
    return std::ranges::any_of(upwards(entity), [&](const Entity* each) { return upper(each->name) == upper(name); });
}

std::vector<Parameter> Schema::parameters(const Entity& entity) const {
    std::vector<const Entity*> lineage = upwards(entity);
    std::ranges::reverse(lineage);
    std::vector<Parameter> result;
    for (const Entity* each : lineage)
        for (const Explicit& attribute : each->explicits)
            result.push_back({each, &attribute, false});
    for (const Entity* each : lineage)
        for (const Derived& derived : each->derived)
            for (Parameter& parameter : result)
                if (!derived.redeclaredIn.empty() && parameter.attribute->name == derived.name &&
                    upper(parameter.entity->name) == upper(derived.redeclaredIn))
                    parameter.isDerived = true;
    return result;
}

Type Schema::resolved(Type type) const {
    const Named* named = this->type(type.name);
    while (named && named->kind == Named::kDefined) {
        type.layers.insert(type.layers.end(), named->underlying.layers.begin(), named->underlying.layers.end());
        type.name = named->underlying.name;
        type.width = named->underlying.width;
        type.isFixed = named->underlying.isFixed;
        named = this->type(type.name);
    }
    return type;
}

Type Schema::withoutAggregateNames(Type type) const {
    const Named* named = this->type(type.name);
    while (named && named->kind == Named::kDefined) {
        const Type& underlying = named->underlying;
        if (!underlying.layers.empty()) {
            type.layers.insert(type.layers.end(), underlying.layers.begin(), underlying.layers.end());
            type.name = underlying.name;
            type.width = underlying.width;
        }
        named = this->type(underlying.name);
    }
    return type;
}

namespace {

const Schema& schemaIn(const std::string& folder) {
    static std::map<std::string, std::unique_ptr<Schema>> schemas;
    std::unique_ptr<Schema>& schema = schemas[folder];
    if (!schema)
        schema = std::make_unique<Schema>(fs::path(VNIFC_SCHEMAS) / folder / "declarations.exp");
    return *schema;
}

} // namespace

const Schema& schemaNamed(std::string_view name) {
    static const Schema toy(fs::path(VNIFC_TOY) / "declarations.exp");
    return name == toy.name() ? toy : schemaIn(lower(name));
}

} // namespace declared
