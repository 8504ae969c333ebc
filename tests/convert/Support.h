#pragma once
#include "support/Declarations.h"
#include "support/Files.h"
#include "support/PlainReader.h"
#include "support/Releases.h"

#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcFile.h>
#include <vnifc/Convert.h>

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace convert_tests {

/// The release is chosen by hand, whatever FILE_SCHEMA says.
inline std::string fileOf(std::string_view data) { return vnifc::test::fileOf("IFC4", data); }

/// How many findings a check has of which kind.
using Counts = std::map<std::string, std::uint64_t>;

inline Counts checked(const VN_SDAI::VnIfcModel& model) {
    Counts counts;
    VN_SDAI::VnIfcCheck(model, [&](const VN_SDAI::VnIfcDiagnostic& finding) { ++counts[finding.code]; }).run();
    return counts;
}

/// Kinds of which there are more than before.
inline std::string added(const Counts& before, const Counts& after) {
    std::string text;
    for (const auto& [code, count] : after) {
        const auto found = before.find(code);
        if (count > (found == before.end() ? 0 : found->second))
            text += code + ' ' + std::to_string(count) + '\n';
    }
    return text;
}

/// A text that was read as one release and converted to another.
struct Converted {
    Converted(const std::string& text, std::string_view from, std::string_view to) {
        VN_SDAI::VnIfcOpenOptions options;
        options.release = from;
        options.diagnostics = [this](const VN_SDAI::VnIfcDiagnostic& finding) { ++before[finding.code]; };
        source = VN_SDAI::vnOpenText(text, options);
        convertTo(to);
    }

    void convertTo(std::string_view release) {
        ASSERT_TRUE(source) << source.result().message;
        target = VN_SDAI::vnCreateFile(release);
        ASSERT_TRUE(target) << target.result().message;
        vnifc::ConvertOptions options;
        options.findings = [this](const vnifc::ConvertFinding& finding) { findings.push_back(finding); };
        result = vnifc::convert(source.model(), target.model(), options);
        ASSERT_TRUE(result) << result.message;
        text = target.model().writeText();
        instances = plain::read(text).instances;
        // As who opens the file sees it: what the reader finds, and what the check adds.
        VN_SDAI::VnIfcOpenOptions reading;
        reading.release = release;
        reading.diagnostics = [this](const VN_SDAI::VnIfcDiagnostic& finding) {
            ++after[finding.code];
            said += finding.text() + '\n';
        };
        const VN_SDAI::VnIfcFile again = VN_SDAI::vnOpenText(text, reading);
        ASSERT_TRUE(again) << again.result().message;
        for (const auto& [code, count] : checked(source.model()))
            before[code] += count;
        for (const auto& [code, count] : checked(again.model()))
            after[code] += count;
        for (Counts* counts : {&before, &after})
            counts->erase("schema"); // the release was chosen by hand
    }

    /// The line of an instance, "IFCWALL('...')"; numbers that the source does not have are "#*".
    std::string line(std::uint64_t number) const {
        const std::size_t begin = text.find("\n#" + std::to_string(number) + '=');
        if (begin == text.npos)
            return {};
        const std::size_t equals = text.find('=', begin);
        return masked(text.substr(equals + 1, text.find(";\n", equals) - equals - 1));
    }
    /// True when the target has an instance with that line.
    bool has(const std::string& wanted) const {
        for (const auto& [number, instance] : instances)
            if (line(number) == wanted)
                return true;
        return false;
    }
    /// The kinds of the findings on an instance, in order: "moved-attribute ShapeType".
    std::set<std::string> told(std::uint64_t number) const {
        std::set<std::string> all;
        for (const vnifc::ConvertFinding& each : findings)
            if (each.instance == number)
                all.insert(std::string(vnifc::nameOf(each.kind)) + (each.attribute.empty() ? "" : " ") +
                           each.attribute);
        return all;
    }
    std::string masked(std::string line) const {
        for (std::size_t at = line.find('#'); at != line.npos; at = line.find('#', at + 1)) {
            const std::size_t end = std::min(line.find_first_not_of("0123456789", at + 1), line.size());
            if (end > at + 1 && source.model().find(std::stoull(line.substr(at + 1, end - at - 1))).isNull())
                line.replace(at, end - at, "#*");
        }
        return line;
    }

    VN_SDAI::VnIfcFile source;
    VN_SDAI::VnIfcFile target;
    vnifc::ConvertResult result;
    std::vector<vnifc::ConvertFinding> findings;
    std::string text;
    std::map<std::uint64_t, plain::Instance> instances;
    Counts before;
    Counts after;
    std::string said; ///< by the reader of the result
};

} // namespace convert_tests
