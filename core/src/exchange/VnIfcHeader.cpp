#include "SpfScan.h"

#include <VnIfcCore/VnIfcHeader.h>
#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnIfcVersion.h>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace VN_SDAI {

namespace {

bool equalNoCase(std::string_view left, std::string_view right) noexcept {
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c; };
    return std::ranges::equal(left, right, [&](char a, char b) { return upper(a) == upper(b); });
}

/// UTF-8 text as a string of the exchange form.
std::string quoted(std::string_view text) {
    std::string result = "'";
    for (const char c : vnEncodeText(text)) {
        if (c == '\'')
            result += c;
        result += c;
    }
    return result + '\'';
}

/// The strings of one parameter; [p, end) is the parameter.
void collectStrings(const char* p, const char* end, std::vector<std::string>& strings) {
    while ((p = spf::skipBlanks(p, end)) < end) {
        if (*p != '\'') {
            ++p;
            continue;
        }
        const char* behind = spf::stringEnd(p, end);
        if (!behind)
            return;
        std::string text;
        for (const char* q = p + 1; q < behind - 1;) {
            const std::size_t length = *q == '\\' ? spf::backslashLength(q, behind - 1) : 1;
            text.append(q, length);
            q += *q == '\'' ? 2 : length;
        }
        strings.push_back(std::move(text));
        p = behind;
    }
}

} // namespace

const VnIfcHeader::Entry* VnIfcHeader::find(std::string_view keyword) const noexcept {
    const auto found =
        std::ranges::find_if(m_entries, [&](const Entry& entry) { return equalNoCase(entry.keyword, keyword); });
    return found == m_entries.end() ? nullptr : &*found;
}

std::vector<std::string> VnIfcHeader::strings(std::string_view keyword, std::size_t index) const {
    std::vector<std::string> result;
    const Entry* entry = find(keyword);
    if (!entry)
        return result;
    // A closing parenthesis as end mark, so that the text has the form that the scanner knows.
    const VnSpfText text(entry->parameters + ')');
    const char* const end = text.end();
    const char* p = text.begin();
    for (; p < end; ++p) {
        const char* const last = spf::parameterEnd(p, end);
        if (index-- == 0) {
            collectStrings(p, last, result);
            break;
        }
        p = last;
    }
    return result;
}

void VnIfcHeader::set(std::string_view keyword, std::string parameters) {
    if (const Entry* entry = find(keyword)) {
        const_cast<Entry*>(entry)->parameters = std::move(parameters);
        return;
    }
    m_entries.push_back({std::string(keyword), std::move(parameters)});
}

std::string VnIfcHeader::timeStamp() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm fields{};
#if defined(_WIN32)
    gmtime_s(&fields, &now);
#else
    gmtime_r(&now, &fields);
#endif
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &fields));
}

VnIfcHeader VnIfcHeader::standard(std::string_view schema, std::string_view fileName, std::string_view timeStamp) {
    VnIfcHeader header;
    header.set("FILE_DESCRIPTION", "(''),'2;1'");
    header.set("FILE_NAME",
               quoted(fileName) + ',' + quoted(timeStamp) + ",(''),(''),'vnifc " VNIFC_VERSION "','vnifc',''");
    header.set("FILE_SCHEMA", '(' + quoted(schema) + ')');
    return header;
}

} // namespace VN_SDAI
