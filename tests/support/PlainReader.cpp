#include "PlainReader.h"

#include <cctype>
#include <cstdlib>

namespace plain {

namespace {

class Reader {
public:
    explicit Reader(std::string_view text) : m_text(text) {}

    File read() {
        File file;
        m_at = std::min(m_text.find("HEADER"), m_text.size());
        skipPast(';');
        for (skip(); !atEnd() && !isAt("ENDSEC") && !isAt("DATA"); skip()) {
            const std::string keyword = word();
            const std::size_t open = m_at;
            list();
            file.header.emplace_back(keyword, m_text.substr(open, m_at - open));
            skipPast(';');
        }
        m_at = std::min(m_text.find("DATA", m_at), m_text.size());
        skipPast(';');
        for (skip(); !atEnd() && !isAt("ENDSEC"); skip())
            if (m_text[m_at] == '#')
                instance(file);
            else
                skipPast('\n'); // garbage
        return file;
    }

private:
    bool atEnd() const { return m_at >= m_text.size(); }
    char next() const { return atEnd() ? '\0' : m_text[m_at]; }
    bool isAt(std::string_view word) const { return m_text.substr(m_at, word.size()) == word; }
    void skipPast(char c) { m_at = std::min(m_text.find(c, m_at), m_text.size() - 1) + 1; }

    void skip() {
        while (!atEnd())
            if (isAt("/*"))
                m_at = std::min(m_text.find("*/", m_at), m_text.size() - 2) + 2;
            else if (std::isspace(static_cast<unsigned char>(next())) || next() == '\0')
                ++m_at;
            else
                return;
    }

    std::string word() {
        std::string result;
        while (std::isalnum(static_cast<unsigned char>(next())) || next() == '_' || next() == '-')
            result += static_cast<char>(std::toupper(static_cast<unsigned char>(m_text[m_at++])));
        skip();
        return result;
    }

    void instance(File& file) {
        ++m_at;
        const std::uint64_t number = std::strtoull(m_text.data() + m_at, nullptr, 10);
        skipPast('=');
        skip();
        const std::size_t first = m_at;
        Instance instance;
        instance.keyword = word();
        const std::size_t open = m_at;
        if (next() == '(')
            instance.parameters = list();
        if (instance.keyword.empty() || open == m_at)
            instance.text = m_text.substr(first, m_at - first);
        skipPast(';');
        if (!file.instances.emplace(number, std::move(instance)).second)
            ++file.doubles;
    }

    /// The values in parentheses. Values without a comma between them are values of their own.
    std::vector<Value> list() {
        std::vector<Value> values;
        ++m_at;
        skip();
        bool needsValue = false;
        while (!atEnd() && next() != ')') {
            if (next() == ',') {
                if (needsValue || values.empty())
                    values.emplace_back();
                needsValue = true;
                ++m_at;
            } else {
                values.push_back(value());
                needsValue = false;
            }
            skip();
        }
        if (needsValue)
            values.emplace_back();
        ++m_at;
        return values;
    }

    Value value() {
        Value result;
        const std::size_t first = m_at;
        if (next() == '(') {
            result.kind = Value::kList;
            result.values = list();
        } else if (next() == '\'') {
            result.kind = Value::kString;
            string();
        } else if (std::isalpha(static_cast<unsigned char>(next()))) {
            result.kind = Value::kTyped;
            result.text = word();
            if (next() == '(')
                result.values = list();
            return result;
        } else {
            token(result);
        }
        result.text = m_text.substr(first, m_at - first);
        return result;
    }

    void token(Value& result) {
        result.kind = Value::kToken;
        const char first = next();
        if (first == '$' || first == '*') {
            ++m_at;
        } else if (first == '"' || first == '.') {
            m_at = std::min(m_text.find(first, m_at + 1), m_text.size() - 1) + 1;
        } else {
            const char* begin = m_text.data() + m_at;
            char* end = nullptr;
            result.number = std::strtod(begin, &end);
            if (end != begin)
                result.kind = Value::kNumber;
            if (first == '#')
                end = const_cast<char*>(begin) + 1;
            m_at += end != begin ? static_cast<std::size_t>(end - begin) : 1;
            while (first == '#' && std::isdigit(static_cast<unsigned char>(next())))
                ++m_at;
        }
    }

    void string() {
        for (++m_at; !atEnd(); ++m_at)
            if (isAt("\\S\\"))
                m_at += 3;
            else if (isAt("\\\\") || isAt("''"))
                ++m_at;
            else if (next() == '\'')
                break;
        ++m_at;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

} // namespace

File read(std::string_view text) { return Reader(text).read(); }

} // namespace plain
