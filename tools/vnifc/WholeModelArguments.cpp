#include "Arguments.h"
#include "WholeModel.h"

#include <memory>

namespace vnifc::tool {

namespace {

void addDiff(CLI::App& app, Task& task) {
    struct Options : ReadFlags, DiffFlags {};
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("diff", "Tell what differs between two files, object by object");
    command->footer("Objects are found by their GlobalIds; numbers of instances do not count.\n"
                    "Exit codes: 0 equal, 1 different, 2 wrong use, 3 something cannot be read\n"
                    "Example:\n  vnifc diff old.ifc new.ifc --ignore OwnerHistory");
    command->add_option("OLD", options->file, "exchange file; - is standard input")->required();
    command->add_option("NEW", options->other, "exchange file to compare it with")->required();
    addLoadFlags(*command, *options);
    command
        ->add_option("--tolerance", options->tolerance,
                     "numbers that differ by no more than this, times their magnitude where that is above 1, are "
                     "equal; 1e-9 by default")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--ignore", options->ignored, "an attribute that does not count; repeatable")
        ->option_text("NAME")
        ->allow_extra_args(false);
    command->add_option("--limit", options->limit, "how many details of an object are told, 0 for all; 20 by default")
        ->check(CLI::NonNegativeNumber);
    command->add_flag("--json", options->json, "print one JSON object a line, the last one with the summary");
    command->callback([&task, options] { task = [options] { return diffFiles(*options, *options); }; });
}

void addExtract(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
        std::string selector;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("extract", "Write some objects with everything that they need");
    command->footer("Project, units, spatial structure, types, property sets, materials, openings and what fills them\n"
                    "come along; GlobalIds stay.\n"
                    "Example:\n  vnifc extract house.ifc ground.ifc 'IfcWall, location=\"Ground floor\"'");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->add_option("SELECTOR", options->selector, "which objects, see find")->required();
    command->callback(
        [&task, options] { task = [options] { return extractFile(*options, options->target, options->selector); }; });
}

void addMerge(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
        std::vector<std::string> files;
        bool equalStoreys = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        app.add_subcommand("merge", "Write several files as one, with one project and one set of units");
    command->footer("Project and units are those of the first file; files in other units or of other releases are "
                    "refused.\n"
                    "Example:\n  vnifc merge all.ifc architect.ifc engineer.ifc --storeys");
    command->add_option("OUT", options->target, "file to write; - is standard output")->required();
    command->add_option("IN", options->files, "exchange files")->required()->expected(1, -1);
    addLoadFlags(*command, *options);
    command->add_flag("--storeys", options->equalStoreys, "sites, buildings and storeys of the same name become one");
    command->callback([&task, options] {
        task = [options] { return mergeFiles(*options, options->target, options->files, options->equalStoreys); };
    });
}

void addOptimise(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
        bool unusedObjects = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("optimise", "Write a file that says the same with fewer instances");
    command->footer("Equal instances without a GlobalId become one, and what nothing refers to goes.\n"
                    "Example:\n  vnifc optimise house.ifc small.ifc");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->add_flag("--unused-objects", options->unusedObjects,
                      "objects and property sets with a GlobalId that nothing refers to go, too");
    command->callback([&task, options] {
        task = [options] { return optimiseFile(*options, options->target, options->unusedObjects); };
    });
}

void addExport(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string format = "ndjson";
        std::string target;
        std::vector<std::string> types;
        bool inverses = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("export", "Print all instances as JSON, or write tables of them");
    command->footer("Examples:\n  vnifc export house.ifc --type IfcWall --type IfcSlab\n"
                    "  vnifc export house.ifc --format csv -o tables\n"
                    "  vnifc export house.ifc --format sqlite -o house.sqlite");
    addReadFlags(*command, *options);
    command
        ->add_option("--format", options->format,
                     "ndjson: one JSON object a line; csv: a file for each entity; sqlite: a database")
        ->check(CLI::IsMember({"ndjson", "csv", "sqlite"}));
    CLI::Option* target =
        command->add_option("-o,--output", options->target, "folder of the .csv files, or database to write");
    CLI::Option* type =
        command->add_option("--type", options->types, "only instances of this entity and its subtypes; repeatable")
            ->allow_extra_args(false);
    CLI::Option* inverse =
        command->add_flag("--inverse", options->inverses, "inverse attributes too, as lists of numbers");
    target->excludes(type)->excludes(inverse);
    command->callback([&task, options] {
        const bool isTable = options->format != "ndjson";
        if (isTable && options->target.empty())
            throw CLI::RequiredError("--output");
        if (!isTable && !options->target.empty())
            throw CLI::ValidationError("--output", "goes with --format csv and --format sqlite");
        task = [options, isTable] {
            if (!isTable)
                return exportInstances(*options, options->types, options->inverses);
            const TableFormat format = options->format == "csv" ? TableFormat::kCsv : TableFormat::kSqlite;
            return exportTables(*options, format, options->target);
        };
    });
}

} // namespace

void addWholeModelCommands(CLI::App& app, Task& task) {
    addDiff(app, task);
    addExtract(app, task);
    addMerge(app, task);
    addOptimise(app, task);
    addExport(app, task);
}

} // namespace vnifc::tool
