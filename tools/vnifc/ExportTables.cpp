#include "Messages.h"
#include "Progress.h"
#include "WholeModel.h"

#include <fmt/format.h>
#include <vnifc/Tables.h>

namespace vnifc::tool {

ExitCode exportTables(const ReadFlags& flags, TableFormat format, const std::string& target) {
    if (format == TableFormat::kSqlite && !hasSqlite())
        throw Failure(kWrongUse, "this build has no SQLite (it was made with -DVNIFC_WITH_SQLITE=OFF)");
    const Model model = openModel(flags);
    Progress progress("writing " + target);
    TableOptions options;
    options.progress = progress.callback();
    const TableResult result =
        format == TableFormat::kCsv ? exportCsv(model, target, options) : exportSqlite(model, target, options);
    progress.clear();
    if (!flags.quiet)
        say(fmt::format("{} tables, {} rows", result.tables, result.rows));
    return exitCodeOf(model);
}

} // namespace vnifc::tool
