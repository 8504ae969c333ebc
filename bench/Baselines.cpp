#include "Baselines.h"

namespace bench {

namespace {

const char* skipString(const char* p, const char* end) noexcept {
    for (++p; p < end; ++p) {
        if (*p != '\'')
            continue;
        if (p + 1 < end && p[1] == '\'')
            ++p;
        else
            return p + 1;
    }
    return end;
}

const char* skipComment(const char* p, const char* end) noexcept {
    for (p += 2; p + 1 < end; ++p)
        if (p[0] == '*' && p[1] == '/')
            return p + 2;
    return end;
}

bool isDelimiter(char c) noexcept {
    return c == ',' || c == '(' || c == ')' || c == ';' || c == '=' || static_cast<unsigned char>(c) <= ' ';
}

} // namespace

std::size_t scan(std::string_view text) noexcept {
    std::size_t lines = 0;
    for (const char c : text)
        lines += c == '\n';
    return lines;
}

Tokens tokenize(std::string_view text) noexcept {
    Tokens tokens;
    std::uint64_t depth = 0;
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p < end) {
        switch (*p) {
        case '#': {
            std::uint64_t number = 0;
            for (++p; p < end && *p >= '0' && *p <= '9'; ++p)
                number = number * 10 + static_cast<std::uint64_t>(*p - '0');
            tokens.references += number != 0;
            break;
        }
        case '\'':
            p = skipString(p, end);
            ++tokens.strings;
            break;
        case '(':
            ++depth;
            ++tokens.lists;
            ++p;
            break;
        case ')':
            --depth;
            ++p;
            break;
        case '=':
            ++tokens.instances;
            ++p;
            break;
        case '/':
            p = p + 1 < end && p[1] == '*' ? skipComment(p, end) : p + 1;
            break;
        default:
            if (isDelimiter(*p)) {
                ++p;
            } else {
                ++tokens.others;
                while (p < end && !isDelimiter(*p))
                    ++p;
            }
        }
    }
    tokens.others += depth;
    return tokens;
}

} // namespace bench
