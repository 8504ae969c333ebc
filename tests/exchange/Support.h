#pragma once
#include "support/Files.h"

#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcModel.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace exchange {

/// The module's schema, for the rest of the program.
inline const VN_SDAI::VnIfcSchema* schema() {
    static const bool ready = vnGetModuleLifeCycleApp()->initApp();
    return ready ? vnifcGetSchemaPointer() : nullptr;
}

inline constexpr std::string_view kHead =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
    "FILE_SCHEMA(('IFC4X3'));\nENDSEC;\nDATA;\n";
inline constexpr std::string_view kTail = "ENDSEC;\nEND-ISO-10303-21;\n";

/// A whole exchange file around the text of a DATA section, which begins in line 8.
inline std::string fileOf(std::string_view data) { return vnifc::test::fileOf("IFC4X3", data); }

/// What stands between the header and the end; the text as it is where it has not that form.
inline std::string dataOf(std::string_view file) {
    if (!file.starts_with(kHead) || !file.ends_with(kTail))
        return std::string(file);
    return std::string(file.substr(kHead.size(), file.size() - kHead.size() - kTail.size()));
}

/// A model read from a text, with all that was said about it.
class Reading {
public:
    explicit Reading(std::string_view file, unsigned threads = 1) : model(schema()) {
        VN_SDAI::VnIfcReadOptions options;
        options.diagnostics = [this](const VN_SDAI::VnIfcDiagnostic& diagnostic) { diagnostics.push_back(diagnostic); };
        options.threads = threads;
        result = model.readText(file, options);
    }

    /// The codes of all diagnostics, with blanks between them.
    std::string codes() const {
        std::string all;
        for (const VN_SDAI::VnIfcDiagnostic& each : diagnostics)
            all += (all.empty() ? "" : " ") + each.code;
        return all;
    }
    /// The lines that the diagnostics make for people.
    std::string texts() const {
        std::string all;
        for (const VN_SDAI::VnIfcDiagnostic& each : diagnostics)
            all += each.text() + '\n';
        return all;
    }
    template <class E>
    E& as(std::uint64_t number) {
        VN_SDAI::VnIfcEntityBase* instance = model.find(number).openObject();
        if (!instance || !instance->isKindOf(E::g_pEntityType))
            throw std::runtime_error("no such instance");
        return static_cast<E&>(*instance);
    }
    std::string data() const { return dataOf(model.writeText()); }

    VN_SDAI::VnIfcModel model;
    std::vector<VN_SDAI::VnIfcDiagnostic> diagnostics;
    VN_SDAI::VnIfcFileResult result;
};

/// The DATA section that comes out when this one goes in.
inline std::string rewritten(std::string_view data) { return Reading(fileOf(data)).data(); }

} // namespace exchange
