#include "Release.h"

#include "ExpressError.h"
#include "Text.h"

#include <charconv>

namespace expgen {
namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

/// Takes the first word off a text.
std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    text = trimmed(text);
    return word;
}

class Reader {
public:
    explicit Reader(std::string_view file) : m_file(file) {}

    Release read(std::string_view text) {
        while (!text.empty()) {
            ++m_line;
            const std::size_t end = text.find('\n');
            readLine(trimmed(text.substr(0, end)));
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        }
        require(m_release.name, "name");
        require(m_release.module, "module");
        require(m_release.package, "package");
        require(m_release.title, "title");
        require(m_release.version[0], "version");
        return std::move(m_release);
    }

private:
    [[noreturn]] void fail(std::string_view found, std::string_view expected) const {
        throw ExpressError(m_file, {m_line, 1}, '"' + std::string(found) + '"', expected);
    }

    void require(const std::string& value, std::string_view keyword) const {
        if (value.empty())
            fail("", "a line \"" + std::string(keyword) + " ...\"");
    }

    void readLine(std::string_view line) {
        if (line.empty() || line.front() == '#')
            return;
        std::string_view value = line;
        const std::string_view keyword = takeWord(value);
        if (keyword == "name")
            m_release.name = value;
        else if (keyword == "module")
            m_release.module = value;
        else if (keyword == "package")
            m_release.package = value;
        else if (keyword == "title")
            m_release.title = value;
        else if (keyword == "version")
            readVersion(value);
        else if (keyword == "serves")
            readServed(value);
        else if (keyword == "plain-entry-points")
            m_release.isPlain = true;
        else if (keyword == "total")
            readTotal(value);
        else
            fail(keyword, "name, module, package, title, version, serves, plain-entry-points or total");
    }

    void readVersion(std::string_view value) {
        m_release.version[0] = takeWord(value);
        m_release.version[1] = value;
        if (m_release.version[1].empty())
            fail(value, "enumerators of a major and a minor version");
    }

    void readServed(std::string_view value) {
        ServedName name{upper(takeWord(value))};
        if (name.text.ends_with('*')) {
            name.text.pop_back();
            name.isPrefix = true;
        }
        name.differs = value == "differs";
        if (name.text.empty() || (!value.empty() && !name.differs))
            fail(value, "a name or the beginning of names, and \"differs\" or nothing");
        m_release.serves.push_back(std::move(name));
    }

    // "entities without attributes 107": the number is the last word.
    void readTotal(std::string_view value) {
        const std::size_t space = value.rfind(' ');
        const std::string_view digits = space == std::string_view::npos ? value : value.substr(space + 1);
        std::size_t count = 0;
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), count);
        if (space == std::string_view::npos || read.ec != std::errc() || read.ptr != digits.data() + digits.size())
            fail(value, "what is counted, and a number");
        m_release.totals[std::string(trimmed(value.substr(0, space)))] = count;
    }

    std::string m_file;
    int m_line = 0;
    Release m_release;
};

} // namespace

std::string Release::entryPoints() const { return lower(module.substr(0, 1)) + module.substr(1) + "Module"; }

Release readRelease(std::string_view file, std::string_view text) { return Reader(file).read(text); }

std::string emitCatalogue(const std::vector<Release>& releases) {
    std::string text = "// Made by expgen from the facts of the releases; do not edit.\n"
                       "#include <VnIfcCore/VnIfcRelease.h>\n\nnamespace VN_SDAI {\nnamespace {\n\n";
    const auto quoted = [](const std::string& value) { return '"' + value + '"'; };
    for (const Release& release : releases) {
        text += "constexpr VnIfcServedName names_" + release.name + "[] = {\n";
        for (const ServedName& name : release.serves)
            text += "    {" + quoted(name.text) + (name.isPrefix ? ", true" : ", false") +
                    (name.differs ? ", true},\n" : ", false},\n");
        text += "};\n\n";
    }
    text += "constexpr VnIfcRelease table[] = {\n";
    for (const Release& release : releases)
        text += "    {" + quoted(release.name) + ", " + quoted(release.module) + ", " + quoted(release.package) +
                ",\n     " + quoted(release.title) + ", names_" + release.name + "},\n";
    text += "};\n\n} // namespace\n\n"
            "std::span<const VnIfcRelease> vnIfcReleases() noexcept { return table; }\n\n} // namespace VN_SDAI\n";
    return text;
}

} // namespace expgen
