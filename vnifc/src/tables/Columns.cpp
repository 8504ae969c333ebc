#include <vnifc/Columns.h>

#include <VnRx/VrString.h>

namespace vnifc {

namespace {

/// True when all bytes are ASCII, which is the common case.
bool isAscii(std::string_view text) noexcept {
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (; i + sizeof seen <= text.size(); i += sizeof seen) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + i, sizeof word);
        seen |= word;
    }
    for (; i < text.size(); ++i)
        seen |= static_cast<unsigned char>(text[i]);
    return (seen & 0x8080808080808080U) == 0;
}

std::string_view validText(std::string_view text, std::string& buffer) {
    if (isAscii(text))
        return text;
    buffer.clear();
    const char* const end = text.data() + text.size();
    for (const char* next = text.data(); next < end;) {
        const char32_t character = VrString::readCharacter(next, end);
        VrString::appendCharacter(buffer, character == VrString::kNoCharacter ? VrString::kReplacement : character);
    }
    return buffer;
}

} // namespace

Column::Column(std::string name, ColumnKind kind) : m_name(std::move(name)), m_kind(kind) {
    if (kind == ColumnKind::kText || kind == ColumnKind::kList)
        m_offsets.push(std::int64_t{0});
    if (kind == ColumnKind::kCategory)
        m_child = std::make_unique<Column>("", ColumnKind::kText);
}

void Column::count(bool isValid) {
    // Most columns have a value everywhere: bits come with the first null.
    if (!isValid && m_nulls++ == 0)
        for (std::size_t i = 0; i < m_size; ++i)
            m_valid.setBit(i, true);
    if (m_nulls > 0)
        m_valid.setBit(m_size, isValid);
    ++m_size;
}

void Column::null() {
    switch (m_kind) {
    case ColumnKind::kText:
        m_offsets.push(static_cast<std::int64_t>(m_values.size()));
        break;
    case ColumnKind::kList:
        m_offsets.push(static_cast<std::int64_t>(m_child->size()));
        break;
    case ColumnKind::kBoolean:
        m_values.setBit(m_size, false);
        break;
    case ColumnKind::kCategory:
        m_values.push(std::int32_t{0});
        break;
    default:
        m_values.push(std::uint64_t{0});
    }
    count(false);
}

void Column::boolean(bool value) {
    m_values.setBit(m_size, value);
    count(true);
}

void Column::text(std::string_view utf8) {
    if (m_kind == ColumnKind::kCategory)
        return code(codeOf(utf8));
    std::string buffer;
    const std::string_view valid = validText(utf8, buffer);
    m_values.append(valid.data(), valid.size());
    m_offsets.push(static_cast<std::int64_t>(m_values.size()));
    count(true);
}

std::int32_t Column::codeOf(std::string_view utf8) {
    if (const auto known = m_codes.find(utf8); known != m_codes.end())
        return known->second;
    // What differs in broken bytes alone may look the same, and consumers want categories to differ.
    std::string buffer;
    const std::string_view valid = validText(utf8, buffer);
    const auto [seen, isNew] = m_codes.try_emplace(std::string(valid), static_cast<std::int32_t>(m_child->size()));
    const std::int32_t code = seen->second;
    m_codes.emplace(utf8, code);
    if (!isNew)
        return code;
    m_child->text(utf8);
    return code;
}

void Column::endList() {
    m_offsets.push(static_cast<std::int64_t>(m_child->size()));
    count(true);
}

void Column::fit() noexcept {
    m_valid.fit();
    m_values.fit();
    m_offsets.fit();
    m_codes.clear();
    if (m_child)
        m_child->fit();
}

ColumnTable findingColumns(std::span<const Finding> findings) {
    static constexpr std::string_view kSeverities[] = {"info", "warning", "error"};
    static constexpr const char* kTexts[] = {"code", "keyword", "attribute", "found", "expected", "rule"};
    ColumnTable table;
    table.columns.emplace_back("severity", ColumnKind::kCategory);
    for (const char* name : {"line", "column", "instance"})
        table.columns.emplace_back(name, ColumnKind::kId);
    for (const char* name : kTexts)
        table.columns.emplace_back(name, name == std::string_view("found") ? ColumnKind::kText : ColumnKind::kCategory);
    for (const Finding& finding : findings) {
        table.columns[0].text(kSeverities[finding.severity]);
        const std::uint64_t numbers[] = {finding.line, finding.column, finding.instance};
        for (std::size_t i = 0; i < std::size(numbers); ++i)
            numbers[i] == 0 ? table.columns[1 + i].null() : table.columns[1 + i].id(numbers[i]);
        const std::string* texts[] = {&finding.code,  &finding.keyword,  &finding.attribute,
                                      &finding.found, &finding.expected, &finding.rule};
        for (std::size_t i = 0; i < std::size(texts); ++i)
            texts[i]->empty() ? table.columns[4 + i].null() : table.columns[4 + i].text(*texts[i]);
    }
    table.rows = findings.size();
    return table;
}

} // namespace vnifc
