#include "Selecting.h"

#include "JsonWriter.h"
#include "Messages.h"
#include "Platform.h"
#include "Terminal.h"
#include "WholeModel.h"
#include "WriteModel.h"

#include <fmt/format.h>
#include <vnifc/Change.h>
#include <vnifc/Selector.h>
#include <vnifc/Table.h>

#include <algorithm>

namespace vnifc::tool {

namespace {

using Row = std::vector<Value>;

void writeJson(JsonWriter& json, const Value& value) {
    switch (value.kind()) {
    case Value::Kind::kNull:
        return json.null();
    case Value::Kind::kTyped:
        return writeJson(json, value.untyped());
    case Value::Kind::kBoolean:
        return json.boolean(value.as<bool>());
    case Value::Kind::kInteger:
    case Value::Kind::kReal:
        return json.number(value.as<double>());
    case Value::Kind::kInstance:
        return json.number(value.as<Instance>().id());
    case Value::Kind::kList:
        json.beginArray();
        for (const Value& element : value.as<std::vector<Value>>())
            writeJson(json, element);
        return json.endArray();
    default:
        return json.string(value.toString());
    }
}

std::string csvField(const std::string& text) {
    if (text.find_first_of("\",\r\n") == text.npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

/// Rows of words under a line of titles; a table for people waits for all rows, to know how wide its columns are.
class Rows {
public:
    Rows(Output& output, RowFormat format, std::vector<std::string> titles)
        : m_output(output), m_json(output), m_format(format), m_titles(std::move(titles)) {
        if (m_format != RowFormat::kJson)
            words(m_titles);
    }

    RowFormat format() const noexcept { return m_format; }
    void words(const std::vector<std::string>& row) {
        if (m_format == RowFormat::kTable) {
            m_rows.emplace_back();
            std::ranges::transform(row, std::back_inserter(m_rows.back()),
                                   [](const std::string& text) { return printable(text); });
            return;
        }
        for (std::size_t i = 0; i < row.size(); ++i)
            m_output.put((i ? "," : "") + csvField(row[i]));
        m_output.put("\r\n");
    }
    void values(const Row& row) {
        m_json.beginObject();
        for (std::size_t i = 0; i < row.size(); ++i) {
            m_json.key(m_titles[i]);
            writeJson(m_json, row[i]);
        }
        m_json.endObject();
        m_json.newLine();
    }
    void finish() {
        std::vector<std::size_t> widths(m_titles.size(), 0);
        for (const auto& row : m_rows)
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], lengthOf(row[i]));
        if (isOutputTerminal())
            fit(widths);
        for (const auto& row : m_rows) {
            std::string line;
            for (std::size_t i = 0; i < row.size(); ++i) {
                const std::string cell = cut(row[i], widths[i]);
                line += cell + (i + 1 < row.size() ? std::string(widths[i] + kGap - lengthOf(cell), ' ') : "");
            }
            m_output.put(line + '\n');
        }
        m_output.flush();
    }

private:
    static constexpr std::size_t kGap = 2; ///< between columns

    /// Takes from the widest column until a line is as long as the terminal is wide, as far as something is left to
    /// read.
    static void fit(std::vector<std::size_t>& widths) {
        constexpr std::size_t kReadable = 8;
        std::size_t total = kGap * (widths.size() - 1);
        for (const std::size_t width : widths)
            total += width;
        for (; total > lineWidth(); --total) {
            const auto widest = std::ranges::max_element(widths);
            if (*widest <= kReadable)
                return;
            --*widest;
        }
    }

    /// At most so many characters, the last of them an ellipsis where some are missing.
    static std::string cut(const std::string& text, std::size_t width) {
        if (lengthOf(text) <= width)
            return text;
        std::size_t end = 0;
        for (std::size_t characters = 0; end < text.size(); ++end)
            if ((text[end] & 0xC0) != 0x80 && ++characters == width)
                break;
        return text.substr(0, end) + "…";
    }

    /// Characters of UTF-8.
    static std::size_t lengthOf(const std::string& text) {
        return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
    }

    Output& m_output;
    JsonWriter m_json;
    RowFormat m_format;
    std::vector<std::string> m_titles;
    std::vector<std::vector<std::string>> m_rows;
};

void writeColumns(Output& output, const InstanceRange& picked, const std::vector<Facet>& columns, RowFormat format) {
    std::vector<std::string> titles{"id"};
    std::ranges::transform(columns, std::back_inserter(titles), &Facet::text);
    Rows rows(output, format, std::move(titles));
    for (const Instance instance : picked) {
        if (format == RowFormat::kJson) {
            Row row{instance.id()};
            for (const Facet& column : columns) {
                const Value value = column.value(instance);
                const bool isNamed = value.kind() == Value::Kind::kInstance || value.kind() == Value::Kind::kList;
                row.push_back(isNamed ? Value(column.words(instance)) : value);
            }
            rows.values(row);
            continue;
        }
        std::vector<std::string> row{'#' + std::to_string(instance.id())};
        for (const Facet& column : columns)
            row.push_back(column.words(instance));
        rows.words(row);
    }
    rows.finish();
}

void writeGroups(Output& output, const InstanceRange& picked, const Facet* by, const Facet* sum, RowFormat format) {
    const FacetGroups groups = groupBy(picked, by, sum);
    std::vector<std::string> titles;
    if (by)
        titles.push_back(by->text());
    titles.emplace_back("count");
    if (sum)
        titles.push_back(sum->text() + (groups.unit.empty() ? "" : " [" + groups.unit + ']'));
    Rows rows(output, format, std::move(titles));
    for (const FacetGroup& group : groups.groups) {
        Row row;
        if (by)
            row.emplace_back(group.name);
        row.emplace_back(group.count);
        if (sum)
            row.push_back(group.summed > 0 ? Value(group.sum) : Value());
        if (format == RowFormat::kJson) {
            rows.values(row);
            continue;
        }
        std::vector<std::string> words;
        std::ranges::transform(row, std::back_inserter(words), [](const Value& value) { return value.toString(); });
        rows.words(words);
    }
    rows.finish();
}

std::optional<Facet> facetOf(const std::string& text, const Model& model) {
    if (text.empty())
        return std::nullopt;
    std::optional<Facet> facet(std::in_place, text);
    facet->check(model);
    return facet;
}

void writeLines(Output& output, const InstanceRange& picked) {
    for (const Instance instance : picked) {
        output.put(lineOf(instance) + '\n');
    }
    output.flush();
}

} // namespace

ExitCode findRows(const ReadFlags& flags, const std::string& selector, const RowFlags& options) {
    const Selector wanted(selector);
    const Model model = openModel(flags);
    const InstanceRange picked = wanted.select(model);
    const std::optional<Facet> sum = facetOf(options.sum, model), by = facetOf(options.groupBy, model);
    std::vector<Facet> columns;
    for (const std::string& column : options.columns)
        columns.push_back(*facetOf(column, model));
    Output output(writeToStandardOutput);
    if (options.count && !by) {
        output.put(std::to_string(std::ranges::distance(picked)) + '\n');
        output.flush();
    } else if (sum || by) {
        writeGroups(output, picked, by ? &*by : nullptr, sum ? &*sum : nullptr, options.format);
    } else if (!columns.empty()) {
        writeColumns(output, picked, columns, options.format);
    } else {
        writeLines(output, picked);
    }
    return exitCodeOf(model);
}

ExitCode setAll(const ReadFlags& flags, const std::string& target, const std::string& selector,
                const std::vector<std::string>& changes) {
    const Selector wanted(selector);
    for (const std::string& change : changes)
        if (const std::size_t equals = change.find('='); equals == change.npos || equals == 0)
            throw Failure(kWrongUse, "expected NAME=VALUE, found " + change);
    Model model = openModel(flags);
    const std::vector<Instance> picked = wanted.select(model).toVector();
    for (const std::string& change : changes) {
        const std::size_t equals = change.find('=');
        const std::string name = change.substr(0, equals);
        try {
            const std::size_t changed = setFromText(picked, name, change.substr(equals + 1));
            if (!flags.quiet)
                say(fmt::format("{}: {} of {} changed", name, changed, picked.size()));
        } catch (const BadValue& error) {
            throw Failure(kWrongUse, fmt::format("{}; nothing was written", error.what()));
        } catch (const NotFound& error) {
            throw Failure(kWrongUse, fmt::format("{}; nothing was written", error.what()));
        }
    }
    writeModel(model.core(), target, flags);
    return exitCodeOf(model);
}

} // namespace vnifc::tool
