#include "Arguments.h"
#include "Commands.h"
#include "Describe.h"
#include "LoadedFile.h"
#include "Messages.h"
#include "Terminal.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <vnifc/Error.h>
#include <vnifc/Similar.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vnifc::tool {

namespace {

void addInfo(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("info", "Tell what a file holds, and what reading it costs");
    command->footer("Example:\n  vnifc info house.ifc");
    addReadFlags(*command, *options);
    command->add_flag("--json", options->json, "print one JSON object");
    command->callback([&task, options] { task = [options] { return info(*options, options->json); }; });
}

void addRewrite(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("rewrite", "Read a file, write it back and tell what could not be taken");
    command->footer("Example:\n  vnifc rewrite house.ifc copy.ifc");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->callback([&task, options] { task = [options] { return rewrite(*options, options->target); }; });
}

void addRulesOption(CLI::App& command, std::string& text) {
    command
        .add_option("--rules", text,
                    "EXPRESS text of the schema, as its publisher distributes it; by default NAME.exp in $VNIFC_RULES "
                    "or vnifc/rules in the user's data folder")
        ->option_text("SCHEMA.exp");
}

void addShow(CLI::App& app, Task& task) {
    struct Options : ReadFlags, ShowOptions {
        std::string address;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("show", "Show the attributes of an instance");
    command->footer("Example:\n  vnifc show house.ifc '#12'");
    addReadFlags(*command, *options);
    command->add_option("INSTANCE", options->address, "#ID, ID or GlobalId")->required();
    command->add_flag("--json", options->json, "print one JSON object");
    command->add_flag("--inverse", options->inverses,
                      "the inverse attributes that the schema has, too: what refers to the instance by them");
    command->add_flag("--referrers", options->referrers,
                      "everything that refers to the instance: which instance, by which attribute, at which place in "
                      "lists, counted from 1 (from 0 in JSON)");
    command->add_flag("--derived", options->derived, "the derived attributes, too, computed as the schema's text says");
    addRulesOption(*command, options->rules);
    command->callback([&task, options] { task = [options] { return show(*options, options->address, *options); }; });
}

void addTree(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::optional<unsigned> depth;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        app.add_subcommand("tree", "Show the spatial structure, with the number of elements of each kind");
    command->footer("Example:\n  vnifc tree house.ifc --depth 2");
    addReadFlags(*command, *options);
    command->add_option("--depth", options->depth, "levels below the project; what lies deeper is counted");
    command->add_flag("--json", options->json, "print one JSON object");
    command->callback([&task, options] { task = [options] { return tree(*options, options->depth, options->json); }; });
}

void addProps(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string address;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("props", "Show an object's property sets and quantities, also its type's");
    command->footer("Example:\n  vnifc props house.ifc '#42'");
    addReadFlags(*command, *options);
    command->add_option("INSTANCE", options->address, "#ID, ID or GlobalId")->required();
    command->add_flag("--json", options->json, "print one JSON object");
    command->callback(
        [&task, options] { task = [options] { return props(*options, options->address, options->json); }; });
}

void addEdit(CLI::App& app, Task& task) {
    struct Options : ReadFlags, Changes {
        std::string target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("edit", "Change attributes and write the file");
    command->footer(
        "VALUE may be given as in a file: 'text', 1.5, .T., .LITERAL., #5, (1.,2.), IFCLABEL('text'), or $ for\n"
        "no value; text, literals and what a select holds also without apostrophes, dots and type.\n"
        "Example:\n  vnifc edit house.ifc new.ifc --set '#12.Name=North wall' --unset '#12.Description'");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->add_option("--set", options->set, "INSTANCE.NAME=VALUE; repeatable")->allow_extra_args(false);
    command->add_option("--unset", options->unset, "INSTANCE.NAME; repeatable")->allow_extra_args(false);
    command->callback([&task, options] { task = [options] { return edit(*options, options->target, *options); }; });
}

void addCheck(CLI::App& app, Task& task) {
    struct Options : ReadFlags, CheckOptions {};
    static const std::map<std::string, VN_SDAI::VnIfcDiagnostic::Severity> levels{
        {"info", VN_SDAI::VnIfcDiagnostic::kInfo},
        {"warning", VN_SDAI::VnIfcDiagnostic::kWarning},
        {"error", VN_SDAI::VnIfcDiagnostic::kError}};
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("check", "Tell everything that is wrong with a file and its instances");
    command->footer("Example:\n  vnifc check house.ifc --level warning --limit 10");
    addReadFlags(*command, *options);
    command
        ->add_option_function<std::string>(
            "--level", [options](const std::string& name) { options->level = levels.at(name); },
            "the least that is told; info by default")
        ->check(CLI::IsMember({"info", "warning", "error"}));
    command->add_option("--limit", options->limit, "how many of each kind are told; all by default")
        ->check(CLI::NonNegativeNumber);
    command->add_flag("--json", options->json, "print one JSON object a line, the last one with the summary");
    addRulesOption(*command, options->rules.text);
    command
        ->add_option("--rule", options->rules.only, "of the schema's rules this one only, \"IfcWall.HasName\"; several")
        ->option_text("NAME ...");
    command->add_option("--no-rule", options->rules.except, "all rules but this one; several")->option_text("NAME ...");
    command->add_flag("--explain", options->rules.explain, "say with each violation what the rule demands");
    command->callback([&task, options] { task = [options] { return check(*options, *options); }; });
}

void addReport(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
        std::string rules;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("report", "Write a page that shows what is in a file, for a browser");
    command->footer("Example:\n  vnifc report house.ifc -o house.html");
    addReadFlags(*command, *options);
    command
        ->add_option("-o,--output", options->target,
                     "page to write; - is standard output; by default the file's name with .html")
        ->option_text("REPORT.html");
    addRulesOption(*command, options->rules);
    command->callback(
        [&task, options] { task = [options] { return reportFile(*options, options->target, options->rules); }; });
}

void addConvert(CLI::App& app, Task& task) {
    struct Options : ReadFlags, ConvertFlags {
        std::string target;
        std::string to;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("convert", "Write a file as one of another release of the schema");
    command->footer("Example:\n  vnifc convert house.ifc house4x3.ifc --to IFC4X3_ADD2");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->add_option("--to", options->to, "release of the result")->option_text("RELEASE")->required();
    command->add_option("--limit", options->limit, "how many losses of each kind are said; all by default")
        ->check(CLI::NonNegativeNumber);
    command->add_flag("--json", options->json, "print one JSON object with the summary");
    command->callback([&task, options] {
        task = [options] { return convertFile(*options, options->target, options->to, *options); };
    });
}

void addSchema(CLI::App& app, Task& task) {
    struct Options {
        std::string release;
        std::string name;
        std::string folder;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("schema", "Show the dictionary of a release or one declaration of it");
    command->footer("Example:\n  vnifc schema IfcWall --schema IFC2X3");
    addReleaseOption(*command, options->release, "release; the newest by default");
    command->add_option("NAME", options->name, "an entity or a type, in any case; everything by default");
    command
        ->add_option("--html", options->folder,
                     "write index.html with the whole dictionary, for a browser, into this folder")
        ->option_text("FOLDER")
        ->excludes("NAME");
    command->add_flag("--json", options->json, "print JSON, in the order in which the dictionary was built");
    command->callback([&task, options] {
        task = [options] {
            return options->folder.empty() ? schema(options->release, options->name, options->json)
                                           : schemaPage(options->release, options->folder);
        };
    });
}

/// For the build, which installs what it writes: man pages and completion cannot differ from the commands.
void addDescribe(CLI::App& app, Task& task) {
    const auto directory = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("describe-commands", "Write man pages and completion scripts");
    command->group(""); // not shown
    command->add_option("DIRECTORY", *directory)->required();
    command->callback([&app, &task, directory] {
        task = [&app, directory] {
            describeCommands(app, *directory);
            return kSuccess;
        };
    });
}

/// "help info" means "info --help", and the beginning of one command's name alone means that command.
void completeCommand(const CLI::App& app, std::vector<std::string>& arguments) {
    if (!arguments.empty() && arguments[0] == "help") {
        arguments.erase(arguments.begin());
        arguments.emplace_back("--help");
    }
    if (arguments.empty() || arguments[0].starts_with('-'))
        return;
    std::vector<std::string> names;
    std::vector<std::string_view> known;
    bool isKnown = false;
    for (const CLI::App* command : app.get_subcommands({})) {
        isKnown = isKnown || command->get_name() == arguments[0];
        if (command->get_group().empty())
            continue;
        known.push_back(command->get_name());
        if (command->get_name().starts_with(arguments[0]))
            names.push_back(command->get_name());
    }
    if (isKnown)
        return;
    if (names.size() > 1)
        throw Failure(kWrongUse, fmt::format("expected a command, found \"{}\", which may be {}", arguments[0],
                                             fmt::join(names, " or ")));
    if (names.empty())
        throw Failure(kWrongUse, fmt::format("expected a command, found \"{}\"{}; vnifc --help lists them",
                                             arguments[0], didYouMean(arguments[0], known)));
    arguments[0] = names[0];
}

int run(int argc, char** argv) {
    Task task;
    CLI::App app("vnifc reads, shows and writes IFC files (ISO 16739) in the exchange format of ISO 10303-21.",
                 "vnifc");
    app.footer("Exit codes: 0 success, 1 errors in a file, 2 wrong use, 3 something cannot be read or written,\n"
               "4 an instance or entity that was named does not exist; of diff 1 means different\n"
               "Example:\n  vnifc info house.ifc");
    app.set_version_flag("--version", versionText, "Print the version, and which releases are installed");
    app.require_subcommand(1);
    app.fallthrough(); // --color may stand anywhere
    app.add_option_function<std::string>("--color", chooseColours,
                                         "colours: when a person reads it (auto), always, never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->option_text("WHEN");
    app.failure_message([](const CLI::App* command, const CLI::Error& error) {
        return fmt::format("vnifc: {}\nvnifc: {} --help tells more\n", printable(error.what()), command->get_name());
    });
    addInfo(app, task);
    addRewrite(app, task);
    addShow(app, task);
    addTree(app, task);
    addProps(app, task);
    addEdit(app, task);
    addCheck(app, task);
    addReport(app, task);
    addConvert(app, task);
    addSchema(app, task);
    addSelectingCommands(app, task);
    addWholeModelCommands(app, task);
    addDescribe(app, task);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    completeCommand(app, arguments);
    std::ranges::reverse(arguments); // as the parser wants them
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& end) {
        return app.exit(end) == 0 ? kSuccess : kWrongUse;
    }
    return task();
}

} // namespace

} // namespace vnifc::tool

int main(int argc, char** argv) {
    try {
        const int exitCode = vnifc::tool::run(argc, argv);
        // A full disk may not show before the last of the output goes there.
        if (std::fflush(stdout) == 0 && !std::ferror(stdout))
            return exitCode;
        vnifc::tool::say("cannot write standard output");
    } catch (const vnifc::tool::Failure& failure) {
        vnifc::tool::say(failure.what());
        return failure.exitCode();
    } catch (const vnifc::SelectorError& error) {
        vnifc::tool::say(error.what());
        return error.namesNothing() ? vnifc::tool::kNotThere : vnifc::tool::kWrongUse;
    } catch (const vnifc::NotFound& error) {
        vnifc::tool::say(error.what());
        return vnifc::tool::kNotThere;
    } catch (const std::exception& error) {
        vnifc::tool::say(error.what());
    }
    return vnifc::tool::kFileFailure;
}
