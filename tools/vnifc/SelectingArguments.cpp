#include "Arguments.h"
#include "Selecting.h"

#include <map>
#include <memory>

namespace vnifc::tool {

namespace {

/// True for what can be the name of an entity; a GlobalId begins with a digit.
bool isEntityName(std::string_view selector) {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return !selector.empty() && kLetters.find(selector.front()) != kLetters.npos &&
           selector.find_first_not_of(std::string(kLetters) + "0123456789_") == selector.npos;
}

void addFind(CLI::App& app, Task& task) {
    struct Options : ReadFlags, FindQuery, RowFlags {
        bool json = false;
    };
    static const std::map<std::string, RowFormat> formats{
        {"table", RowFormat::kTable}, {"csv", RowFormat::kCsv}, {"json", RowFormat::kJson}};
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("find", "List instances, or say what is known of them");
    command->footer(
        "SELECTOR: entities, GlobalIds and #numbers, of any of which an instance has to be, and conditions, which it\n"
        "has to fulfil, all with commas; ! negates, + joins groups. A condition is an attribute, Pset.Property, "
        "class,\n"
        "type, parent, container, storey, building, site, location, material, classification, group or layer, one of\n"
        "= != > >= < <= *= !*=, and a word, \"text\", /regular expression/, NULL or a number, also with a unit.\n"
        "The same names are facets.\n"
        "Examples:\n"
        "  vnifc find house.ifc 'IfcWall, Pset_WallCommon.IsExternal=TRUE' --columns Name,storey\n"
        "  vnifc find house.ifc IfcSlab --sum Qto_SlabBaseQuantities.NetVolume --group-by material\n"
        "  vnifc find house.ifc IfcWall --where 'Name=North wall' --where PredefinedType=SOLIDWALL");
    addReadFlags(*command, *options);
    command->add_option("SELECTOR", options->entity, "which instances; an entity, in any case, is the simplest one")
        ->required();
    command->add_option("--columns", options->columns, "facets to be listed")->delimiter(',')->option_text("FACET,...");
    command
        ->add_option_function<std::string>(
            "--format", [options](const std::string& name) { options->format = formats.at(name); },
            "of columns and groups: table, csv or json; table by default")
        ->check(CLI::IsMember({"table", "csv", "json"}));
    command->add_flag("--count", options->count, "only how many there are");
    command->add_option("--sum", options->sum, "a facet whose numbers are summed up")->option_text("FACET");
    command->add_option("--group-by", options->groupBy, "a facet by which instances are counted and summed up")
        ->option_text("FACET");
    command->add_flag("--exact", options->exact, "of an entity, no instances of subtypes");
    command
        ->add_option(
            "--where", options->conditions,
            "of an entity, NAME=VALUE, which an attribute must have, as in a file or as plain text; repeatable")
        ->allow_extra_args(false);
    command->add_flag("--json", options->json, "print one JSON object a line, as export does, or --format json");
    command->callback([&task, options] {
        if (options->json)
            options->format = RowFormat::kJson;
        const bool isName = isEntityName(options->entity);
        if (!isName && (options->exact || !options->conditions.empty()))
            throw CLI::ValidationError("--exact and --where", "go with an entity; a selector has its own conditions");
        if (options->areAsked() && (options->exact || !options->conditions.empty()))
            throw CLI::ValidationError("--exact and --where", "do not go with columns, counts and sums");
        const bool needsRows = !isName || options->areAsked();
        if (needsRows && options->json && !options->areAsked())
            options->columns = {"class", "GlobalId", "Name"};
        task = [options, needsRows] {
            return needsRows ? findRows(*options, options->entity, *options) : find(*options, *options, options->json);
        };
    });
}

void addSet(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
        std::string selector;
        std::vector<std::string> changes;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("set", "Change attributes and properties of many instances");
    command->footer("NAME is an attribute or Pset.Property; what other objects share is not changed for them.\n"
                    "Example:\n  vnifc set house.ifc new.ifc 'IfcDoor, storey=Ground' Pset_DoorCommon.FireRating=EI30");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->add_option("SELECTOR", options->selector, "which instances, see find")->required();
    command->add_option("CHANGES", options->changes, "NAME=VALUE; $ takes a value away")->required();
    command->callback([&task, options] {
        task = [options] { return setAll(*options, options->target, options->selector, options->changes); };
    });
}

} // namespace

void addSelectingCommands(CLI::App& app, Task& task) {
    addFind(app, task);
    addSet(app, task);
}

} // namespace vnifc::tool
