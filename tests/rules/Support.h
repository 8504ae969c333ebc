#pragma once
#include "support/Files.h"

#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VnModule.h>
#include <vnifc/Rules.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vnifc::test {

/// The tests' own schema, whose text is made of its declarations and of what a test adds.
class Garden {
public:
    /// `clauses` go to the end of the entities and types of that name; `rest` to the end of the schema.
    static std::string text(const std::vector<std::pair<std::string, std::string>>& clauses = {},
                            std::string_view rest = {}) {
        std::string result = contents(VNIFC_TOY "/declarations.exp");
        for (const auto& [name, clause] : clauses) {
            std::size_t place = result.find("ENTITY " + name + '\n');
            const bool isEntity = place != result.npos;
            if (!isEntity)
                place = result.find("TYPE " + name + ' ');
            place = place == result.npos ? place : result.find(isEntity ? "END_ENTITY" : "END_TYPE", place);
            if (place == result.npos)
                throw std::invalid_argument(name);
            result.insert(place, clause + '\n');
        }
        result.insert(result.rfind("END_SCHEMA"), std::string(rest) + '\n');
        return result;
    }
    static std::string replaced(std::string text, std::string_view what, std::string_view with) {
        const std::size_t place = text.find(what);
        if (place == text.npos)
            throw std::invalid_argument(std::string(what));
        return text.replace(place, what.size(), with);
    }

    const VN_SDAI::VnIfcSchema& schema() const { return *m_module.schema(); }
    Rules rules(const std::string& text) const { return Rules::parse(text, schema(), "garden.exp"); }
    VN_SDAI::VnIfcModel model(std::string_view instances) const {
        VN_SDAI::VnIfcModel model(m_module.schema());
        VN_SDAI::VnIfcReadOptions options;
        options.places = true;
        if (!model.readText(fileOf("TOY", instances), options))
            throw std::runtime_error("the model cannot be read");
        return model;
    }

private:
    VN_SDAI::VnModule m_module = VN_SDAI::VnModule::load("VnToy");
};

/// "code #instance attribute rule: found", one line for each finding.
inline std::string findingsOf(const Rules& rules, const VN_SDAI::VnIfcModel& model,
                              const RulesCheckOptions& options = {}, RulesCheckResult* result = nullptr) {
    std::string findings;
    const RulesCheckResult checked = rules.check(
        model,
        [&](const VN_SDAI::VnIfcDiagnostic& each) {
            findings += each.code + (each.instance ? " #" + std::to_string(each.instance) : "") +
                        (each.attribute.empty() ? "" : ' ' + each.attribute) + ' ' + each.rule +
                        (each.found.empty() ? "" : ": " + each.found) + '\n';
        },
        options);
    if (result)
        *result = checked;
    return findings;
}

} // namespace vnifc::test
