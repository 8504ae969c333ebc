// Grows an exchange file to a given size: writes its data section again and again, each time with all instance numbers
// shifted, so that the result has the character of the original.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

struct Sections {
    std::string_view head;
    std::string_view data;
};

Sections split(std::string_view text) {
    const std::size_t data = text.find("DATA;");
    const std::size_t end = data == text.npos ? text.npos : text.rfind("ENDSEC;");
    if (end == text.npos || end < data)
        throw std::string("there is no data section");
    return {text.substr(0, data + 5), text.substr(data + 5, end - data - 5)};
}

/// Appends `data` with `shift` added to every number after a "#" that is not in a string, times `factor`.
void appendShifted(std::string& out, std::string_view data, unsigned long long shift, unsigned long long factor) {
    bool inString = false;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const char c = data[i];
        out += c;
        if (c == '\'')
            inString = !inString;
        if (c == '\\' && inString && data.substr(i, 3) == "\\S\\" && i + 3 < data.size()) {
            out += data.substr(i + 1, 3);
            i += 3;
        }
        if (inString || c != '#')
            continue;
        unsigned long long number = 0;
        const auto [end, error] = std::from_chars(data.data() + i + 1, data.data() + data.size(), number);
        if (error != std::errc())
            continue;
        out += std::to_string((number + shift) * factor);
        i = static_cast<std::size_t>(end - data.data()) - 1;
    }
}

unsigned long long largestNumber(std::string_view data) {
    unsigned long long largest = 0;
    for (std::size_t i = data.find('#'); i != data.npos; i = data.find('#', i + 1)) {
        unsigned long long number = 0;
        if (std::from_chars(data.data() + i + 1, data.data() + data.size(), number).ec == std::errc() &&
            number < 1ull << 40)
            largest = std::max(largest, number);
    }
    return largest;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 4 && argc != 5) {
        std::fputs("usage: vnifc_grow IN OUT MEGABYTES [FACTOR]   (FACTOR makes the instance numbers sparse)\n",
                   stderr);
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    if (!in)
        throw std::string("cannot read it");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    const Sections sections = split(text);
    const unsigned long long step = largestNumber(sections.data);
    const unsigned long long factor = argc == 5 ? std::strtoull(argv[4], nullptr, 10) : 1;
    const std::size_t wanted = std::strtoull(argv[3], nullptr, 10) * 1000 * 1000;
    std::ofstream out(argv[2], std::ios::binary);
    out << sections.head;
    std::string copy;
    std::size_t written = sections.head.size();
    for (unsigned long long shift = 0; written < wanted; shift += step) {
        copy.clear();
        appendShifted(copy, sections.data, shift, factor);
        out << copy;
        written += copy.size();
    }
    out << "ENDSEC;\nEND-ISO-10303-21;\n";
    return out.flush() ? 0 : 3;
} catch (const std::string& message) {
    std::fprintf(stderr, "%s: %s\n", argv[1], message.c_str());
    return 3;
}
