#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <functional>

namespace VN_SDAI {

/// Gives the schema that a model is to have, by the header of the file that is read into it. What it throws ends the
/// reading.
using SpfSchemaChoice = std::function<const VnIfcSchema*(const VnIfcHeader& header)>;

/// As VnIfcModel::readFile and readText. With a choice the model's schema may be null until the header is read.
VnIfcFileResult spfReadFile(VnIfcModel& model, const std::filesystem::path& path, const VnIfcReadOptions& options,
                            const SpfSchemaChoice& choose = {});
VnIfcFileResult spfReadText(VnIfcModel& model, std::string_view text, const VnIfcReadOptions& options,
                            const SpfSchemaChoice& choose = {});

} // namespace VN_SDAI
